# Without a build type CMake asks the compiler for no optimisation. A build of this project alone
# becomes a release build then. In a build of somebody else's, the type is theirs, and the libraries
# optimise for themselves. Who wants no flags says so with a type that has none, such as `None`.
set(KESCOREXML_OPTIMISES_ITSELF OFF)
get_property(has_many_types GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(NOT CMAKE_BUILD_TYPE AND NOT has_many_types)
  if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
    message(STATUS "kescorexml: no build type is given, this is a Release build")
  elseif(NOT CMAKE_CXX_FLAGS MATCHES "(^| )-O")
    set(KESCOREXML_OPTIMISES_ITSELF ON)
    message(STATUS
      "kescorexml: no build type is given, the libraries are compiled with -O3 -DNDEBUG")
  endif()
endif()
