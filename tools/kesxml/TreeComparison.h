#pragma once

#include <kescorexml/DOMElement.h>
#include <kesplatform/TString.h>

#include <vector>

/// One difference between two trees. An element that only one of them has stands alone; of an
/// element that both have, `what` says in what it differs, fit for a line of a terminal.
struct TreeDifference
{
    const DOMElement* first = nullptr;
    const DOMElement* second = nullptr;
    TString what;
};

/// The differences between two elements with all below them, in the order of the documents. The
/// order of attributes, and white space around the texts of elements that hold others, is none.
/// Children are paired so that most of them are equal, and the others by their names, as far as
/// that takes no more than some million steps; of larger lists, what differs is paired by names
/// alone. Nothing recurses.
std::vector<TreeDifference> CompareTrees(const DOMElement& first, const DOMElement& second);
