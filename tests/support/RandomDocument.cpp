#include "support/RandomDocument.h"

namespace {

using Choices = std::vector<std::string_view>;

const Choices c_names = {"a",
                         "b",
                         "c",
                         "item",
                         "a.b-c_d",
                         "_",
                         "p:a",
                         "xml:lang",
                         "xmlns",
                         "xmlns:p",
                         "\xC3\xA9l\xC3\xA8ve",
                         "\xCE\xB1",
                         "\xD0\x96",
                         "\xE0\xA4\x85",
                         "\xE4\xB8\x80\xE4\xB8\x81",
                         "\xEA\xB0\x80",
                         "a\xC2\xB7",
                         "abcdefghijklmnop",
                         "abcdefghijklmnopqrstuvwxyzabcdef",
                         "IllegalColon:a",
                         "xmlns:IllegalColon"};

const Choices c_badNames = {
    "1",   ":",       "a:",  "a::b", "", "-a", "\xC3\x97", "a\xF0\x9F\x98\x80", "a\xEF\xBF\xBE",
    "a&b", "xml\x01", "\xFF"};

const Choices c_textPieces = {"x",
                              "text",
                              " ",
                              "\n",
                              "\r",
                              "\r\n",
                              "\t",
                              "]",
                              "]]",
                              ">",
                              "'",
                              "\"",
                              "-",
                              "--",
                              "?",
                              "=",
                              ":",
                              " :a='1'",
                              "&amp;",
                              "&lt;",
                              "&gt;",
                              "&apos;",
                              "&quot;",
                              "&#65;",
                              "&#x41;",
                              "&#10;",
                              "&#13;",
                              "&#0009;",
                              "&#32;",
                              "&#x1F600;",
                              "&#xFFFD;",
                              "\xC3\xA9",
                              "\xC2\x85",
                              "\xE2\x80\xA8",
                              "\xE2\x82\xAC",
                              "\xED\x9F\xBF",
                              "\xEF\xBB\xBF",
                              "\xF0\x9F\x98\x80",
                              "\xF4\x8F\xBF\xBF",
                              "\x7F",
                              "0123456789abcdef0123456789abcdef"};

const Choices c_badPieces = {"<",
                             "&",
                             "&x;",
                             "&#0;",
                             "&#xD800;",
                             "&#x110000;",
                             "&amp",
                             "\x01",
                             "\x1F",
                             "\xFF",
                             "\xC3",
                             "\xED\xA0\x80",
                             "\xC0\x80",
                             "]]>",
                             "</",
                             "\xEF\xBF\xBE",
                             "\xF5\x80\x80\x80",
                             "<!",
                             "<!-->",
                             "&#x;",
                             "\x80"};

const Choices c_blanks = {
    " ", "  ", "\n", "\t", "\r\n", "\r", " \n ", "        ", "                 "};

const Choices c_declarations = {"<?xml version='1.0'?>",
                                "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
                                "<?xml version='1.0' encoding='utf-8' standalone='yes'?>",
                                "<?xml  version = '1.0'\tencoding\n=\r\n\"US-ASCII\" ?>",
                                "\xEF\xBB\xBF",
                                "\xEF\xBB\xBF<?xml version='1.0'?>",
                                "<?xml version='1.0' standalone='no' ?>"};

const Choices c_badDeclarations = {"<?xml version='1.1'?>",
                                   "<?xml version='1.0' encoding='ISO-8859-1'?>",
                                   "<?xml encoding='UTF-8'?>",
                                   "<?xml?>",
                                   " <?xml version='1.0'?>",
                                   "<?xml version='1.0' encoding='UTF-16'?>",
                                   "<?xml version='1.0' encoding='none'?>",
                                   "\xEF\xBB",
                                   "\xFE\xFF"};

const Choices c_types = {"CDATA", "NMTOKEN", "NMTOKENS", "ID", "IDREFS", "(x|y|z)", "ENTITY"};

} // namespace

std::string_view RandomDocument::Pick(const std::vector<std::string_view>& choices)
{
    return choices[m_random.Below(choices.size())];
}

std::string RandomDocument::Blank()
{
    if (IsFault())
        return OneIn(2) ? "" : "\xC2\x85";
    return std::string(Pick(c_blanks));
}

std::string RandomDocument::Name()
{
    if (IsFault())
        return std::string(Pick(c_badNames));
    return std::string(OneIn(3) ? c_names[m_random.Below(4)] : Pick(c_names));
}

std::string RandomDocument::Value()
{
    const char quote = OneIn(3) ? '"' : '\'';
    std::string value(1, quote);
    for (std::size_t count = m_random.Below(6); count > 0; --count) {
        const std::string_view piece = IsFault() ? Pick(c_badPieces) : Pick(c_textPieces);
        if (piece.find(quote) == std::string_view::npos)
            value += piece;
    }
    return value + quote;
}

std::string RandomDocument::Attributes()
{
    std::string text;
    std::size_t count = OneIn(30) ? m_random.Below(200) : m_random.Below(5);
    for (; count > 0; --count) {
        text += Blank();
        if (OneIn(12))
            text += ':';
        // Equal names would be the rule.
        text += Name();
        if (!IsFault())
            text += std::to_string(count);
        text += OptionalBlank() + (IsFault() ? "" : "=") + OptionalBlank() + Value();
    }
    return text + OptionalBlank();
}

std::string RandomDocument::Text()
{
    std::string text;
    for (std::size_t count = m_random.Below(8); count > 0; --count)
        text += IsFault() ? Pick(c_badPieces) : Pick(c_textPieces);
    return text;
}

std::string RandomDocument::Miscellaneous()
{
    const std::size_t length = m_random.Below(5);
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        const std::string_view piece = IsFault() ? Pick(c_badPieces) : Pick(c_textPieces);
        if (IsFault() || (piece.find('-') == std::string_view::npos && piece != "?"))
            text += piece;
    }
    if (OneIn(2))
        return "<!--" + text + "-->";
    const std::string_view name = IsFault() ? "xml" : Pick(c_names);
    if (name.find(':') != std::string_view::npos || name == "xmlns")
        return "<?p?>";
    return "<?" + std::string(name) + (text.empty() ? "" : " " + text) + "?>";
}

std::string RandomDocument::Declaration()
{
    if (OneIn(2))
        return {};
    return std::string(IsFault() ? Pick(c_badDeclarations) : Pick(c_declarations));
}

std::string RandomDocument::DeclaredAttribute()
{
    std::string text = Blank() + Name() + Blank() + std::string(Pick(c_types)) + Blank();
    switch (m_random.Below(5)) {
    case 0:
        return text + "#REQUIRED";
    case 1:
        return text + "#FIXED 'x'";
    case 2:
        return text + "'x'";
    case 3:
        return text + Value();
    default:
        return text + "#IMPLIED";
    }
}

std::string RandomDocument::DocumentType()
{
    std::string text = "<!DOCTYPE" + Blank() + Name() + OptionalBlank();
    if (OneIn(4))
        text += " SYSTEM 'x.dtd'";
    if (OneIn(3))
        return text + ">";
    text += "[";
    for (std::size_t count = m_random.Below(5); count > 0; --count) {
        text += OptionalBlank();
        if (IsFault())
            text += OneIn(2) ? "<!ENTITY e 'x'>" : "%e;";
        else if (OneIn(6))
            text += Miscellaneous();
        else if (OneIn(3))
            text += "<!ELEMENT " + Name() + (OneIn(2) ? " ANY>" : " (#PCDATA|b|c)*>");
        else
            text += "<!ATTLIST " + Name() + DeclaredAttribute() +
                    (OneIn(2) ? DeclaredAttribute() : "") + OptionalBlank() + ">";
    }
    return text + OptionalBlank() + "]" + OptionalBlank() + ">";
}

void RandomDocument::AppendElement(std::string& document, std::size_t depth)
{
    const std::string name = Name();
    document += "<" + name + Attributes();
    if (OneIn(4)) {
        document += "/>";
        return;
    }
    document += ">";
    for (std::size_t count = m_random.Below(5); count > 0; --count) {
        document += Text();
        switch (m_random.Below(6)) {
        case 0:
            document += Miscellaneous();
            break;
        case 1: {
            document += "<![CDATA[";
            const std::string text = Text();
            document += text + (IsFault() ? "]]" : "]]>");
            break;
        }
        default:
            if (depth < 5 && document.size() < 2000)
                AppendElement(document, depth + 1);
        }
    }
    document += "</" + (IsFault() ? Name() : name) + OptionalBlank() + ">";
}

std::string RandomDocument::Next()
{
    std::string document = Declaration();
    const auto appendMiscellaneous = [&] {
        for (std::size_t count = m_random.Below(3); count > 0; --count)
            document += OneIn(2) ? Miscellaneous() : std::string(Pick(c_blanks));
    };
    appendMiscellaneous();
    if (OneIn(4))
        document += DocumentType();
    appendMiscellaneous();
    AppendElement(document, 0);
    appendMiscellaneous();
    if (IsFault())
        document += Text();
    if (IsFault())
        document.resize(m_random.Below(document.size() + 1));
    return document;
}
