# Builds a program outside of this project that uses the library, in every way in which it may come
# by the library. Instrumented libraries are not for installation.
if(KESCOREXML_SANITIZE OR KESCOREXML_COVERAGE OR NOT KESCOREXML_INSTALL OR NOT KESCOREXML_TOOLS
   OR KESCOREXML_LIBRARY_TYPE STREQUAL "STATIC")
  return()
endif()

set(consume ${CMAKE_CURRENT_LIST_DIR}/consume)
set(work ${CMAKE_CURRENT_BINARY_DIR}/consumer)
file(MAKE_DIRECTORY ${work})

add_test(NAME consumer.install COMMAND ${consume} install ${PROJECT_BINARY_DIR} ${work})
add_test(NAME consumer.package COMMAND ${consume} package ${work})
add_test(NAME consumer.pkg-config COMMAND ${consume} pkg-config ${work})
add_test(NAME consumer.readme COMMAND ${consume} readme ${work} ${PROJECT_SOURCE_DIR})
add_test(NAME consumer.readme-shell COMMAND ${consume} readme-shell ${work} ${PROJECT_SOURCE_DIR})
add_test(NAME consumer.readme-sources
  COMMAND ${consume} readme-sources ${work} ${PROJECT_SOURCE_DIR})
add_test(NAME consumer.subdirectory COMMAND ${consume} subdirectory ${work} ${PROJECT_SOURCE_DIR})
add_test(NAME consumer.static COMMAND ${consume} static ${work} ${PROJECT_SOURCE_DIR})
add_test(NAME consumer.fetch COMMAND ${consume} fetch ${work} ${PROJECT_SOURCE_DIR})
set_tests_properties(consumer.install PROPERTIES FIXTURES_SETUP installed)
set_tests_properties(
  consumer.package consumer.pkg-config consumer.readme consumer.readme-shell
  PROPERTIES FIXTURES_REQUIRED installed)
set_tests_properties(consumer.subdirectory consumer.static PROPERTIES PROCESSORS 2 TIMEOUT 3000)
set_tests_properties(
  consumer.install consumer.package consumer.pkg-config consumer.readme consumer.subdirectory
  consumer.static
  consumer.fetch consumer.readme-sources
  PROPERTIES ENVIRONMENT "CXX=${CMAKE_CXX_COMPILER}")
