#pragma once

#include <string>

/// The documents that all libraries are given.

inline const std::string c_twoLines = "<a>\n  <b/>\n</a>";
inline const std::string c_broken = "<a><b>text</b><c></a>";
inline const std::string c_withEntity = "<!DOCTYPE a [<!ENTITY e 'text'>]><a>&e;</a>";
inline const std::string c_mixed = "<a>x<b/>y</a>";
inline const std::string c_withComment = "<a><!-- why --></a>";
inline const std::string c_list = "<a><b x='1'/><c><b x='2'/></c></a>";
inline const std::string c_html = "<p>one<br>two";

/// Invalid by the schema, which it names too.
inline const std::string c_invalid = "<n xmlns:i='http://www.w3.org/2001/XMLSchema-instance' "
                                     "i:noNamespaceSchemaLocation='n.xsd'>x</n>";
inline const std::string c_schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                    "<xs:element name='n' type='xs:int'/></xs:schema>";

inline std::string WithEntityFile(const std::string& path)
{
    return "<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + path + "'>]><a>&e;</a>";
}

/// What a program may well have to read: 45,000 elements in 1 MB.
inline std::string MakeCatalogue()
{
    std::string document = "<catalogue>\n";
    for (int i = 10000; i < 25000; ++i) {
        const std::string number = std::to_string(i);
        document += "  <item id='" + number + "'>\n    <name>Thing " + number +
                    "</name>\n    <price>" + number + "</price>\n  </item>\n";
    }
    return document + "</catalogue>\n";
}

/// Mostly text: 1 MB of paragraphs in ASCII.
inline std::string MakeArticle()
{
    std::string words;
    while (words.size() < 1000)
        words += "The quick brown fox jumps over the lazy dog. ";
    std::string document = "<article>\n";
    while (document.size() < 1'000'000)
        document += "<p>" + words + "</p>\n";
    return document + "</article>\n";
}

inline std::string MakeDeep(int levels)
{
    std::string document;
    for (int i = 0; i < levels; ++i)
        document += "<a>";
    for (int i = 0; i < levels; ++i)
        document += "</a>";
    return document;
}
