#pragma once

#include <kescorexml/Export.h>

/// The names of the XML manifest that describes an extension (a dashboard, worksheet or
/// visualization add-in): what is spelled here is spelled the same by every reader and writer.
/// Each constant is a zero-terminated UTF-16 text that lives as long as the library; equal texts
/// are one text, so that within this header equal texts have equal addresses.
/// Safe to use from several threads.
namespace ExtensionXmlTokens {

/// The name of an element.
KESCOREXML_EXPORT extern const char16_t* const tagManifest;
KESCOREXML_EXPORT extern const char16_t* const tagDashboardExtension;
KESCOREXML_EXPORT extern const char16_t* const tagWorksheetExtension;
KESCOREXML_EXPORT extern const char16_t* const tagName;
KESCOREXML_EXPORT extern const char16_t* const tagDescription;
KESCOREXML_EXPORT extern const char16_t* const tagMinApiVersion;
KESCOREXML_EXPORT extern const char16_t* const tagDefaultLocale;
KESCOREXML_EXPORT extern const char16_t* const tagIcon;
KESCOREXML_EXPORT extern const char16_t* const tagSourceLocation;
KESCOREXML_EXPORT extern const char16_t* const tagUrl;
KESCOREXML_EXPORT extern const char16_t* const tagResources;
KESCOREXML_EXPORT extern const char16_t* const tagResource;
KESCOREXML_EXPORT extern const char16_t* const tagText;
KESCOREXML_EXPORT extern const char16_t* const tagAuthor;
KESCOREXML_EXPORT extern const char16_t* const tagRecentExtension;
KESCOREXML_EXPORT extern const char16_t* const tagPermissions;
KESCOREXML_EXPORT extern const char16_t* const tagPermission;
KESCOREXML_EXPORT extern const char16_t* const tagContextMenu;
KESCOREXML_EXPORT extern const char16_t* const tagConfigureContextMenuItem;
KESCOREXML_EXPORT extern const char16_t* const tagVizExtension;
KESCOREXML_EXPORT extern const char16_t* const tagEncoding;
KESCOREXML_EXPORT extern const char16_t* const tagDisplayName;
KESCOREXML_EXPORT extern const char16_t* const tagDataSpec;
KESCOREXML_EXPORT extern const char16_t* const tagDataType;
KESCOREXML_EXPORT extern const char16_t* const tagDisableSortingUI;
KESCOREXML_EXPORT extern const char16_t* const tagRoleSpec;
KESCOREXML_EXPORT extern const char16_t* const tagRoleType;
KESCOREXML_EXPORT extern const char16_t* const tagFields;
KESCOREXML_EXPORT extern const char16_t* const tagExclusions;
KESCOREXML_EXPORT extern const char16_t* const tagInclusions;
KESCOREXML_EXPORT extern const char16_t* const tagCustom;
KESCOREXML_EXPORT extern const char16_t* const tagEncodingIcon;
KESCOREXML_EXPORT extern const char16_t* const tagTooltip;

/// The name of an attribute.
KESCOREXML_EXPORT extern const char16_t* const attrCustomTypeName;
KESCOREXML_EXPORT extern const char16_t* const attrEmail;
KESCOREXML_EXPORT extern const char16_t* const attrEnabled;
KESCOREXML_EXPORT extern const char16_t* const attrExtensionVersion;
KESCOREXML_EXPORT extern const char16_t* const attrFilename;
KESCOREXML_EXPORT extern const char16_t* const attrId;
KESCOREXML_EXPORT extern const char16_t* const attrLastAccessTime;
KESCOREXML_EXPORT extern const char16_t* const attrLocale;
KESCOREXML_EXPORT extern const char16_t* const attrManifestVersion;
KESCOREXML_EXPORT extern const char16_t* const attrMaxCount;
KESCOREXML_EXPORT extern const char16_t* const attrName;
KESCOREXML_EXPORT extern const char16_t* const attrOrganization;
KESCOREXML_EXPORT extern const char16_t* const attrResourceId;
KESCOREXML_EXPORT extern const char16_t* const attrToken;
KESCOREXML_EXPORT extern const char16_t* const attrType;
KESCOREXML_EXPORT extern const char16_t* const attrWebsite;

/// The value of an attribute.
KESCOREXML_EXPORT extern const char16_t* const valueDiscreteDimension;
KESCOREXML_EXPORT extern const char16_t* const valueDiscreteMeasure;
KESCOREXML_EXPORT extern const char16_t* const valueContinuousDimension;
KESCOREXML_EXPORT extern const char16_t* const valueContinuousMeasure;

} // namespace ExtensionXmlTokens

namespace CoreXml {

/// "locale", the very text of ExtensionXmlTokens::attrLocale. A session keeps its TLocale in the
/// thread's context under this name. Safe to use from several threads.
KESCOREXML_EXPORT extern const char16_t* const attrLocale;

} // namespace CoreXml
