#pragma once

#include <kescorexml/DOM.h>
#include <kesplatform/TString.h>

#include <cstddef>
#include <unordered_map>
#include <vector>

/// What is in a document. The document itself is no element and no level.
struct Statistics
{
    std::size_t elements = 0;
    std::size_t attributes = 0;
    std::size_t depth = 0;
    std::size_t textUnits = 0;
};

using CountsByName = std::unordered_map<TString, std::size_t>;

/// Of what the counts are made up.
struct Distribution
{
    CountsByName elements;
    CountsByName attributes;
    /// The units of text that the elements of a name hold themselves; none with 0.
    CountsByName textUnits;
    /// The number of elements on each level; the document element is alone on the first.
    std::vector<std::size_t> levels;
};

/// Counts in one walk, which does not recurse. Counts into `distribution` too unless it is null.
Statistics Count(const DOM& document, Distribution* distribution = nullptr);
