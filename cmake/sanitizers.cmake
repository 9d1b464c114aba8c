# Instrumented code makes the compiler see uninitialised values where there are none; the ordinary build is the judge.
if(MONIVA_SANITIZE STREQUAL "address")
  # Without the checks at every access to memory that the address sanitizer makes unneeded: a quarter of the build.
  add_compile_options(-Wno-maybe-uninitialized -fsanitize=address,undefined -fno-sanitize=null,alignment,vptr,object-size
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(MONIVA_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(MONIVA_SANITIZE STREQUAL "fuzzer")
  # Of clang: the programs that bring inputs link the fuzzer's own main.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(NOT MONIVA_SANITIZE STREQUAL "")
  message(FATAL_ERROR "MONIVA_SANITIZE is '${MONIVA_SANITIZE}'; it takes 'address', 'thread', 'fuzzer' or nothing")
endif()
