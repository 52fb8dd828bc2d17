#include <kescorexml/XSDResources.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"

#include <kescorexml/DOMException.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/VersionSniffer.h>

#include <kesplatform/Resources.h>
#include <kesplatform/TFormatString.h>
#include <kesplatform/TLog.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace {

/// The schemas of the current version, at file type minus 1.
constexpr const char16_t* c_baseNames[] = {
    u"KQRC_FILEFORMAT_ZAP_XSD",
    u"KQRC_FILEFORMAT_ZEB_XSD",
    u"KQRC_FILEFORMAT_ZIL_XSD",
    u"KQRC_FILEFORMAT_ZOK_XSD",
    u"KQRC_FILEFORMAT_ZUN_XSD",
    u"",
    u"",
    u"KQRC_FILEFORMAT_ZYQ_XSD",
};

constexpr const char16_t* c_schemaVersions[] = {u"18.1", u"10.5", u"10.4", u"10.3", u"10.2"};

const VersionNumber s_currentVersion(u"18.1", u'.', u'-', 0);

TString GetBaseName(XmlFileType type)
{
    const auto value = static_cast<int>(type);
    if (value < 1 || value > std::ssize(c_baseNames))
        return {};
    return c_baseNames[value - 1];
}

void LogOtherVersion(const VersionNumber& version)
{
    const TFormatString format(u"XSD Resource version '%1' != Current version '%2'");
    LogMessage(TLog::Debug, format.Format(version.GetAsString(), s_currentVersion.GetAsString()));
}

TString GetVersionedXsdResourceNameImpl(XmlFileType type, const VersionNumber& version)
{
    TString base = GetBaseName(type);
    if (base.IsEmpty())
        return {};
    if (version == s_currentVersion) {
        if (!TResource(base).isValid())
            ThrowAssertion(u"XSDResourceResolver", PublishedLine(69),
                           u"Resource '" + base + u"' did not resolve.",
                           KesErrorsError::LogicAssert_0xABCA807E());
        return base;
    }
    LogOtherVersion(version);
    TString name = TFormatString(u"%1_%2").Format(base, version.GetMajorAndMinorAsString(u'_'));
    return TResource(name).isValid() ? name : TString();
}

std::unique_ptr<InputSource> GetXsdInputSource(const TString& resourceName)
{
    if (resourceName.IsEmpty())
        return nullptr;
    const UTF8StringTResource resource(resourceName);
    return std::make_unique<StringInputSource>(resource.GetString(), resourceName, false);
}

} // namespace

namespace XSDResources {

bool IsThereAnXSDResource(XmlFileType type, const VersionNumber& version)
{
    switch (type) {
    case XmlFileType::Zap:
    case XmlFileType::Zeb:
    case XmlFileType::Zil:
    case XmlFileType::Zok: {
        const TString text = version.GetMajorAndMinorAsString(u'.');
        return std::ranges::any_of(c_schemaVersions,
                                   [&](const char16_t* known) { return text == known; });
    }
    case XmlFileType::Zun:
    case XmlFileType::Zyq:
        return true;
    default:
        return false;
    }
}

TString GetVersionedXsdResourceName(XmlFileType type, const VersionNumber& version)
{
    return GetVersionedXsdResourceNameImpl(type, version);
}

std::unique_ptr<InputSource> GetVersionedXsdInputSource(XmlFileType type,
                                                        const VersionNumber& version)
{
    return GetXsdInputSource(GetVersionedXsdResourceNameImpl(type, version));
}

std::unique_ptr<InputSource>
GetVersionedXsdInputSourceForDocument(XmlFileType type, InputSource& document,
                                      const TString& versionAttributeName)
{
    const std::optional<VersionNumber> found = VersionSniffer(document, versionAttributeName);
    if (!found)
        throw DOMException(
            u"Version attribute missing.",
            TError::ErrorInfo(KesErrorsError::MissingVersionAttribute_0xCA8DC404(), 1, 2));
    return GetXsdInputSource(GetVersionedXsdResourceNameImpl(type, *found));
}

} // namespace XSDResources
