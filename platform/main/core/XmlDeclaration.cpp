#include <kesplatform/XmlDeclaration.h>

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
