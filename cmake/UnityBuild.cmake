# Compiling many sources at once takes a third of the time that compiling each takes. Test programs
# always are; the libraries and the tool in builds that are made whole and seldom edited, such as those
# with sanitizers: CMAKE_UNITY_BUILD=ON asks for it. Headers that nearly every source includes are
# compiled once where there are tests. Builds of what is installed do neither: they show that every
# source of the libraries and of the tool stands by itself.
option(KESCOREXML_PRECOMPILE "Compile the headers that nearly every source includes only once"
  ${KESCOREXML_TESTS})

# kescorexml_precompile(TARGET HEADER...)
function(kescorexml_precompile target)
  if(KESCOREXML_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# Compiles the sources of each folder together: kescorexml_unite_folders(SOURCE...)
function(kescorexml_unite_folders)
  foreach(source IN LISTS ARGN)
    get_filename_component(folder ${source} DIRECTORY)
    get_filename_component(name ${folder} NAME)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${name})
  endforeach()
endfunction()

# Compiles sources together that define nothing for each other, such as tests, each in a namespace of
# its own, so that they may use the same names: kescorexml_unite_apart(TARGET SOURCE...)
function(kescorexml_unite_apart target)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ARGN})
  # What they include must not land in these namespaces.
  set(includes)
  foreach(source IN LISTS ARGN)
    file(STRINGS ${source} lines REGEX "^#include ")
    list(APPEND includes ${lines})
  endforeach()
  list(REMOVE_DUPLICATES includes)
  list(SORT includes)
  list(JOIN includes "\n" includes)
  set(header ${CMAKE_CURRENT_BINARY_DIR}/${target}-includes.h)
  file(CONFIGURE OUTPUT ${header} CONTENT "#pragma once\n${includes}\n" @ONLY)
  target_precompile_headers(${target} PRIVATE ${header})
  set_target_properties(${target} PROPERTIES
    UNITY_BUILD ON
    UNITY_BUILD_UNIQUE_ID KESCOREXML_SOURCE
    UNITY_BUILD_CODE_BEFORE_INCLUDE "namespace KESCOREXML_SOURCE {"
    UNITY_BUILD_CODE_AFTER_INCLUDE "}")
  # They are not the main file, which this warning of GCC's goes by.
  target_compile_options(${target} PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endfunction()
