#pragma once

#include "support/ByteReader.h"
#include "support/TemporaryFiles.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/ParseLimits.h>
#include <kescorexml/QtKesResourceId.h>
#include <kescorexml/StringInputSource.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What can be handed to parsers, chosen by bytes.
namespace ParserInputs {

using namespace std::string_view_literals;

/// Each takes another way through a parser, or leaves something else behind in it.
inline constexpr std::string_view c_documents[] = {
    "<a b='1'>x<c/>\n<c>y</c>&amp;z</a>"sv,
    "<a/>"sv,
    "<!DOCTYPE a [<!ENTITY e '<c>x</c>'>]><a>&e;\n&e;</a>"sv,
    "<!DOCTYPE a [<!ATTLIST a d CDATA 'x'>]><a><c/></a>"sv,
    "<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a/>"sv,
    "<!DOCTYPE a SYSTEM 'f'><a>&none;<c d='&none;'/></a>"sv,
    "<?xml version='1.1'?><a>\xC2\x85&#1;</a>"sv,
    "<?xml version='1.0' nonsense?><a/>"sv,
    "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>"sv,
    "<?xml version='1.0' encoding='nothing'?><a/>"sv,
    "\xFE\xFF\0<\0a\0/\0>"sv,
    "<a>x<c>y"sv,
    "<a>x\n<c/>y</b>"sv,
    "<a>x<c/>\n\xFF</a>"sv,
    "<a ::b='1' :c='2'><c :d='3'/></a>"sv,
    "<a b='1' b='2'/>"sv,
    " \n<?xml version='1.0'?><a/>"sv,
    "<a><c/></a>\n<!-- x -->x"sv,
    ""sv,
    "<a d='x' xmlns:p='urn:p'><c>1</c><c>x</c><p:z/></a>"sv};

inline constexpr std::string_view c_schemas[] = {
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'><xs:complexType "
    "mixed='true'><xs:sequence><xs:element name='c' type='xs:int' minOccurs='0' maxOccurs='9'/>"
    "</xs:sequence><xs:attribute name='d' type='xs:token' default='added'/></xs:complexType>"
    "</xs:element></xs:schema>"sv,
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a' type='none'/>"
    "</xs:schema>"sv,
    "<xs:schema"sv,
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:include schemaLocation='b.xsd'/>"
    "<xs:element name='a'/></xs:schema>"sv,
    "<!DOCTYPE xs:schema [<!ENTITY e SYSTEM 'f'>]><xs:schema "
    "xmlns:xs='http://www.w3.org/2001/XMLSchema'>&e;</xs:schema>"sv};
/// How many of them refer to nothing that a sink would have to supply.
inline constexpr std::size_t c_schemasByThemselves = 3;

inline const TString c_identifiers[] = {u"id", u"other", u""};
inline const TString c_resources[] = {u"KQRC_FILEFORMAT_XML_XSD", u"KQRC_FILEFORMAT_ZAP_XSD",
                                      u"none"};
inline constexpr QtKesResourceId c_resourceIds[] = {
    QtKesResourceId::FileformatXmlXsd, QtKesResourceId::FileformatZapXsd, QtKesResourceId{1}};

/// One of those above, or one of the bytes' own.
inline std::string ReadDocument(ByteReader& reader)
{
    constexpr std::size_t c_own = std::size(c_documents);
    const std::size_t choice = reader.Below(32);
    return choice < c_own ? std::string(c_documents[choice]) : reader.Text().toStdString();
}

/// Files that are always the same.
class Files
{
public:
    Files()
    {
        for (const std::string_view document : {c_documents[0], c_documents[2], c_documents[8],
                                                c_documents[12], c_schemas[0], c_schemas[3]})
            m_paths.push_back(m_files.Write(TString::number(m_paths.size()), document).GetString());
    }
    const TString& Read(ByteReader& reader) const { return reader.Pick(m_paths); }
    /// Or that of a file that is missing.
    TString ReadOrMissing(ByteReader& reader) const
    {
        const std::size_t choice = reader.Below(m_paths.size() + 1);
        return choice < m_paths.size() ? m_paths[choice] : m_files.GetPath(u"none").GetString();
    }
    /// A schema that refers to no other.
    const TString& GetSchema() const { return m_paths[4]; }

private:
    TemporaryFiles m_files;
    std::vector<TString> m_paths;
};

inline const Files& GetFiles()
{
    static const Files s_files;
    return s_files;
}

inline std::vector<unsigned char> ToBytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

inline std::unique_ptr<InputSource> ReadSource(ByteReader& reader, const std::string& bytes)
{
    const std::size_t choice = reader.Below(8);
    const TString& id = reader.Pick(c_identifiers);
    switch (choice) {
    case 1:
        return std::make_unique<Utf8InputSource>(bytes, id, true);
    case 2:
    case 3:
        return std::make_unique<BinaryInputSource>(ToBytes(bytes), id, choice == 3);
    case 4:
    case 5:
        return std::make_unique<StringInputSource>(TString::fromStdString(bytes), id, choice == 5);
    case 6:
        return std::make_unique<FileInputSource>(GetFiles().Read(reader));
    default:
        return std::make_unique<Utf8InputSource>(bytes, id, false);
    }
}

/// Sets one of them, mostly to a number that a small document meets.
inline void ReadLimit(ByteReader& reader, ParseLimits& limits)
{
    const std::size_t choice = reader.Below(8);
    const std::uint64_t factor = reader.Below(4);
    const std::uint64_t threshold = reader.Byte() * 8U;
    switch (choice) {
    case 0:
        return limits.SetAmplificationLimit(factor, threshold);
    case 1:
        return limits.SetExpansionLimit(factor, threshold);
    case 2:
        return limits.SetValidationDepthLimit(threshold);
    case 3:
        return limits.SetValidationWorkLimit(factor, threshold * 64);
    case 4:
        // The direct scanner has no such limit: no more names may collide than do so by chance.
        return limits.SetNameCollisionLimit(64 + threshold);
    case 5:
        return limits.SetMessageLimit(factor, threshold);
    default:
        limits = ParseLimits();
    }
}

} // namespace ParserInputs
