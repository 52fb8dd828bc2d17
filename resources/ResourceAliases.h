#pragma once

#include <kescorexml/QtKesResourceId.h>

/// One resource and the alias that it is registered under.
struct ResourceAlias
{
    QtKesResourceId id;
    const char16_t* alias;
};

/// The resources that this library hands out, family by family.
inline constexpr ResourceAlias c_resourceAliases[] = {
    {QtKesResourceId::FileformatZapXsd, u"KQRC_FILEFORMAT_ZAP_XSD"},
    {QtKesResourceId::FileformatZapXsd_10_2, u"KQRC_FILEFORMAT_ZAP_XSD_10_2"},
    {QtKesResourceId::FileformatZapXsd_10_3, u"KQRC_FILEFORMAT_ZAP_XSD_10_3"},
    {QtKesResourceId::FileformatZapXsd_10_4, u"KQRC_FILEFORMAT_ZAP_XSD_10_4"},
    {QtKesResourceId::FileformatZapXsd_10_5, u"KQRC_FILEFORMAT_ZAP_XSD_10_5"},
    {QtKesResourceId::FileformatZebXsd, u"KQRC_FILEFORMAT_ZEB_XSD"},
    {QtKesResourceId::FileformatZebXsd_10_2, u"KQRC_FILEFORMAT_ZEB_XSD_10_2"},
    {QtKesResourceId::FileformatZebXsd_10_3, u"KQRC_FILEFORMAT_ZEB_XSD_10_3"},
    {QtKesResourceId::FileformatZebXsd_10_4, u"KQRC_FILEFORMAT_ZEB_XSD_10_4"},
    {QtKesResourceId::FileformatZebXsd_10_5, u"KQRC_FILEFORMAT_ZEB_XSD_10_5"},
    {QtKesResourceId::FileformatZilXsd, u"KQRC_FILEFORMAT_ZIL_XSD"},
    {QtKesResourceId::FileformatZilXsd_10_2, u"KQRC_FILEFORMAT_ZIL_XSD_10_2"},
    {QtKesResourceId::FileformatZilXsd_10_3, u"KQRC_FILEFORMAT_ZIL_XSD_10_3"},
    {QtKesResourceId::FileformatZilXsd_10_4, u"KQRC_FILEFORMAT_ZIL_XSD_10_4"},
    {QtKesResourceId::FileformatZilXsd_10_5, u"KQRC_FILEFORMAT_ZIL_XSD_10_5"},
    {QtKesResourceId::FileformatZokXsd, u"KQRC_FILEFORMAT_ZOK_XSD"},
    {QtKesResourceId::FileformatZokXsd_10_2, u"KQRC_FILEFORMAT_ZOK_XSD_10_2"},
    {QtKesResourceId::FileformatZokXsd_10_3, u"KQRC_FILEFORMAT_ZOK_XSD_10_3"},
    {QtKesResourceId::FileformatZokXsd_10_4, u"KQRC_FILEFORMAT_ZOK_XSD_10_4"},
    {QtKesResourceId::FileformatZokXsd_10_5, u"KQRC_FILEFORMAT_ZOK_XSD_10_5"},
    {QtKesResourceId::FileformatZunXsd, u"KQRC_FILEFORMAT_ZUN_XSD"},
    {QtKesResourceId::FileformatZyqXsd, u"KQRC_FILEFORMAT_ZYQ_XSD"},
    {QtKesResourceId::FileformatZaxXsd, u"KQRC_FILEFORMAT_ZAX_XSD"},
    {QtKesResourceId::FileformatZexXsd, u"KQRC_FILEFORMAT_ZEX_XSD"},
    {QtKesResourceId::FileformatZixoXsd, u"KQRC_FILEFORMAT_ZIXO_XSD"},
    {QtKesResourceId::FileformatUserXsd, u"KQRC_FILEFORMAT_USER_XSD"},
    {QtKesResourceId::FileformatXmlXsd, u"KQRC_FILEFORMAT_XML_XSD"},
    {QtKesResourceId::FileformatXhtmlDtd, u"KQRC_FILEFORMAT_XHTML_DTD"},
    {QtKesResourceId::FileformatOauthConfigXsd, u"KQRC_FILEFORMAT_OAUTH_CONFIG_XSD"},
    {QtKesResourceId::FileformatDynamicConnectorsXsd, u"KQRC_FILEFORMAT_DYNAMIC_CONNECTORS_XSD"},
    {QtKesResourceId::FileformatConnectorPluginManifestXsd,
     u"KQRC_FILEFORMAT_CONNECTOR_PLUGIN_MANIFEST_XSD"},
    {QtKesResourceId::FileformatConnectorPluginResourcesXsd,
     u"KQRC_FILEFORMAT_CONNECTOR_PLUGIN_RESOURCES_XSD"},
    {QtKesResourceId::FileformatConnectorPluginConnMetadataXsd,
     u"KQRC_FILEFORMAT_CONNECTOR_PLUGIN_CONN_METADATA_XSD"},
};
