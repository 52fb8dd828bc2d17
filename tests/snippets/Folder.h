#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

/// An empty folder, gone at the end, for snippets that need files.
class Folder
{
public:
    Folder()
    {
        std::string path = (std::filesystem::temp_directory_path() / "snippet-XXXXXX").string();
        m_path = mkdtemp(path.data());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(m_path); }

    std::string Path(const std::string& name) const { return m_path + "/" + name; }

    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    std::string Read(const std::string& name) const
    {
        std::ifstream file(Path(name), std::ios::binary);
        EXPECT_TRUE(file) << name;
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string m_path;
};
