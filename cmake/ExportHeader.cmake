# Makes the header with the export macro of a library. All public headers include it before anything
# else, so it also says, in one line, what they need.
#   kescorexml_make_export_header(TARGET MACRO FILE)
function(kescorexml_make_export_header target macro file)
  set(requirement [[
#ifdef __cplusplus
static_assert(__cplusplus > 201703L,
              "kescorexml needs C++20: compile with -std=c++20, in CMake with cxx_std_20");
#endif
]])
  generate_export_header(${target}
    EXPORT_MACRO_NAME ${macro}
    EXPORT_FILE_NAME ${file}
    CUSTOM_CONTENT_FROM_VARIABLE requirement)
endfunction()
