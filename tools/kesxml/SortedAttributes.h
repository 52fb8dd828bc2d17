#pragma once

#include <kesplatform/TString.h>

#include <unordered_map>
#include <vector>

using AttributeMap = std::unordered_map<TString, TString>;

/// The attributes in the order of their names, valid as long as the map.
std::vector<const AttributeMap::value_type*> SortByName(const AttributeMap& attributes);
