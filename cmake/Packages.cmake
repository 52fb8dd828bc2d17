# Debian packages, one for each component of the install rules: `cpack -G DEB` in the build tree.
# The preset `package` lays the files out as Debian wants them.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kescorexml)
set(CPACK_PACKAGE_VENDOR kescorexml)
set(CPACK_PACKAGE_CONTACT "kescorexml maintainers <maintainers@kescorexml.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_KESCOREXML_SOURCES ${PROJECT_SOURCE_DIR})
set(CPACK_KESCOREXML_QT_VERSION ${Qt6_VERSION})
set(CPACK_KESCOREXML_XERCES_VERSION ${XercesC_VERSION})
set(CPACK_KESCOREXML_ICU_VERSION ${ICU_VERSION})
set(CPACK_KESCOREXML_BOOST_VERSION ${Boost_VERSION_STRING})
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianDocuments.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianControl.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What the files are linked with; the libraries of this project are found in the build tree.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# What packages of programs that are linked with the libraries come to depend on.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkescorexml${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkescorexml-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_MULTIARCH same)
# For programs that pass on strings of Qt, and for who keeps objects in the context of a thread.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS
  "qt6-base-dev (>= ${KESCOREXML_QT_VERSION}), libboost-dev (>= ${KESCOREXML_BOOST_VERSION})")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kesxml)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION text)
set(CPACK_DEBIAN_TOOLS_PACKAGE_MULTIARCH foreign)

include(CPack)

# The synopsis of each is that of the project.
cpack_add_component(runtime
  DESCRIPTION
"The shared libraries. They read XML into an element tree that carries every
diagnostic of the parser, and let programs walk, query, edit, validate and
write documents.")
cpack_add_component(development
  DEPENDS runtime
  DESCRIPTION
"What programs are built with: the headers of the libraries, what CMake and
pkg-config need to find them, the user's guide and examples.")
cpack_add_component(tools
  DEPENDS runtime
  DESCRIPTION
"The command kesxml reports what is wrong with documents by line and column,
validates them against XML Schemas, finds elements by path, measures documents
and writes them indented.")
