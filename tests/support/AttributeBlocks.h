#pragma once

#include "slabs/AttributeBlock.h"
#include "slabs/ParseArena.h"

#include <string_view>
#include <utility>
#include <vector>

/// Names and values of attributes.
using Pairs = std::vector<std::pair<TString, TString>>;

/// A block with one reference, the caller's.
inline AttributeBlock* MakeBlock(const Pairs& pairs)
{
    ParseArena arena;
    std::vector<TString> names;
    std::vector<std::u16string_view> values;
    for (const auto& [name, value] : pairs) {
        names.push_back(name);
        values.push_back(value.view());
    }
    auto* list = new AttributeNames(names);
    AttributeBlock* block = AttributeBlock::Create(arena, *list, values);
    list->Release();
    return block;
}
