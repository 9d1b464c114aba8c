# Headers of others that most sources read, compiled once: reading them took half of every build. Whether each source
# names all it uses is proved by building without: -DMONIVA_PRECOMPILED=OFF.
function(moniva_precompiled name)
  file(WRITE ${CMAKE_BINARY_DIR}/generated/${name}.cpp "")
  add_library(${name} STATIC ${CMAKE_BINARY_DIR}/generated/${name}.cpp)
  target_include_directories(${name} SYSTEM PRIVATE ${EXPECTED_INCLUDE_DIR} ${CLI11_INCLUDE_DIR})
  target_link_libraries(${name} PRIVATE moniva_options ${ARGN})
endfunction()

if(NOT "${MONIVA_JOIN}" MATCHES "^[0-9]+$")
  message(WARNING "MONIVA_JOIN is '${MONIVA_JOIN}', which is no number; each source is compiled by itself")
  set(MONIVA_JOIN 0)
endif()

# Compiles so many sources of a target at once, 0 each by itself: most of the work is reading headers and making the same
# templates again, while what is built next after a change should be little. 40 need 1.5 GB of memory a compiler.
function(moniva_join target count)
  if(count GREATER 1)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${count})
  endif()
endfunction()

# moniva_room(NAME USES library...): the static library moniva_NAME from every source below src/NAME.
function(moniva_room name)
  cmake_parse_arguments(ROOM "" "" "USES" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${name}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  if(sources)
    add_library(moniva_${name} STATIC ${sources})
    target_include_directories(moniva_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
    target_include_directories(moniva_${name} SYSTEM PUBLIC
      ${EXPECTED_INCLUDE_DIR} ${CLI11_INCLUDE_DIR} ${CSV_INCLUDE_DIR} ${GD_INCLUDE_DIR} ${CURL_INCLUDE_DIRS}
      $<$<BOOL:${SYSTEMD_INCLUDE_DIR}>:${SYSTEMD_INCLUDE_DIR}>)
    target_link_libraries(moniva_${name} PUBLIC ${ROOM_USES} PRIVATE moniva_options)
    if(MONIVA_PRECOMPILED)
      target_precompile_headers(moniva_${name} REUSE_FROM moniva_others)
    endif()
    moniva_join(moniva_${name} ${MONIVA_JOIN})
  else()
    add_library(moniva_${name} INTERFACE)
    target_include_directories(moniva_${name} INTERFACE ${CMAKE_SOURCE_DIR}/src)
    target_link_libraries(moniva_${name} INTERFACE ${ROOM_USES})
  endif()
endfunction()
