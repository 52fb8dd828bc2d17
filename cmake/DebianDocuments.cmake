# Run by CPack between laying the files out and packing them: gives each package the documents that
# Debian asks for, compresses what Debian has compressed, and writes the bill of materials.
include(${CPACK_KESCOREXML_SOURCES}/cmake/BillOfMaterials.cmake)

function(compress file)
  execute_process(COMMAND gzip -9 -n -f ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(debian ${CPACK_KESCOREXML_SOURCES}/cmake/debian)
execute_process(COMMAND dpkg --print-architecture
  OUTPUT_VARIABLE architecture OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
# The day of the release, so that packages for several architectures hold the same file.
file(STRINGS ${CPACK_KESCOREXML_SOURCES}/CHANGELOG.md release
  REGEX "^## \\[${CPACK_PACKAGE_VERSION}\\] - " LIMIT_COUNT 1)
string(REGEX REPLACE "^.* - " "" release "${release}")
execute_process(COMMAND date --utc --rfc-email "--date=${release}"
  OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(tree ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component})
  set(documents ${tree}/usr/share/doc/${package})

  file(COPY ${debian}/copyright DESTINATION ${documents})
  execute_process(
    COMMAND awk -v version=${CPACK_PACKAGE_VERSION} -v date=${date}
      -v contact=${CPACK_PACKAGE_CONTACT} -f ${debian}/changelog.awk
      ${CPACK_KESCOREXML_SOURCES}/CHANGELOG.md
    OUTPUT_FILE ${documents}/changelog
    COMMAND_ERROR_IS_FATAL ANY)
  compress(${documents}/changelog)

  if(component STREQUAL "development")
    file(COPY ${CPACK_KESCOREXML_SOURCES}/docs/guide.md ${CPACK_KESCOREXML_SOURCES}/SECURITY.md
      DESTINATION ${documents})
    file(GLOB examples ${CPACK_KESCOREXML_SOURCES}/examples/*.cpp
      ${CPACK_KESCOREXML_SOURCES}/examples/*.xml ${CPACK_KESCOREXML_SOURCES}/examples/*.xsd)
    file(COPY ${examples} DESTINATION ${documents}/examples)
  endif()

  file(GLOB pages ${tree}/usr/share/man/man*/*.[1-9])
  foreach(page IN LISTS pages)
    compress(${page})
  endforeach()

  # Packages for several architectures may be installed together, so the name tells which.
  kescorexml_write_bill(${package} ${component} ${tree}
    ${documents}/${package}_${architecture}.spdx.json)
endforeach()
