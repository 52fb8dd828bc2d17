#pragma once

#include "support/RealDocuments.h"

#include <stdexcept>
#include <string>
#include <vector>

/// What the fuzzers start from and have found, for whatever target, read into memory.
inline std::vector<std::string> ReadCorpus(const std::vector<std::string>& folders)
{
    std::vector<std::string> documents;
    for (const std::string& folder : folders) {
        for (const std::string& file : RealDocuments::FindAll(folder))
            documents.push_back(RealDocuments::Read(file));
    }
    if (documents.empty())
        throw std::runtime_error("no documents");
    return documents;
}
