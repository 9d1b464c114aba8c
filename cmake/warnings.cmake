# The options every target of ours is built with.
add_library(moniva_options INTERFACE)
target_compile_options(moniva_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Wformat=2)
# In joined sources GCC 12 sees null pointers in vectors of strings that grow, by what else happens to be joined with them;
# each source by itself is still looked at.
target_compile_options(moniva_options INTERFACE
  $<$<NOT:$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>>:-Wnull-dereference>)
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
