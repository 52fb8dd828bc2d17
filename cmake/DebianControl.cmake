# Run by CPack behind packing: says in each package with which others of its name it can be installed,
# and in that of the libraries since which version they export each name. CPack can do the first since
# 3.31 only, and the second not at all.

set(symbols_of ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME})

foreach(file IN LISTS CPACK_PACKAGE_FILES)
  get_filename_component(name ${file} NAME)
  string(REGEX REPLACE "_.*" "" package ${name})
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    if(package STREQUAL CPACK_DEBIAN_${upper}_PACKAGE_NAME)
      set(multi_arch ${CPACK_DEBIAN_${upper}_PACKAGE_MULTIARCH})
    endif()
  endforeach()
  set(command ${CPACK_KESCOREXML_SOURCES}/cmake/debian/complete ${file} ${multi_arch})
  if(package STREQUAL symbols_of)
    list(APPEND command ${CPACK_KESCOREXML_SOURCES}/tests/exports)
  endif()
  execute_process(COMMAND ${command} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
