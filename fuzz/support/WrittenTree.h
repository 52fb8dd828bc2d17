#pragma once

#include "support/EscapingModel.h"
#include "support/Require.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLUtils.h>

/// What a parser reads of a tree that was written in content mode with two blanks a level. Writing
/// does not keep everything: the text of an element with children gets white space around it,
/// control characters become "\x1;", and carriage returns in CDATA sections become line feeds.
namespace WrittenTree {

inline bool IsControl(char16_t unit)
{
    return (unit < 0x20 && unit != u'\t' && unit != u'\n' && unit != u'\r') || unit >= 0xFFFE;
}

inline bool IsWrittenAsSection(const TString& text)
{
    return text.length() >= 32 && text.contains(u'<');
}

inline TString ReadAttribute(const TString& text)
{
    TString result;
    for (const char16_t unit : text)
        result += IsControl(unit) ? EscapingModel::Hexadecimal(unit) : TString(1, unit);
    return result;
}

inline TString ReadContent(const TString& text)
{
    if (!IsWrittenAsSection(text))
        return ReadAttribute(text);
    TString result = text;
    result.replace(u"\r\n", u"\n");
    result.replace(u"\r", u"\n");
    return result;
}

inline bool IsName(const TString& name)
{
    if (name.IsEmpty() || !XmlUtils::IsFirstNameChar(name[0]))
        return false;
    for (const char16_t unit : name) {
        if (!XmlUtils::IsNameChar(unit))
            return false;
    }
    return true;
}

/// Whether the element itself, without its children, can be written as XML 1.0.
inline bool IsWritable(const DOMElement& element)
{
    if (!IsName(element.GetName()))
        return false;
    for (const auto& [name, value] : element.GetAttributes()) {
        if (!IsName(name))
            return false;
    }
    if (!IsWrittenAsSection(element.GetText()))
        return true;
    for (const char16_t unit : element.GetText()) {
        if (IsControl(unit))
            return false;
    }
    return true;
}

inline bool IsTreeWritable(const DOMElement& top)
{
    bool is = IsWritable(top);
    for (const auto& child : top.GetChildren())
        is = is && IsTreeWritable(*child);
    return is;
}

inline void RequireReadBack(const DOMElement& read, const DOMElement& written,
                            TString::size_type depth)
{
    RequireEqual(read.GetName(), written.GetName(), "an element keeps its name");
    RequireEqual(read.GetAttributes().size(), written.GetAttributes().size(),
                 "an element keeps its attributes");
    for (const auto& [name, value] : written.GetAttributes()) {
        Require(read.HasAttribute(name), "an attribute keeps its name");
        RequireEqual(read.GetAttribute(name), ReadAttribute(value), "an attribute keeps its value");
    }
    TString text = ReadContent(written.GetText());
    if (written.HasText() && written.HasChildren())
        text = u"\n" + TString(2 * depth + 2, u' ') + text + TString(2 * depth, u' ');
    RequireEqual(read.GetText(), text, "an element keeps its text");
    const auto children = written.GetChildren();
    RequireEqual(read.GetChildren().size(), children.size(), "an element keeps its children");
    for (std::size_t i = 0; i < children.size(); ++i)
        RequireReadBack(read.GetChildren()[i], children[i], depth + 1);
}

} // namespace WrittenTree
