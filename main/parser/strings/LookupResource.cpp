#include <kescorexml/LookupResource.h>

#include "ResourceAliases.h"

#include <kesplatform/Resources.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace {

/// The rows are kept by family, where a reader looks for them; a search wants them by id.
constexpr auto c_aliasesById = [] {
    std::array<ResourceAlias, std::size(c_resourceAliases)> rows{};
    std::ranges::copy(c_resourceAliases, rows.begin());
    std::ranges::sort(rows, {}, &ResourceAlias::id);
    return rows;
}();

static_assert(std::ranges::adjacent_find(c_aliasesById, {}, &ResourceAlias::id) ==
                  c_aliasesById.end(),
              "two resources share an id");

} // namespace

TString LookupResourceAlias(QtKesResourceId id)
{
    const auto row = std::ranges::lower_bound(c_aliasesById, id, {}, &ResourceAlias::id);
    if (row == c_aliasesById.end() || row->id != id)
        return {};
    return row->alias;
}

TString LookupResource(QtKesResourceId id)
{
    return LookupResource(id, TString());
}

TString LookupResource(QtKesResourceId id, TString variant)
{
    return ResourceRegistrationCache::GetInstance().GetResourcePath(LookupResourceAlias(id),
                                                                    variant);
}

TString LookupDefaultQtKesRes(QtKesResourceId id)
{
    return LookupResource(id);
}
