#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TPath.h>

#include <map>
#include <set>

/// Where the files that a document refers to have gone. A plain value.
///
/// Const operations may run side by side.
class KESCOREXML_EXPORT PathRenames
{
public:
    /// New paths by old ones.
    using PathMap = std::map<TPath, TPath>;

    /// From now on RenamePath gives `to` for `from`.
    void SetRename(const TPath& from, const TPath& to);
    /// Registers one file whose content has the checksum `crc`. A file with the content of an
    /// earlier one goes where that one went, whatever `target` says. The rename of the file's
    /// directory is derived from the first file of it and dropped for good when another file of it
    /// goes to a different directory. An empty `path` is ignored.
    void SetCRC(const TPath& path, const TPath& target, int crc);

    /// The new path, or `path` itself.
    [[nodiscard]] TPath RenamePath(const TPath& path) const;
    /// The first old path, in ascending order, that goes to `path`; empty when none does.
    [[nodiscard]] TPath ReverseRenamePath(const TPath& path) const;
    /// The new path of the first old one, in ascending order, that is `path` when put under
    /// `base`; empty when there is none or when it goes to `path` itself.
    [[nodiscard]] TPath RenamePathAbsolute(const TPath& path, const TPath& base) const;
    /// Whether `path` begins with a new path (case-sensitive, forward slashes).
    [[nodiscard]] bool IsValidPath(const TPath& path) const;
    /// Forgets the paths and directories; the checksums stay.
    void ResetRenames() noexcept;

    /// All renames, valid until one is added.
    [[nodiscard]] const PathMap& GetPathMap() const noexcept { return m_paths; }

private:
    PathMap m_paths;
    std::map<int, TPath> m_targetsByChecksum;
    std::set<TPath> m_directories;
};
