#pragma once

#include "support/Effort.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

/// The files below a folder.
namespace RealDocuments {

inline bool Exists(const std::string& folder)
{
    return std::filesystem::exists(folder);
}

/// Sorted.
inline std::vector<std::string> FindAll(const std::string& folder)
{
    std::vector<std::string> files;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator entry(folder, error), end; entry != end;
         entry.increment(error)) {
        if (entry->is_regular_file())
            files.push_back(entry->path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// Those whose names end with ".xml", sorted.
inline std::vector<std::string> Find(const std::string& folder)
{
    std::vector<std::string> files = FindAll(folder);
    std::erase_if(files, [](const std::string& file) { return !file.ends_with(".xml"); });
    return files;
}

/// Whether the environment asks for all documents where a test takes some.
inline bool AreAllWanted()
{
    return std::getenv("KESCOREXML_TEST_ALL_DOCUMENTS") != nullptr;
}

/// Some of the files, always the same, of `maxBytes` together; see Effort.
inline std::vector<std::string> Sample(std::vector<std::string> files, std::size_t maxBytes)
{
    maxBytes = Effort::Scale(maxBytes);
    std::mt19937 random(12);
    for (std::size_t i = files.size(); i > 1; --i)
        std::swap(files[i - 1], files[random() % i]);
    std::size_t count = 0;
    for (std::size_t bytes = 0; count < files.size(); ++count) {
        bytes += std::filesystem::file_size(files[count]);
        if (bytes > maxBytes)
            break;
    }
    files.resize(count);
    return files;
}

inline std::string Read(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error(path + " cannot be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace RealDocuments
