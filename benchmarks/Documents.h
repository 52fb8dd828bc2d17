#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// A document to measure with: UTF-8 bytes and a short name for the tables.
struct Document
{
    std::string name;
    std::string bytes;
};

/// Elements with five short attributes each and little text.
std::string MakeAttributeHeavy(std::size_t bytes);
/// Paragraphs of running text with a few references.
std::string MakeTextHeavy(std::size_t bytes);
/// Nested folders, up to 200 levels deep.
std::string MakeDeep(std::size_t bytes);

/// The documents that most figures are given for: the generated ones, and files of Debian's
/// shared-mime-info and unicode-cldr-core where they are installed. Made on first use; always the
/// same bytes.
const std::vector<Document>& GetDocuments();
const Document& GetDocument(const std::string& name);
