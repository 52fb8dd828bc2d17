#include "Utf8Guard.h"

#include <algorithm>

namespace {

constexpr std::string_view c_whitespace = " \t\r\n";

bool BeginsBeyondLastCharacter(char byte) noexcept
{
    const auto value = static_cast<unsigned char>(byte);
    return value >= 0xF5 && value <= 0xF7;
}

/// Removes `prefix` and the white space behind it, if the text begins with it.
bool Take(std::string_view& text, std::string_view prefix)
{
    if (!text.starts_with(prefix))
        return false;
    text.remove_prefix(prefix.size());
    text.remove_prefix(std::min(text.find_first_not_of(c_whitespace), text.size()));
    return true;
}

/// The encoding that an XML declaration names, or an empty text.
std::string_view FindDeclaredEncoding(std::string_view text)
{
    if (!Take(text, "<?xml"))
        return {};
    text = text.substr(0, text.find("?>"));
    const std::size_t name = text.find("encoding");
    if (name == std::string_view::npos)
        return {};
    text.remove_prefix(name);
    Take(text, "encoding");
    if (!Take(text, "=") || text.empty())
        return {};
    const char quote = text.front();
    text.remove_prefix(1);
    return text.substr(0, text.find(quote));
}

bool EqualsIgnoringCase(std::string_view text, std::string_view upper)
{
    return std::equal(text.begin(), text.end(), upper.begin(), upper.end(), [](char a, char b) {
        return (a >= 'a' && a <= 'z' ? a - 'a' + 'A' : a) == b;
    });
}

} // namespace

bool Utf8Guard::IsReadAsUtf8(std::string_view bytes)
{
    if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE"))
        return false;
    // Without mark, units of two or four bytes show by their zero bytes, EBCDIC by its "<?xm".
    if (bytes.substr(0, 4).find('\0') != std::string_view::npos ||
        bytes.starts_with("\x4C\x6F\xA7\x94"))
        return false;
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    const std::string_view encoding = FindDeclaredEncoding(bytes);
    return encoding.empty() || EqualsIgnoringCase(encoding, "UTF-8") ||
           EqualsIgnoringCase(encoding, "UTF8");
}

std::shared_ptr<const std::string>
Utf8Guard::RefuseBeyondLastCharacter(const std::shared_ptr<const std::string>& utf8)
{
    bool found = false;
    for (const char byte : *utf8)
        found |= BeginsBeyondLastCharacter(byte);
    if (!found)
        return utf8;
    auto copy = std::make_shared<std::string>(*utf8);
    std::replace_if(copy->begin(), copy->end(), BeginsBeyondLastCharacter, '\xFF');
    return copy;
}
