# Writes what a Debian package consists of, as SPDX 2.3 in JSON:
#   kescorexml_write_bill(PACKAGE COMPONENT TREE FILE)
# TREE is the folder with the package's files. FILE is to lie in it and is the one that is left out.
# Needs what Packages.cmake tells CPack.

# The parts that are not the package's own: bill_part(NAME VERSION RELATIONSHIP...) adds one to
# `parts`, and how the package relates to it to `relations`.
function(bill_part name version relation)
  string(MAKE_C_IDENTIFIER ${name} id)
  string(REPLACE "_" "-" id ${id})
  set(parts "${parts},
    {
      \"SPDXID\": \"SPDXRef-Part-${id}\",
      \"name\": \"${name}\",
      \"versionInfo\": \"${version}\",
      \"downloadLocation\": \"NOASSERTION\",
      \"filesAnalyzed\": false,
      \"licenseConcluded\": \"NOASSERTION\",
      \"licenseDeclared\": \"NOASSERTION\",
      \"copyrightText\": \"NOASSERTION\"
    }" PARENT_SCOPE)
  set(relations "${relations},
    { \"spdxElementId\": \"SPDXRef-Package\", \"relationshipType\": \"${relation}\",
      \"relatedSpdxElement\": \"SPDXRef-Part-${id}\" }" PARENT_SCOPE)
endfunction()

function(kescorexml_write_bill package component tree file)
  file(GLOB_RECURSE names LIST_DIRECTORIES FALSE RELATIVE ${tree} ${tree}/*)
  list(SORT names)
  file(RELATIVE_PATH own_name ${tree} ${file})
  set(files)
  set(relations)
  set(parts)
  set(sums)
  set(count 0)
  foreach(name IN LISTS names)
    # SPDX lists files; a link is what its target is.
    if(name STREQUAL own_name OR IS_SYMLINK ${tree}/${name})
      continue()
    endif()
    file(SHA1 ${tree}/${name} sha1)
    file(SHA256 ${tree}/${name} sha256)
    list(APPEND sums ${sha1})
    math(EXPR count "${count} + 1")
    string(APPEND files ",
    {
      \"SPDXID\": \"SPDXRef-File-${count}\",
      \"fileName\": \"./${name}\",
      \"checksums\": [
        { \"algorithm\": \"SHA1\", \"checksumValue\": \"${sha1}\" },
        { \"algorithm\": \"SHA256\", \"checksumValue\": \"${sha256}\" }
      ],
      \"licenseConcluded\": \"NOASSERTION\",
      \"licenseInfoInFiles\": [ \"NOASSERTION\" ],
      \"copyrightText\": \"NOASSERTION\"
    }")
    string(APPEND relations ",
    { \"spdxElementId\": \"SPDXRef-Package\", \"relationshipType\": \"CONTAINS\",
      \"relatedSpdxElement\": \"SPDXRef-File-${count}\" }")
  endforeach()
  list(SORT sums)
  list(JOIN sums "" sums)
  string(SHA1 verification_code "${sums}")
  string(REGEX REPLACE "^,\n" "" files "${files}")

  if(component STREQUAL "runtime")
    bill_part(Qt-Core ${CPACK_KESCOREXML_QT_VERSION} DYNAMIC_LINK)
    bill_part(Xerces-C ${CPACK_KESCOREXML_XERCES_VERSION} DYNAMIC_LINK)
    bill_part(ICU ${CPACK_KESCOREXML_ICU_VERSION} DYNAMIC_LINK)
    # Headers alone.
    bill_part(Boost ${CPACK_KESCOREXML_BOOST_VERSION} STATIC_LINK)
  else()
    bill_part(${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} ${CPACK_PACKAGE_VERSION} DEPENDS_ON)
  endif()
  if(component STREQUAL "tools")
    bill_part(Qt-Core ${CPACK_KESCOREXML_QT_VERSION} DYNAMIC_LINK)
  endif()

  string(TIMESTAMP created "%Y-%m-%dT%H:%M:%SZ" UTC)
  file(WRITE ${file} "{
  \"spdxVersion\": \"SPDX-2.3\",
  \"dataLicense\": \"CC0-1.0\",
  \"SPDXID\": \"SPDXRef-DOCUMENT\",
  \"name\": \"${package}-${CPACK_PACKAGE_VERSION}\",
  \"documentNamespace\": \"https://kescorexml.invalid/spdx/${package}-${CPACK_PACKAGE_VERSION}-${verification_code}\",
  \"creationInfo\": {
    \"created\": \"${created}\",
    \"creators\": [ \"Tool: cmake-${CMAKE_VERSION}\" ]
  },
  \"packages\": [
    {
      \"SPDXID\": \"SPDXRef-Package\",
      \"name\": \"${package}\",
      \"versionInfo\": \"${CPACK_PACKAGE_VERSION}\",
      \"supplier\": \"Organization: kescorexml maintainers\",
      \"downloadLocation\": \"NOASSERTION\",
      \"filesAnalyzed\": true,
      \"packageVerificationCode\": {
        \"packageVerificationCodeValue\": \"${verification_code}\",
        \"packageVerificationCodeExcludedFiles\": [ \"./${own_name}\" ]
      },
      \"licenseConcluded\": \"NOASSERTION\",
      \"licenseDeclared\": \"NOASSERTION\",
      \"licenseInfoFromFiles\": [ \"NOASSERTION\" ],
      \"copyrightText\": \"NOASSERTION\"
    }${parts}
  ],
  \"files\": [
${files}
  ],
  \"relationships\": [
    { \"spdxElementId\": \"SPDXRef-DOCUMENT\", \"relationshipType\": \"DESCRIBES\",
      \"relatedSpdxElement\": \"SPDXRef-Package\" }${relations}
  ]
}
")
endfunction()
