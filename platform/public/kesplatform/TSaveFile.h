#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TPath.h>

#include <cstddef>
#include <memory>

/// Writes a file that takes the place of an older one when it is complete, and not before: what is
/// written goes to a temporary file in the same folder. Whoever opens the path meanwhile, after a
/// failure or after a crash finds the older file as it was.
///
/// The permissions of an older file are kept; owner, links to it by other names and extended
/// attributes are those of a new file. A symbolic link stays, and what it leads to is replaced.
/// Every failure is a TIO::Exception that names the path and the reason.
///
/// Different objects may be used from different threads.
class KESPLATFORM_EXPORT TSaveFile
{
public:
    /// Opens the temporary file. What exists and is no regular file, such as a folder, a device or
    /// a pipe, cannot be replaced.
    explicit TSaveFile(const TPath& path);
    TSaveFile(const TSaveFile&) = delete;
    TSaveFile& operator=(const TSaveFile&) = delete;
    /// Without a Commit that succeeded, removes what was written.
    ~TSaveFile();

    /// Appends. What the system is slow to report may be thrown by a later call or by Commit.
    void Write(const void* bytes, std::size_t count);
    /// Waits until the disk has everything, and puts the file in its place. Once only; when it
    /// throws, the older file is as it was.
    void Commit();

private:
    class Impl;

    std::unique_ptr<Impl> m_impl;
};
