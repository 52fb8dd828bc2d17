#pragma once

#include <kescorexml/Export.h>
#include <kescorexml/QtKesResourceId.h>

#include <kesplatform/TString.h>

// From a resource's numeric id to the name under which its bytes are found. The bytes themselves
// are read with TResource or UTF8StringTResource. Safe to use from several threads.

/// The alias of a resource, for example "KQRC_FILEFORMAT_ZAP_XSD"; empty for an id that this
/// library does not know.
[[nodiscard]] KESCOREXML_EXPORT TString LookupResourceAlias(QtKesResourceId id);

/// The path that the platform's ResourceRegistrationCache has for the alias of `id` without
/// variant, which is the alias itself unless the application registered another one. An unknown id
/// gives whatever is registered for the empty alias.
[[nodiscard]] KESCOREXML_EXPORT TString LookupResource(QtKesResourceId id);

/// The same for one `variant` of the resource (a language, a resolution).
[[nodiscard]] KESCOREXML_EXPORT TString LookupResource(QtKesResourceId id, TString variant);

/// The same as LookupResource(id).
[[nodiscard]] KESCOREXML_EXPORT TString LookupDefaultQtKesRes(QtKesResourceId id);
