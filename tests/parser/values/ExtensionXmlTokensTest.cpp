#include <kescorexml/ExtensionXmlTokens.h>

#include <gmock/gmock.h>

#include <cctype>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace ExtensionXmlTokens;

struct Token
{
    const char* name;
    const char16_t* text;
};

const std::vector<Token>& Tokens()
{
    static const std::vector<Token> tokens = {
        {"tagManifest", tagManifest},
        {"tagDashboardExtension", tagDashboardExtension},
        {"tagWorksheetExtension", tagWorksheetExtension},
        {"tagName", tagName},
        {"tagDescription", tagDescription},
        {"tagMinApiVersion", tagMinApiVersion},
        {"tagDefaultLocale", tagDefaultLocale},
        {"tagIcon", tagIcon},
        {"tagSourceLocation", tagSourceLocation},
        {"tagUrl", tagUrl},
        {"tagResources", tagResources},
        {"tagResource", tagResource},
        {"tagText", tagText},
        {"tagAuthor", tagAuthor},
        {"tagRecentExtension", tagRecentExtension},
        {"tagPermissions", tagPermissions},
        {"tagPermission", tagPermission},
        {"tagContextMenu", tagContextMenu},
        {"tagConfigureContextMenuItem", tagConfigureContextMenuItem},
        {"tagVizExtension", tagVizExtension},
        {"tagEncoding", tagEncoding},
        {"tagDisplayName", tagDisplayName},
        {"tagDataSpec", tagDataSpec},
        {"tagDataType", tagDataType},
        {"tagDisableSortingUI", tagDisableSortingUI},
        {"tagRoleSpec", tagRoleSpec},
        {"tagRoleType", tagRoleType},
        {"tagFields", tagFields},
        {"tagExclusions", tagExclusions},
        {"tagInclusions", tagInclusions},
        {"tagCustom", tagCustom},
        {"tagEncodingIcon", tagEncodingIcon},
        {"tagTooltip", tagTooltip},
        {"attrCustomTypeName", attrCustomTypeName},
        {"attrEmail", attrEmail},
        {"attrEnabled", attrEnabled},
        {"attrExtensionVersion", attrExtensionVersion},
        {"attrFilename", attrFilename},
        {"attrId", attrId},
        {"attrLastAccessTime", attrLastAccessTime},
        {"attrLocale", attrLocale},
        {"attrManifestVersion", attrManifestVersion},
        {"attrMaxCount", attrMaxCount},
        {"attrName", attrName},
        {"attrOrganization", attrOrganization},
        {"attrResourceId", attrResourceId},
        {"attrToken", attrToken},
        {"attrType", attrType},
        {"attrWebsite", attrWebsite},
        {"valueDiscreteDimension", valueDiscreteDimension},
        {"valueDiscreteMeasure", valueDiscreteMeasure},
        {"valueContinuousDimension", valueContinuousDimension},
        {"valueContinuousMeasure", valueContinuousMeasure},
    };
    return tokens;
}

std::string Narrow(std::u16string_view text)
{
    return std::string(text.begin(), text.end());
}

/// The text that goes with a constant's name: the kind dropped, the words in lower case joined by
/// "-", where a run of capitals is one word.
std::string TextForName(std::string name)
{
    const std::size_t kind = name.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    name.erase(0, kind);
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto unit = static_cast<unsigned char>(name[i]);
        if (i > 0 && std::isupper(unit) && std::islower(static_cast<unsigned char>(name[i - 1])))
            text += '-';
        text += static_cast<char>(std::tolower(unit));
    }
    return text;
}

TEST(ExtensionXmlTokens, SpellsEveryTokenAsItsNameSays)
{
    ASSERT_EQ(Tokens().size(), 53U);
    for (const Token& token : Tokens())
        EXPECT_EQ(Narrow(token.text), TextForName(token.name)) << token.name;
}

TEST(ExtensionXmlTokens, SpellsTheUnusualNames)
{
    EXPECT_EQ(Narrow(tagDashboardExtension), "dashboard-extension");
    EXPECT_EQ(Narrow(tagMinApiVersion), "min-api-version");
    EXPECT_EQ(Narrow(tagDisableSortingUI), "disable-sorting-ui");
    EXPECT_EQ(Narrow(tagConfigureContextMenuItem), "configure-context-menu-item");
    EXPECT_EQ(Narrow(attrLastAccessTime), "last-access-time");
    EXPECT_EQ(Narrow(attrFilename), "filename");
    EXPECT_EQ(Narrow(attrId), "id");
    EXPECT_EQ(Narrow(valueContinuousMeasure), "continuous-measure");
    EXPECT_EQ(Narrow(CoreXml::attrLocale), "locale");
}

/// What a static object finds in its constructor.
struct EarlyTokens
{
    const char16_t* manifest = tagManifest;
    const char16_t* locale = CoreXml::attrLocale;
};

// Before every other object that is not constant.
__attribute__((init_priority(101))) const EarlyTokens s_early;

TEST(ExtensionXmlTokens, AreThereForStaticObjects)
{
    EXPECT_EQ(s_early.manifest, tagManifest);
    EXPECT_EQ(s_early.locale, CoreXml::attrLocale);
    ASSERT_NE(s_early.manifest, nullptr);
    EXPECT_EQ(Narrow(s_early.manifest), "manifest");
}

TEST(ExtensionXmlTokens, HoldsLowerCaseLettersAndHyphensOnly)
{
    for (const Token& token : Tokens()) {
        EXPECT_THAT(std::u16string_view(token.text),
                    testing::Each(
                        testing::AnyOf(u'-', testing::AllOf(testing::Ge(u'a'), testing::Le(u'z')))))
            << token.name;
        EXPECT_FALSE(std::u16string_view(token.text).empty()) << token.name;
    }
}

TEST(ExtensionXmlTokens, SharesOneStringBetweenEqualTexts)
{
    EXPECT_EQ(static_cast<const void*>(tagName), static_cast<const void*>(attrName));
    EXPECT_EQ(static_cast<const void*>(ExtensionXmlTokens::attrLocale),
              static_cast<const void*>(CoreXml::attrLocale));
    for (const Token& a : Tokens()) {
        for (const Token& b : Tokens()) {
            const bool sameText = std::u16string_view(a.text) == b.text;
            EXPECT_EQ(a.text == b.text, sameText) << a.name << ' ' << b.name;
        }
    }
}

} // namespace
