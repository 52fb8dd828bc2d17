#pragma once

#include <kescorexml/Export.h>
#include <kescorexml/InputSource.h>

#include <kesplatform/TString.h>
#include <kesplatform/VersionNumber.h>

#include <memory>

/// The suite's document file types. Zor and Zum have no schema here, nor has any other value.
enum class XmlFileType
{
    Zap = 1,
    Zeb = 2,
    Zil = 3,
    Zok = 4,
    Zun = 5,
    Zor = 6,
    Zum = 7,
    Zyq = 8,
};

/// Which compiled-in XML Schema goes with a document of a file type and version. The current
/// version, 18.1, has one for each type that has any; older versions have their own, for Zap, Zeb,
/// Zil and Zok from 10.2 to 10.5. There is no fallback from one version to another.
/// Safe to use from several threads.
namespace XSDResources {

/// Whether documents of that type and version can be validated. Only major and minor count; a type
/// whose schema has no versions says yes to any, even where no schema is found for it below.
[[nodiscard]] KESCOREXML_EXPORT bool IsThereAnXSDResource(XmlFileType type,
                                                          const VersionNumber& version);

/// The name of the schema resource, for example "KQRC_FILEFORMAT_ZAP_XSD_10_2"; empty when there is
/// none. A version other than the current one is mentioned in the log. A schema of the current
/// version that is missing from the build is a logic assertion.
[[nodiscard]] KESCOREXML_EXPORT TString GetVersionedXsdResourceName(XmlFileType type,
                                                                    const VersionNumber& version);

/// That schema as a source for a parser, identified by the resource's name; null when there is
/// none. Assertions as for the name.
[[nodiscard]] KESCOREXML_EXPORT std::unique_ptr<InputSource>
GetVersionedXsdInputSource(XmlFileType type, const VersionNumber& version);

/// The same for the version that `document` itself names in the attribute `versionAttributeName`
/// ("version" when empty) of its root start tag; see VersionSniffer for how far it is read.
/// A document that names no version is a DOMException.
[[nodiscard]] KESCOREXML_EXPORT std::unique_ptr<InputSource>
GetVersionedXsdInputSourceForDocument(XmlFileType type, InputSource& document,
                                      const TString& versionAttributeName);

} // namespace XSDResources
