# Instances of the standard library's templates have default visibility in spite of
# -fvisibility=hidden. This keeps those that a library happens to hold out of what it exports.
function(kescorexml_hide_standard_library target)
  if(KESCOREXML_LIBRARY_TYPE STREQUAL "STATIC")
    return()
  endif()
  set(script ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(${target} PRIVATE LINKER:--version-script=${script})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
endfunction()
