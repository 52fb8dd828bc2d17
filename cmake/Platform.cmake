# Where the library works. It says so at once, instead of failing in the middle of a build.
if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
  message(FATAL_ERROR
    "kescorexml is for Linux; nobody has made it work on '${CMAKE_SYSTEM_NAME}' yet.")
endif()

set(KESCOREXML_GNU_VERSION 12)
set(KESCOREXML_CLANG_VERSION 14)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(compiler_version ${KESCOREXML_GNU_VERSION})
elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  set(compiler_version ${KESCOREXML_CLANG_VERSION})
else()
  message(FATAL_ERROR
    "kescorexml is compiled with g++ or clang, not with '${CMAKE_CXX_COMPILER_ID}'.")
endif()
if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS compiler_version)
  message(FATAL_ERROR "kescorexml needs ${CMAKE_CXX_COMPILER_ID} ${compiler_version} or newer, "
    "not ${CMAKE_CXX_COMPILER_VERSION}.")
endif()
