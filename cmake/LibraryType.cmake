# The libraries are shared ones, unless whoever builds asks for static ones: BUILD_SHARED_LIBS=OFF.
set(KESCOREXML_LIBRARY_TYPE SHARED)
if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
  set(KESCOREXML_LIBRARY_TYPE STATIC)
  # Only the very compiler that made them could link archives of such objects.
  if(KESCOREXML_INSTALL)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION OFF)
  endif()
endif()

# Tells a target, and in its interface whoever is linked with it, that MACRO_EXPORT imports nothing:
#   kescorexml_define_static(TARGET MACRO)
function(kescorexml_define_static target macro)
  if(KESCOREXML_LIBRARY_TYPE STREQUAL "STATIC")
    target_compile_definitions(${target} PUBLIC ${macro}_STATIC_DEFINE)
  endif()
endfunction()
