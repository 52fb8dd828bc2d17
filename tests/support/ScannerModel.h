#pragma once

#include <kescorexml/XMLUtils.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The scanners once more, written down step by step without a thought of what they cost.
namespace ScannerModel {

constexpr std::size_t c_npos = std::string::npos;

inline bool AreQuotesMatching(const std::string& xml, std::size_t from, std::size_t to)
{
    if (from > to)
        return true;
    std::string range = from < xml.size() ? xml.substr(from, to - from + 1) : std::string();
    for (;;) {
        const std::size_t open = range.find_first_of("'\"");
        if (open == c_npos)
            return true;
        const std::size_t close = range.find(range[open], open + 1);
        if (close == c_npos)
            return false;
        range.erase(0, close + 1);
    }
}

inline std::size_t CloseBrace(const std::string& xml, std::size_t start)
{
    if (start + 2 >= xml.size())
        return c_npos;
    const std::string construct = xml.substr(start);
    const bool isTag = construct[1] != '?' && construct[1] != '!';
    std::string terminator = ">";
    if (construct[1] == '?')
        terminator = "?>";
    else if (construct.starts_with("<!--"))
        terminator = "-->";
    else if (construct.starts_with("<!["))
        terminator = "]]>";
    std::size_t found = xml.find(terminator, start + 1);
    while (isTag && found != c_npos && !AreQuotesMatching(xml, start, found))
        found = xml.find(terminator, found + 1);
    return found == c_npos ? c_npos : found + terminator.size() - 1;
}

inline XmlUtils::StringRange RootTag(const std::string& xml)
{
    for (std::size_t pos = 0;;) {
        const std::size_t open = xml.find('<', pos);
        if (open == c_npos || open + 1 == xml.size())
            return {};
        const std::size_t close = CloseBrace(xml, open);
        if (close == c_npos)
            return {};
        if (xml[open + 1] != '?' && xml[open + 1] != '!')
            return {open, close - open + 1};
        pos = close;
    }
}

inline bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Requires a name that is not empty.
inline std::optional<std::string> AttributeValue(const std::string& xml, const std::string& name,
                                                 XmlUtils::StringRange tag)
{
    const std::size_t end = tag.start + tag.length - 1;
    const auto skip = [&](std::size_t pos) {
        while (pos < end && IsSpace(xml[pos]))
            ++pos;
        return pos;
    };
    for (std::size_t current = tag.start; current < end;) {
        const std::size_t hit = xml.find(name, current);
        if (hit == c_npos || hit + name.size() - 1 > end)
            return std::nullopt;
        current = hit + 1;
        if (hit == tag.start || !IsSpace(xml[hit - 1]) ||
            !AreQuotesMatching(xml, tag.start, hit - 1))
            continue;
        std::size_t pos = skip(hit + name.size());
        current = pos;
        if (pos >= end || xml[pos] != '=')
            continue;
        pos = skip(pos + 1);
        current = pos;
        if (xml[pos] != '\'' && xml[pos] != '"')
            continue;
        const std::size_t close = xml.find(xml[pos], pos + 1);
        if (close >= end)
            return std::nullopt;
        return xml.substr(pos + 1, close - pos - 1);
    }
    return std::nullopt;
}

} // namespace ScannerModel
