#include <kescorexml/LookupResource.h>

#include <kesplatform/Resources.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <set>

namespace {

struct Row
{
    std::uint32_t id;
    const char16_t* alias;
};

/// The ids are part of what applications have stored and must never change.
constexpr Row c_rows[] = {
    {0xc0e65bd0, u"KQRC_FILEFORMAT_ZAP_XSD"},
    {0xa3dc1cc9, u"KQRC_FILEFORMAT_ZAP_XSD_10_2"},
    {0xcc49fddf, u"KQRC_FILEFORMAT_ZAP_XSD_10_3"},
    {0xdda5fdb7, u"KQRC_FILEFORMAT_ZAP_XSD_10_4"},
    {0x1ecb88c5, u"KQRC_FILEFORMAT_ZAP_XSD_10_5"},
    {0x0ee78796, u"KQRC_FILEFORMAT_ZEB_XSD"},
    {0x72ab4c3c, u"KQRC_FILEFORMAT_ZEB_XSD_10_2"},
    {0x889d0897, u"KQRC_FILEFORMAT_ZEB_XSD_10_3"},
    {0x166dedb5, u"KQRC_FILEFORMAT_ZEB_XSD_10_4"},
    {0x7879ef8f, u"KQRC_FILEFORMAT_ZEB_XSD_10_5"},
    {0x98fc1618, u"KQRC_FILEFORMAT_ZIL_XSD"},
    {0x1c4fdca2, u"KQRC_FILEFORMAT_ZIL_XSD_10_2"},
    {0x8597e502, u"KQRC_FILEFORMAT_ZIL_XSD_10_3"},
    {0xc0eacc50, u"KQRC_FILEFORMAT_ZIL_XSD_10_4"},
    {0x0bce4c23, u"KQRC_FILEFORMAT_ZIL_XSD_10_5"},
    {0xd724572f, u"KQRC_FILEFORMAT_ZOK_XSD"},
    {0xc090d8d4, u"KQRC_FILEFORMAT_ZOK_XSD_10_2"},
    {0x15dc543c, u"KQRC_FILEFORMAT_ZOK_XSD_10_3"},
    {0xa1fbae81, u"KQRC_FILEFORMAT_ZOK_XSD_10_4"},
    {0x0d9d12d3, u"KQRC_FILEFORMAT_ZOK_XSD_10_5"},
    {0x963f056d, u"KQRC_FILEFORMAT_ZUN_XSD"},
    {0x8fcabd70, u"KQRC_FILEFORMAT_ZYQ_XSD"},
    {0x808046be, u"KQRC_FILEFORMAT_ZAX_XSD"},
    {0x8b54af85, u"KQRC_FILEFORMAT_ZEX_XSD"},
    {0x11868937, u"KQRC_FILEFORMAT_ZIXO_XSD"},
    {0x63cabd5b, u"KQRC_FILEFORMAT_USER_XSD"},
    {0x8b50c6ea, u"KQRC_FILEFORMAT_XML_XSD"},
    {0x461a4bb6, u"KQRC_FILEFORMAT_XHTML_DTD"},
    {0x5c37c388, u"KQRC_FILEFORMAT_OAUTH_CONFIG_XSD"},
    {0xe530aa73, u"KQRC_FILEFORMAT_DYNAMIC_CONNECTORS_XSD"},
    {0x8a929098, u"KQRC_FILEFORMAT_CONNECTOR_PLUGIN_MANIFEST_XSD"},
    {0x2e5bd5c0, u"KQRC_FILEFORMAT_CONNECTOR_PLUGIN_RESOURCES_XSD"},
    {0x05c99ea2, u"KQRC_FILEFORMAT_CONNECTOR_PLUGIN_CONN_METADATA_XSD"},
};

QtKesResourceId Id(std::uint32_t value)
{
    return static_cast<QtKesResourceId>(value);
}

/// Registers a resource name for as long as it lives.
class Registration
{
public:
    Registration(const TString& alias, const TString& variant, const TString& name)
        : m_alias(alias), m_variant(variant)
    {
        ResourceRegistrationCache::GetInstance().Register(alias, variant, name);
    }
    ~Registration() { ResourceRegistrationCache::GetInstance().Unregister(m_alias, m_variant); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    TString m_alias;
    TString m_variant;
};

TEST(LookupResource, KnowsTheAliasOfEverySchema)
{
    for (const Row& row : c_rows)
        EXPECT_EQ(LookupResourceAlias(Id(row.id)), row.alias) << std::hex << row.id;
}

TEST(LookupResource, NamesItsEnumeratorsAfterTheAliases)
{
    EXPECT_EQ(LookupResourceAlias(QtKesResourceId::FileformatZapXsd), u"KQRC_FILEFORMAT_ZAP_XSD");
    EXPECT_EQ(LookupResourceAlias(QtKesResourceId::FileformatZokXsd_10_4),
              u"KQRC_FILEFORMAT_ZOK_XSD_10_4");
    EXPECT_EQ(LookupResourceAlias(QtKesResourceId::FileformatXmlXsd), u"KQRC_FILEFORMAT_XML_XSD");
    EXPECT_EQ(LookupResourceAlias(QtKesResourceId::FileformatUserXsd), u"KQRC_FILEFORMAT_USER_XSD");
    EXPECT_EQ(LookupResourceAlias(QtKesResourceId::FileformatXhtmlDtd),
              u"KQRC_FILEFORMAT_XHTML_DTD");
}

TEST(LookupResource, KnowsNoAliasForAnyOtherId)
{
    std::set<std::uint32_t> known;
    for (const Row& row : c_rows)
        known.insert(row.id);

    std::set<std::uint32_t> others = {0, 1, std::numeric_limits<std::uint32_t>::max()};
    for (const Row& row : c_rows) {
        others.insert(row.id - 1);
        others.insert(row.id + 1);
        others.insert(row.id ^ 0x80000000U);
    }
    for (const std::uint32_t id : others) {
        if (!known.contains(id)) {
            EXPECT_TRUE(LookupResourceAlias(Id(id)).IsEmpty()) << std::hex << id;
        }
    }
}

TEST(LookupResource, GivesThePathThatIsRegisteredForTheAlias)
{
    const ResourceRegistrationCache& cache = ResourceRegistrationCache::GetInstance();
    for (const Row& row : c_rows)
        EXPECT_EQ(LookupResource(Id(row.id)), cache.GetResourcePath(row.alias, TString()));

    const Registration registration(u"KQRC_FILEFORMAT_ZAX_XSD", TString(), u"another/name");
    EXPECT_EQ(LookupResource(QtKesResourceId::FileformatZaxXsd), u"another/name");
}

TEST(LookupResource, GivesThePathOfAVariant)
{
    const Registration plain(u"KQRC_FILEFORMAT_ZAX_XSD", TString(), u"plain");
    const Registration special(u"KQRC_FILEFORMAT_ZAX_XSD", u"special", u"special/name");
    EXPECT_EQ(LookupResource(QtKesResourceId::FileformatZaxXsd, u"special"), u"special/name");
    EXPECT_EQ(LookupResource(QtKesResourceId::FileformatZaxXsd, TString()), u"plain");
    EXPECT_EQ(LookupResource(QtKesResourceId::FileformatZaxXsd, u"unheard-of"),
              ResourceRegistrationCache::GetInstance().GetResourcePath(u"KQRC_FILEFORMAT_ZAX_XSD",
                                                                       u"unheard-of"));
}

TEST(LookupResource, GivesForAnUnknownIdWhatIsRegisteredForTheEmptyAlias)
{
    EXPECT_EQ(LookupResource(Id(0)),
              ResourceRegistrationCache::GetInstance().GetResourcePath(TString(), TString()));
    const Registration registration(TString(), TString(), u"fallback");
    EXPECT_EQ(LookupResource(Id(0)), u"fallback");
}

TEST(LookupResource, HasADefaultLookupThatIsTheSame)
{
    const Registration plain(u"KQRC_FILEFORMAT_ZEX_XSD", TString(), u"plain");
    EXPECT_EQ(LookupDefaultQtKesRes(QtKesResourceId::FileformatZexXsd), u"plain");
    for (const Row& row : c_rows)
        EXPECT_EQ(LookupDefaultQtKesRes(Id(row.id)), LookupResource(Id(row.id)));
}

} // namespace
