#include <kescorexml/PathRenames.h>

void PathRenames::SetRename(const TPath& from, const TPath& to)
{
    m_paths.insert_or_assign(from, to);
}

void PathRenames::SetCRC(const TPath& path, const TPath& target, int crc)
{
    if (path.IsEmpty())
        return;
    // `target` may be a path of the map, which is written to below.
    const TPath targetDirectory = target.RemoveFilename();
    const auto [known, isNew] = m_targetsByChecksum.try_emplace(crc, target);
    if (!isNew)
        SetRename(path, known->second);

    const TPath directory = path.RemoveFilename();
    if (directory.IsEmpty())
        return;
    if (m_directories.insert(directory).second) {
        SetRename(directory, targetDirectory);
    } else {
        const auto rename = m_paths.find(directory);
        if (rename != m_paths.end() && rename->second != targetDirectory)
            m_paths.erase(rename);
    }
}

TPath PathRenames::RenamePath(const TPath& path) const
{
    const auto found = m_paths.find(path);
    return found == m_paths.end() ? path : found->second;
}

TPath PathRenames::ReverseRenamePath(const TPath& path) const
{
    for (const auto& [from, to] : m_paths) {
        if (to == path)
            return from;
    }
    return {};
}

TPath PathRenames::RenamePathAbsolute(const TPath& path, const TPath& base) const
{
    for (const auto& [from, to] : m_paths) {
        if (base / from == path)
            return to == path ? TPath() : to;
    }
    return {};
}

bool PathRenames::IsValidPath(const TPath& path) const
{
    const TString text = path.GenericString();
    for (const auto& [from, to] : m_paths) {
        if (text.startsWith(to.GenericString(), TString::CaseSensitive))
            return true;
    }
    return false;
}

void PathRenames::ResetRenames() noexcept
{
    m_paths.clear();
    m_directories.clear();
}
