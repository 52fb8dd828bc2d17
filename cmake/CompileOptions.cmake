# What every target of this project is compiled with. Consumers inherit none of it.
add_library(kescorexml_compile_options INTERFACE)
target_compile_options(kescorexml_compile_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast
  -Wcast-qual -Wconversion -Wsign-conversion -Wimplicit-fallthrough)
if(KESCOREXML_WERROR)
  target_compile_options(kescorexml_compile_options INTERFACE -Werror)
endif()

# Clang reports here what the standard library of GCC 12 uses of its own, for std::stable_sort.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(kescorexml_compile_options INTERFACE -Wno-deprecated-declarations)
endif()

target_compile_definitions(kescorexml_compile_options INTERFACE QT_NO_KEYWORDS)

if(KESCOREXML_OPTIMISES_ITSELF)
  target_compile_options(kescorexml_compile_options INTERFACE -O3)
  target_compile_definitions(kescorexml_compile_options INTERFACE NDEBUG)
endif()

if(KESCOREXML_HARDENING)
  include(cmake/Hardening.cmake)
endif()

if(KESCOREXML_SANITIZE)
  # The checks that sanitizers add make GCC believe that an alternative which a std::variant does
  # not hold may be destroyed.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(kescorexml_compile_options INTERFACE -Wno-maybe-uninitialized)
  endif()
  target_compile_options(kescorexml_compile_options INTERFACE
    -fsanitize=${KESCOREXML_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kescorexml_compile_options INTERFACE -fsanitize=${KESCOREXML_SANITIZE})
  # Tests put functions of their own in place of some of the sanitizer's, which then must not lie in
  # the same program.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND KESCOREXML_SANITIZE MATCHES "address"
     AND NOT KESCOREXML_FUZZERS)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-runtime-dir
      OUTPUT_VARIABLE sanitizer_folder OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    target_link_options(kescorexml_compile_options INTERFACE
      -shared-libasan LINKER:-rpath,${sanitizer_folder})
  endif()
endif()

# Sources that are compiled together are not the main file, which this warning of GCC's goes by.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(kescorexml_compile_options INTERFACE -Wno-subobject-linkage)
endif()

if(KESCOREXML_COVERAGE)
  target_compile_options(kescorexml_compile_options INTERFACE --coverage -O0 -fprofile-update=atomic)
  target_link_options(kescorexml_compile_options INTERFACE --coverage)
endif()
