#pragma once

#include <string>
#include <vector>

/// Documents that cover every construct of XML and its edges.
namespace OddDocuments {

struct Document
{
    std::string bytes;
    /// Well-formed, of version 1.0, in UTF-8, and with no declarations but those of elements and
    /// attributes: what the direct scanner is for.
    bool isPlain;
};

/// A few hundred; made once.
const std::vector<Document>& All();

/// About forty of less than 200 bytes each, for tests that change each byte.
const std::vector<std::string>& Small();

} // namespace OddDocuments
