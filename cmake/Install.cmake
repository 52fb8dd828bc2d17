# Lays out what users of the libraries and of the command need, in three components: `runtime`,
# `development` and `tools`. Nothing names the folder that it is installed to, so that the tree may
# be moved.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kescorexml)

install(TARGETS kescorexml kesplatform
  EXPORT kescorexml-targets
  LIBRARY
    DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime
    NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)

install(
  DIRECTORY
    ${PROJECT_SOURCE_DIR}/public/kescorexml
    ${PROJECT_BINARY_DIR}/main/public/kescorexml
    ${PROJECT_SOURCE_DIR}/platform/public/kesplatform
    ${PROJECT_BINARY_DIR}/platform/public/kesplatform
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development
  FILES_MATCHING
    PATTERN "*.h"
    PATTERN "kesplatform/detail" EXCLUDE) # No public header needs it.

install(EXPORT kescorexml-targets
  FILE kescorexmlTargets.cmake
  NAMESPACE kescorexml::
  DESTINATION ${package_dir}
  COMPONENT development)
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/kescorexmlConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/kescorexmlConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/package/kescorexmlConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(
  FILES
    ${PROJECT_BINARY_DIR}/package/kescorexmlConfig.cmake
    ${PROJECT_BINARY_DIR}/package/kescorexmlConfigVersion.cmake
  DESTINATION ${package_dir}
  COMPONENT development)

# gdb loads these by itself for the libraries whose path they bear below its own folder. That path
# is known when they are installed; where CPack collects files, it is the one that they are made for.
install(CODE "
  set(KESCOREXML_LIBRARIES \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}\")
  if(CMAKE_INSTALL_PREFIX MATCHES \"/_CPack_Packages/\")
    set(KESCOREXML_LIBRARIES \"${CMAKE_INSTALL_FULL_LIBDIR}\")
  endif()"
  COMPONENT development)
foreach(library IN ITEMS kescorexml kesplatform)
  install(FILES ${PROJECT_SOURCE_DIR}/tools/gdb/${library}-gdb.py
    DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load/\${KESCOREXML_LIBRARIES}
    RENAME lib${library}.so.${PROJECT_VERSION}-gdb.py
    COMPONENT development)
endforeach()

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_to_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pkgconfig_to_prefix ${pkgconfig_to_prefix})
file(RELATIVE_PATH prefix_to_lib ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH prefix_to_include ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(name IN ITEMS kescorexml kesplatform)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in
    ${PROJECT_BINARY_DIR}/package/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/package/${name}.pc
    DESTINATION ${pkgconfig_dir}
    COMPONENT development)
endforeach()

if(KESCOREXML_TOOLS)
  install(TARGETS kesxml RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/kesxml.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
    COMPONENT tools)
  install(FILES ${PROJECT_SOURCE_DIR}/tools/kesxml/completion.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME kesxml
    COMPONENT tools)
endif()

if(PROJECT_IS_TOP_LEVEL)
  include(${PROJECT_SOURCE_DIR}/cmake/Packages.cmake)
endif()
