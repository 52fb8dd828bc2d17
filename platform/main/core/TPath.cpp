#include <kesplatform/TPath.h>

#include <algorithm>

namespace {

// Documents travel between systems, so both kinds of separators are understood everywhere.
bool IsSeparator(char16_t unit)
{
    return unit == u'/' || unit == u'\\';
}

bool IsLetter(char16_t unit)
{
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

/// The length of "/", or of "C:/", at the start of a path; 0 for a relative path.
std::size_t RootLength(std::u16string_view path)
{
    if (!path.empty() && IsSeparator(path[0]))
        return 1;
    if (path.size() >= 3 && IsLetter(path[0]) && path[1] == u':' && IsSeparator(path[2]))
        return 3;
    return 0;
}

} // namespace

TPath TPath::RemoveFilename() const
{
    const std::u16string_view path = m_path.view();
    const std::size_t root = RootLength(path);
    std::size_t end = path.size();
    while (end > root && !IsSeparator(path[end - 1]))
        --end;
    while (end > root && IsSeparator(path[end - 1]))
        --end;
    return {m_path.left(static_cast<TString::size_type>(end))};
}

TString TPath::GenericString() const
{
    if (!m_path.contains(u'\\'))
        return m_path;
    TString generic;
    char16_t* to = generic.resizeForOverwrite(m_path.length());
    std::replace_copy(m_path.begin(), m_path.end(), to, u'\\', u'/');
    return generic;
}

TPath operator/(const TPath& a, const TPath& b)
{
    if (b.IsEmpty())
        return a;
    const std::u16string_view left = a.m_path.view();
    if (left.empty() || RootLength(b.m_path.view()) > 0)
        return b;
    TString joined = a.m_path;
    if (!IsSeparator(left.back()))
        joined += u'/';
    joined += b.m_path;
    return {std::move(joined)};
}
