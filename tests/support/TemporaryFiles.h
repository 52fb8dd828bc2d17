#pragma once

#include <kesplatform/TPath.h>

#include <QTemporaryDir>

#include <fstream>
#include <stdexcept>
#include <string_view>

/// A directory of its own for a test; it and all that is in it goes with the object.
class TemporaryFiles
{
public:
    TPath GetDirectory() const { return TString(m_directory.path()); }
    TPath GetPath(const TString& name) const { return GetDirectory() / TPath(name); }

    /// Writes a file of these bytes and returns its path.
    TPath Write(const TString& name, std::string_view bytes) const
    {
        const TPath path = GetPath(name);
        std::ofstream file(path.GetString().toStdString(), std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        file.close();
        if (!file)
            throw std::runtime_error("a file of the test cannot be written");
        return path;
    }

private:
    QTemporaryDir m_directory;
};
