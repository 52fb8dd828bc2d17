#include <kesplatform/XmlDeclaration.h>

#include <algorithm>
#include <cstddef>

namespace {

void SkipSpace(std::string_view& text) noexcept
{
    text.remove_prefix(std::min(text.find_first_not_of(XmlDeclaration::c_whitespace), text.size()));
}

/// Takes name = "value" off the front of `text`; false when there is no such thing.
bool TakePseudoAttribute(std::string_view& text, std::string_view& name,
                         std::string_view& value) noexcept
{
    SkipSpace(text);
    name = text.substr(0, text.find_first_of("= \t\r\n?"));
    text.remove_prefix(name.size());
    SkipSpace(text);
    if (name.empty() || !text.starts_with('='))
        return false;
    text.remove_prefix(1);
    SkipSpace(text);
    if (!text.starts_with('\'') && !text.starts_with('"'))
        return false;
    const std::size_t end = text.find(text.front(), 1);
    if (end == std::string_view::npos)
        return false;
    value = text.substr(1, end - 1);
    text.remove_prefix(end + 1);
    return true;
}

} // namespace

std::string_view XmlDeclaration::FindEncoding(std::string_view text) noexcept
{
    if (!text.starts_with(c_start))
        return {};
    text.remove_prefix(c_start.size());
    // Else it is another processing instruction, like "<?xml-stylesheet".
    if (text.empty() || c_whitespace.find(text.front()) == std::string_view::npos)
        return {};
    std::string_view name;
    std::string_view value;
    while (TakePseudoAttribute(text, name, value)) {
        if (name == "encoding")
            return value;
    }
    return {};
}
