#include "bytes/DeclaredEncoding.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace {

constexpr std::string_view c_declaration = "<?xml";
constexpr std::string_view c_whitespace = " \t\r\n";

void SkipSpace(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(c_whitespace), text.size()));
}

/// Takes name = "value" off the front of `text`; false when there is no such thing. A value without
/// end goes to that of the text.
bool TakePseudoAttribute(std::string_view& text, std::string_view& name, std::string_view& value)
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
    value = text.substr(1, text.find(text.front(), 1) - 1);
    text.remove_prefix(std::min(value.size() + 2, text.size()));
    return true;
}

/// How ASCII characters lie in a document.
struct Units
{
    std::size_t size;
    /// Which byte of a unit is not zero.
    std::size_t asciiAt;
    /// By this name the scanner knows them.
    std::string_view encoding;
};

/// The first characters, at most `count`; empty when they are not in these units.
std::string ReadAscii(std::string_view bytes, const Units& units, std::size_t count)
{
    std::string text;
    for (std::size_t at = 0; text.size() < count && at + units.size <= bytes.size();
         at += units.size) {
        for (std::size_t i = 0; i < units.size; ++i) {
            if ((bytes[at + i] == '\0') == (i == units.asciiAt))
                return {};
        }
        text += bytes[at + units.asciiAt];
    }
    return text;
}

bool IsWhitespaceButBlank(char c)
{
    return c != ' ' && c_whitespace.find(c) != std::string_view::npos;
}

bool NamesLargerUnits(std::string_view encoding)
{
    std::string upper(encoding);
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    }
    for (const char* const start : {"UTF-16", "UTF16", "UTF-32", "UTF32", "UCS", "ISO-10646-UCS"}) {
        if (upper.starts_with(start))
            return true;
    }
    return false;
}

bool IsEncodingName(std::string_view name)
{
    constexpr std::string_view c_letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr std::string_view c_others = "0123456789._-";
    return !name.empty() && c_letters.find(name.front()) != std::string_view::npos &&
           std::all_of(name.begin(), name.end(), [&](char c) {
               return c_letters.find(c) != std::string_view::npos ||
                      c_others.find(c) != std::string_view::npos;
           });
}

} // namespace

std::string_view DeclaredEncoding::Find(std::string_view bytes)
{
    if (!bytes.starts_with(c_declaration))
        return {};
    bytes.remove_prefix(c_declaration.size());
    // Else it is another processing instruction, like "<?xml-stylesheet".
    if (bytes.empty() || c_whitespace.find(bytes.front()) == std::string_view::npos)
        return {};
    std::string_view name;
    std::string_view value;
    while (TakePseudoAttribute(bytes, name, value)) {
        if (name == "encoding")
            return value;
    }
    return {};
}

std::string_view DeclaredEncoding::FindOfSingleBytes(std::string_view bytes)
{
    const std::string_view encoding = Find(bytes);
    return IsEncodingName(encoding) && !NamesLargerUnits(encoding) ? encoding : std::string_view();
}

std::string_view DeclaredEncoding::FindOverlooked(std::string_view bytes)
{
    for (const Units& units : {Units{1, 0, {}}, Units{2, 0, "UTF-16LE"}, Units{2, 1, "UTF-16BE"},
                               Units{4, 0, "UCS-4 (LE)"}, Units{4, 3, "UCS-4 (BE)"}}) {
        const std::string start = ReadAscii(bytes, units, c_declaration.size() + 1);
        if (!start.starts_with(c_declaration) || !IsWhitespaceButBlank(start.back()))
            continue;
        if (units.size > 1)
            return units.encoding;
        return FindOfSingleBytes(bytes);
    }
    return {};
}
