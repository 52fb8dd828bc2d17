#pragma once

#include <kesplatform/TString.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <string_view>

/// A directory of its own for one test, removed at the end.
class TemporaryFolder
{
public:
    TemporaryFolder() { EXPECT_TRUE(m_folder.isValid()); }

    TString GetPath() const { return m_folder.path(); }
    TString GetPath(const char* name) const { return m_folder.filePath(name); }

    /// Writes the bytes to a file and returns its path.
    TString Write(const char* name, std::string_view bytes) const
    {
        const std::string path = GetPath(name).toStdString();
        std::ofstream file(path, std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        file.close();
        EXPECT_TRUE(file) << path;
        return path.c_str();
    }

private:
    QTemporaryDir m_folder;
};
