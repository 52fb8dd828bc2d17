# Run by CPack between laying the files out and packing them: gives each package the documents that
# Debian asks for, and compresses what Debian has compressed.

function(compress file)
  execute_process(COMMAND gzip -9 -n -f ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(debian ${CPACK_KESCOREXML_SOURCES}/cmake/debian)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr/share)
  set(documents ${share}/doc/${package})

  file(COPY ${debian}/copyright DESTINATION ${documents})
  execute_process(
    COMMAND awk -v version=${CPACK_PACKAGE_VERSION} -v date=${date}
      -v contact=${CPACK_PACKAGE_CONTACT} -f ${debian}/changelog.awk
      ${CPACK_KESCOREXML_SOURCES}/CHANGELOG.md
    OUTPUT_FILE ${documents}/changelog
    COMMAND_ERROR_IS_FATAL ANY)
  compress(${documents}/changelog)

  file(GLOB pages ${share}/man/man*/*.[1-9])
  foreach(page IN LISTS pages)
    compress(${page})
  endforeach()
endforeach()
