#include <kescorexml/ExtensionXmlTokens.h>

namespace {

// Compilers need not merge equal literals; a text with two names is written once.
constexpr char16_t c_name[] = u"name";
constexpr char16_t c_locale[] = u"locale";

} // namespace

namespace ExtensionXmlTokens {

const char16_t* const tagManifest = u"manifest";
const char16_t* const tagDashboardExtension = u"dashboard-extension";
const char16_t* const tagWorksheetExtension = u"worksheet-extension";
const char16_t* const tagName = c_name;
const char16_t* const tagDescription = u"description";
const char16_t* const tagMinApiVersion = u"min-api-version";
const char16_t* const tagDefaultLocale = u"default-locale";
const char16_t* const tagIcon = u"icon";
const char16_t* const tagSourceLocation = u"source-location";
const char16_t* const tagUrl = u"url";
const char16_t* const tagResources = u"resources";
const char16_t* const tagResource = u"resource";
const char16_t* const tagText = u"text";
const char16_t* const tagAuthor = u"author";
const char16_t* const tagRecentExtension = u"recent-extension";
const char16_t* const tagPermissions = u"permissions";
const char16_t* const tagPermission = u"permission";
const char16_t* const tagContextMenu = u"context-menu";
const char16_t* const tagConfigureContextMenuItem = u"configure-context-menu-item";
const char16_t* const tagVizExtension = u"viz-extension";
const char16_t* const tagEncoding = u"encoding";
const char16_t* const tagDisplayName = u"display-name";
const char16_t* const tagDataSpec = u"data-spec";
const char16_t* const tagDataType = u"data-type";
const char16_t* const tagDisableSortingUI = u"disable-sorting-ui";
const char16_t* const tagRoleSpec = u"role-spec";
const char16_t* const tagRoleType = u"role-type";
const char16_t* const tagFields = u"fields";
const char16_t* const tagExclusions = u"exclusions";
const char16_t* const tagInclusions = u"inclusions";
const char16_t* const tagCustom = u"custom";
const char16_t* const tagEncodingIcon = u"encoding-icon";
const char16_t* const tagTooltip = u"tooltip";

const char16_t* const attrCustomTypeName = u"custom-type-name";
const char16_t* const attrEmail = u"email";
const char16_t* const attrEnabled = u"enabled";
const char16_t* const attrExtensionVersion = u"extension-version";
const char16_t* const attrFilename = u"filename";
const char16_t* const attrId = u"id";
const char16_t* const attrLastAccessTime = u"last-access-time";
const char16_t* const attrLocale = c_locale;
const char16_t* const attrManifestVersion = u"manifest-version";
const char16_t* const attrMaxCount = u"max-count";
const char16_t* const attrName = c_name;
const char16_t* const attrOrganization = u"organization";
const char16_t* const attrResourceId = u"resource-id";
const char16_t* const attrToken = u"token";
const char16_t* const attrType = u"type";
const char16_t* const attrWebsite = u"website";

const char16_t* const valueDiscreteDimension = u"discrete-dimension";
const char16_t* const valueDiscreteMeasure = u"discrete-measure";
const char16_t* const valueContinuousDimension = u"continuous-dimension";
const char16_t* const valueContinuousMeasure = u"continuous-measure";

} // namespace ExtensionXmlTokens

namespace CoreXml {

const char16_t* const attrLocale = c_locale;

} // namespace CoreXml
