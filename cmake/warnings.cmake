# The options every target of ours is built with.
add_library(moniva_options INTERFACE)
target_compile_options(moniva_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Wnull-dereference -Wformat=2)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(moniva_options INTERFACE -Wduplicated-cond -Wlogical-op)
  if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies in assignments of literals to std::string (GCC bug 105651).
    target_compile_options(moniva_options INTERFACE -Wno-restrict)
  endif()
endif()
# Whoever builds the program to use it is not stopped by what a newer compiler warns of.
option(MONIVA_WARNINGS_AS_ERRORS "Stop at a warning" OFF)
if(MONIVA_WARNINGS_AS_ERRORS)
  target_compile_options(moniva_options INTERFACE -Werror)
endif()
