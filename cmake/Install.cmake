# Lays out what users of the libraries and of the command need, in three components: `runtime`,
# `development` and `tools`. Nothing names the folder that it is installed to, so that the tree may
# be moved.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kescorexml)

# `cmake --install --strip` strips all; without it this project's own files are stripped all the same.
if(KESCOREXML_STRIP)
  install(CODE "
  set(KESCOREXML_STRIP_ALL \${CMAKE_INSTALL_DO_STRIP})
  set(CMAKE_INSTALL_DO_STRIP ON)"
    ALL_COMPONENTS)
endif()

install(TARGETS kescorexml kesplatform
  EXPORT kescorexml-targets
  LIBRARY
    DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime
    NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
if(KESCOREXML_TOOLS)
  install(TARGETS kesxml RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()

if(KESCOREXML_STRIP)
  install(CODE "set(CMAKE_INSTALL_DO_STRIP \${KESCOREXML_STRIP_ALL})" ALL_COMPONENTS)
endif()

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
# Who links with a shared library needs nothing but its headers' needs; with an archive, all.
set(static_dependencies)
if(KESCOREXML_LIBRARY_TYPE STREQUAL "STATIC")
  set(static_dependencies
"find_dependency(Qt6 ${KESCOREXML_QT_VERSION} COMPONENTS Core)
find_dependency(XercesC ${KESCOREXML_XERCES_VERSION})
find_dependency(ICU ${KESCOREXML_ICU_VERSION} COMPONENTS uc)
find_dependency(Boost ${KESCOREXML_BOOST_VERSION})
")
endif()
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
set(printed_libraries kescorexml kesplatform)
if(KESCOREXML_LIBRARY_TYPE STREQUAL "STATIC")
  set(printed_libraries)
endif()
foreach(library IN LISTS printed_libraries)
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
set(kescorexml_flags)
set(kesplatform_flags)
set(kescorexml_requires "kesplatform = ${PROJECT_VERSION}")
set(kesplatform_requires)
if(KESCOREXML_LIBRARY_TYPE STREQUAL "STATIC")
  set(kescorexml_flags " -DKESCOREXML_STATIC_DEFINE")
  set(kesplatform_flags " -DKESPLATFORM_STATIC_DEFINE")
  # Not private ones: their own libraries are shared.
  set(kesplatform_requires
    "Qt6Core >= ${KESCOREXML_QT_VERSION}, icu-uc >= ${KESCOREXML_ICU_VERSION}")
  string(APPEND kescorexml_requires
    ", ${kesplatform_requires}, xerces-c >= ${KESCOREXML_XERCES_VERSION}")
endif()
foreach(name IN ITEMS kescorexml kesplatform)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in
    ${PROJECT_BINARY_DIR}/package/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/package/${name}.pc
    DESTINATION ${pkgconfig_dir}
    COMPONENT development)
endforeach()

if(KESCOREXML_TOOLS)
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
