# The options every target of ours is built with.
add_library(moniva_options INTERFACE)
target_compile_options(moniva_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Wnull-dereference -Wformat=2 -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(moniva_options INTERFACE -Wduplicated-cond -Wlogical-op)
endif()
