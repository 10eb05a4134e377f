# sondara_library(NAME [FOLDER folder] SOURCES ... [LINKS ...])
#
# One static library of src/. Its headers are reached as "folder/Header.h"
# through an include root of its own, which holds nothing but a link to the
# folder; the root is public, so a library sees the headers of exactly the
# libraries it links, directly or through them. An include that reaches up
# the layers therefore fails to compile.
function(sondara_library name)
  cmake_parse_arguments(ARG "" "FOLDER" "SOURCES;LINKS" ${ARGN})
  if(NOT ARG_FOLDER)
    set(ARG_FOLDER ${name})
  endif()
  add_library(${name} STATIC ${ARG_SOURCES})
  sondara_include_root(${name} ${ARG_FOLDER} ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} sondara_options)
endfunction()

# sondara_include_root(TARGET FOLDER DIRECTORY): makes DIRECTORY reachable
# as "FOLDER/..." for TARGET and whatever links it.
function(sondara_include_root target folder directory)
  set(root ${CMAKE_BINARY_DIR}/include-roots/${target})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${directory} ${root}/${folder} SYMBOLIC)
  target_include_directories(${target} PUBLIC ${root})
endfunction()
