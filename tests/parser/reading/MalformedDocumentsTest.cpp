#include "support/ParseOutcome.h"
#include "support/SmallStack.h"
#include "support/TemporaryFile.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/InputSourceUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

const std::string c_document = "<?xml version='1.0' encoding='UTF-8'?>\n"
                               "<!DOCTYPE a [<!ATTLIST b z CDATA 'def'>]>\n"
                               "<!-- c\xC3\xA9 --><?pi d\xE2\x82\xAC?>"
                               "<a x='\xC3\xA9' :y=\"&lt;\">t\xF0\x9F\x98\x80<b/>"
                               "<![CDATA[<\xC3\xA9>]]>&#x20AC;</a>\n";

ParseOutcome ParseBytes(const std::string& bytes)
{
    BinaryInputSource source(std::vector<unsigned char>(bytes.begin(), bytes.end()), u"id", false);
    return ParseSource(source);
}

ParseOutcome ParseFileInChunks(const TemporaryFolder& folder, const std::string& bytes)
{
    FileInputSource source(folder.Write("a.xml", bytes));
    return ParseSource(source);
}

/// What a document must give whose declaration could not even be decoded: the reason alone.
void ExpectUndecoded(const ParseOutcome& outcome)
{
    EXPECT_FALSE(outcome.fatal);
    EXPECT_THAT(outcome.errors, ElementsAre(AllOf(Not(HasSubstr("Error")), Not(HasSubstr("(id: ")),
                                                  Not(IsEmpty()))));
    EXPECT_THAT(outcome.events, IsEmpty());
}

/// What a document that was cut or spoilt must give: errors, the last of them fatal, and events
/// that the whole document has, too, up to the one that the damage is in.
void ExpectBeginningOf(const ParseOutcome& whole, const ParseOutcome& part)
{
    EXPECT_TRUE(part.fatal);
    EXPECT_FALSE(part.errors.empty());
    ASSERT_LE(part.events.size(), whole.events.size());
    EXPECT_TRUE(std::equal(part.events.begin(), part.events.end(), whole.events.begin()));
}

} // namespace

TEST(MalformedDocuments, TheDocumentUnderTestIsWellFormed)
{
    const ParseOutcome whole = ParseUtf8(c_document);
    EXPECT_THAT(whole.errors, IsEmpty());
    EXPECT_THAT(whole.events, ElementsAre("<a :y=< x=\xC3\xA9>", "'t\xF0\x9F\x98\x80'", "<b z=def>",
                                          "</>", "'<\xC3\xA9>\xE2\x82\xAC'", "</>"));
    const TemporaryFolder folder;
    EXPECT_EQ(ParseBytes(c_document), whole);
    EXPECT_EQ(ParseFileInChunks(folder, c_document), whole);
}

TEST(MalformedDocuments, TruncationAtAnyByteIsAFatalError)
{
    const TemporaryFolder folder;
    const ParseOutcome whole = ParseUtf8(c_document);
    const std::size_t end = c_document.rfind('>');
    for (std::size_t length = 0; length <= end; ++length) {
        SCOPED_TRACE(length);
        const std::string part = c_document.substr(0, length);
        ExpectBeginningOf(whole, ParseUtf8(part));
        ExpectBeginningOf(whole, ParseBytes(part));
        ExpectBeginningOf(whole, ParseFileInChunks(folder, part));
    }
}

TEST(MalformedDocuments, InvalidUtf8AnywhereIsAnError)
{
    const TemporaryFolder folder;
    const ParseOutcome whole = ParseUtf8(c_document);
    const std::size_t end = c_document.rfind('>');
    for (const char* const bad : {"\xFF", "\x80", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                  "\xF5\x80\x80\x80", "\xF7\xBF\xBF\xBF", "\xF8\x88\x80\x80\x80"}) {
        for (std::size_t at = 0; at <= end; ++at) {
            SCOPED_TRACE(at);
            const std::string spoilt = c_document.substr(0, at) + bad + c_document.substr(at);
            ExpectBeginningOf(whole, ParseUtf8(spoilt));
            // Where nobody says that it is UTF-8, the declaration is decoded before all else.
            const ParseOutcome outcome = ParseBytes(spoilt);
            if (at < c_document.find("?>") + 2 && !outcome.fatal)
                ExpectUndecoded(outcome);
            else
                ExpectBeginningOf(whole, outcome);
            if (at % 8 != 0)
                continue;
            // The chunked reader refuses such a file, the decoding one says where it is wrong.
            EXPECT_THROW(ParseFileInChunks(folder, spoilt), CorvinaException);
            EXPECT_THROW(static_cast<void>(InputSourceUtils::InputSourceFromFileName(
                             folder.Write("a.xml", spoilt), true)),
                         TIO::Exception);
        }
    }
}

TEST(MalformedDocuments, ANulByteAnywhereIsAFatalError)
{
    const ParseOutcome whole = ParseUtf8(c_document);
    const std::size_t end = c_document.rfind('>');
    for (std::size_t at = 0; at <= end; ++at) {
        SCOPED_TRACE(at);
        std::string spoilt = c_document;
        spoilt.insert(at, 1, '\0');
        ExpectBeginningOf(whole, ParseUtf8(spoilt));
        ExpectBeginningOf(whole, ParseBytes(spoilt));
        StringInputSource source(TString::fromStdString(spoilt), u"id", false);
        ExpectBeginningOf(whole, ParseSource(source));
    }
}

TEST(MalformedDocuments, ADeclarationThatCannotBeDecodedIsAnErrorWithoutKindAndPosition)
{
    const std::string tooLong = "<?xml version='1.0'" + std::string(16384, ' ') + "?><a/>";
    for (const std::string& text : {std::string("<?xml version='1.0' \xC3\xA9?><a/>"),
                                    std::string("<?xml version='1.1' \xFF?><a/>")}) {
        SCOPED_TRACE(text);
        ExpectUndecoded(ParseBytes(text));
        const ParseOutcome decoded = ParseUtf8(text);
        EXPECT_TRUE(decoded.fatal);
        EXPECT_THAT(decoded.errors,
                    ElementsAre(AllOf(StartsWith("Fatal Error(1,"), EndsWith(" (id: id)"))));
    }
    // Where the encoding is known, the declaration need not be decoded before all else.
    EXPECT_THAT(ParseUtf8(tooLong).errors, IsEmpty());
    ExpectUndecoded(ParseBytes(tooLong));
    ExpectUndecoded(ParseBytes("<?xml version='1.0' encoding='UTF-8\xC3\xA9'?><a/>"));
    const std::string longest = "<?xml version='1.0'" + std::string(16300, ' ') + "?><a/>";
    EXPECT_THAT(ParseBytes(longest).errors, IsEmpty());
}

TEST(MalformedDocuments, WhatTheScannerDropsBehindTheRootElementIsAFatalError)
{
    const std::pair<std::string, std::string> endings[] = {
        {std::string("\0", 1), "(1,5): invalid character (Unicode: 0x0)"},
        {std::string("\n\0\0\0", 4), "(2,1): invalid character (Unicode: 0x0)"},
        {std::string("\0<b/>", 5), "(1,5): invalid character (Unicode: 0x0)"},
        {std::string("<!--\xC3\xA9-->\r\n \0 </a>", 18), "(2,2): invalid character (Unicode: 0x0)"},
        {"\xC3", "(1,5): incomplete character at the end of the document"},
        {"\xE2\x82", "(1,5): incomplete character at the end of the document"},
        {"\xF0\x9F\x98", "(1,5): incomplete character at the end of the document"},
        {"\xFE", "(1,5): incomplete character at the end of the document"},
        {"\r \xFE", "(2,2): incomplete character at the end of the document"},
        {"<?p ?>\n\n\xF0\x9F", "(3,1): incomplete character at the end of the document"},
        // Sequences that want more bytes than there are, with markup and blanks in their place.
        {"\xFE\n\x02s>", "(1,5): incomplete character at the end of the document"},
        {"\xF7\n\x02s>", "(1,5): incomplete character at the end of the document"},
        {"\xFB <>", "(1,5): incomplete character at the end of the document"},
        {"\xF8 />", "(1,5): incomplete character at the end of the document"},
        {"\n\xF0/>", "(2,1): incomplete character at the end of the document"},
    };
    const TemporaryFolder folder;
    for (const auto& [ending, message] : endings) {
        SCOPED_TRACE(message);
        const std::string text = "<a/>" + ending;
        const ParseOutcome expected = {
            {"<a>", "</>"}, {"Fatal Error" + message + " (id: id)"}, {}, true};
        EXPECT_EQ(ParseUtf8(text), expected);
        EXPECT_EQ(ParseBytes(text), expected);
    }
    // In files too: those that are read in chunks, the last one behind several of them.
    for (const std::string& space : {std::string(), std::string(10000, ' ')}) {
        for (const std::string& ending : {std::string("\0", 1), std::string("\xC3")}) {
            const std::string text = "<a/>" + space + ending;
            FileInputSource source(folder.Write("a.xml", text));
            EXPECT_TRUE(ParseSource(source).fatal) << text.size();
        }
    }
    // A file that is decoded is refused where its bytes are bad, and holds nulls as they are.
    EXPECT_THROW(static_cast<void>(InputSourceUtils::InputSourceFromFileName(
                     folder.Write("b.xml", "<a/>\xC3"), true)),
                 TIO::Exception);
    const auto decoded = InputSourceUtils::InputSourceFromFileName(
        folder.Write("c.xml", std::string("<a/>\0", 5)), true);
    EXPECT_TRUE(ParseSource(*decoded).fatal);
}

TEST(MalformedDocuments, WhatTheScannerDropsIsFoundInOtherEncodings)
{
    const auto widen = [](const std::string& byteOrderMark, const std::string& ascii,
                          std::size_t size, bool isBigEndian) {
        std::string bytes = byteOrderMark;
        for (const char c : ascii) {
            std::string unit(size, '\0');
            unit[isBigEndian ? size - 1 : 0] = c;
            bytes += unit;
        }
        return bytes;
    };
    const std::string utf16 = "<?xml version='1.0' encoding='UTF-16'?><a/>\n";
    const std::string good[] = {
        widen("\xFF\xFE", utf16, 2, false),
        widen("\xFE\xFF", utf16, 2, true),
        widen("", utf16, 2, false),
        widen("", utf16, 2, true),
        widen(std::string("\xFF\xFE\0\0", 4), "<?xml version='1.0'?><a/>\n", 4, false),
        widen(std::string("\0\0\xFE\xFF", 4), "<?xml version='1.0'?><a/>\n", 4, true),
        "<?xml version='1.0' encoding='ISO-8859-1'?><!--\xE9--><a/>\n",
        "<?xml version='1.0' encoding='Shift_JIS'?><!--\x83\x41--><a/>\n",
        "<?xml version='1.1'?><a/>\xC2\x85\xE2\x80\xA8\n",
        "<?xml version='1.1' encoding='ISO-8859-1'?><a/>\x85\n",
        "\xEF\xBB\xBF<a/>\r\n",
    };
    for (const std::string& bytes : good)
        EXPECT_THAT(ParseBytes(bytes).errors, IsEmpty()) << bytes;

    const std::string null(4, '\0');
    for (const std::string& bytes : good)
        EXPECT_TRUE(ParseBytes(bytes + null).fatal) << bytes;
    for (const std::string& bytes : {good[0], good[1], good[2], good[3], good[4], good[5]})
        EXPECT_TRUE(ParseBytes(bytes + "x").fatal) << bytes;
    EXPECT_TRUE(ParseBytes(good[7] + "\x83").fatal);
    // Single bytes are UTF-8 where a declaration names larger units.
    for (const std::string name : {"UTF-16", "UTF-32", "UCS-4"}) {
        const std::string start = "<?xml version='1.0' encoding='" + name + "'?><a/>";
        EXPECT_THAT(ParseBytes(start).errors, IsEmpty());
        EXPECT_TRUE(ParseBytes(start + "\xF8 />").fatal) << name;
        EXPECT_TRUE(ParseBytes(start + "<!--\xF7\xBF\xBF\xBF-->").fatal) << name;
    }
    EXPECT_THAT(ParseBytes(good[1] + null).errors,
                ElementsAre("Fatal Error(2,1): invalid character (Unicode: 0x0) (id: id)"));
}

TEST(MalformedDocuments, ColumnsAreCodeUnitsInEveryEncoding)
{
    const auto expectAt = [](const std::string& bytes, const std::string& position) {
        const ParseOutcome outcome = ParseBytes(bytes);
        EXPECT_TRUE(outcome.fatal);
        EXPECT_THAT(outcome.errors, ElementsAre(StartsWith("Fatal Error" + position + ":")))
            << bytes;
    };
    const auto declare = [](const std::string& encoding) {
        return "<?xml version='1.0' encoding='" + encoding + "'?>\n";
    };
    const std::string null(1, '\0');
    // Bytes that would continue a character of UTF-8.
    expectAt(declare("ISO-8859-1") + "<a/><!--\xA9\xA9\xE9-->" + null, "(2,15)");
    expectAt(declare("windows-1252") + "<a/><!--\x80\xA9\xE9-->" + null, "(2,15)");
    expectAt(declare("Shift_JIS") + "<a/><!--\x83\x41\xB1-->" + null, "(2,14)");
    expectAt(declare("Shift_JIS") + "<a/><!--\x83\x41\xB1-->\x83", "(2,14)");
    expectAt(declare("GB18030") + "<a/><!--\x94\x39\xFC\x36-->" + null, "(2,14)");
    expectAt(declare("GB18030") + "<a/><!--\x94\x39\xFC\x36-->\xFF", "(2,14)");
    // A character of two code units.
    for (const std::string& start :
         {std::string(), declare("UTF-8"), std::string("\xEF\xBB\xBF")}) {
        const std::string line = start.ends_with('\n') ? "(2," : "(1,";
        expectAt(start + "<a/><!--\xF0\x9F\x98\x80-->" + null, line + "14)");
        expectAt(start + "<a/><!--\xF0\x9F\x98\x80-->\xC3", line + "14)");
        // As the scanner itself counts.
        expectAt(start + "<a/><!--\xF0\x9F\x98\x80--></b>", line + "14)");
        expectAt(start + "<a/><!--\xC3\xA9\xC3\xA9--></b>", line + "14)");
    }
    const auto widen = [](const std::u32string& text, std::size_t size) {
        std::string bytes;
        for (const char32_t c : text) {
            for (std::size_t i = 0; i < size; ++i)
                bytes += static_cast<char>(c >> 8 * i & 0xFF);
        }
        return bytes;
    };
    using namespace std::string_literals;
    expectAt(widen(U"\uFEFF<a/><!--\xD83D\xDE00-->\0"s, 2), "(1,14)");
    expectAt(widen(U"\uFEFF<a/><!--\U0001F600-->\0"s, 4), "(1,14)");
}

TEST(MalformedDocuments, AnySingleByteCanBeMissingWithoutHarm)
{
    for (std::size_t at = 0; at < c_document.size(); ++at) {
        std::string text = c_document;
        text.erase(at, 1);
        const ParseOutcome outcome = ParseUtf8(text);
        EXPECT_EQ(outcome.fatal, !outcome.errors.empty()) << at;
    }
}

TEST(MalformedDocuments, OfNoElementAreErrorsWithoutEvents)
{
    for (const char* const text :
         {"", " ", "\n", "x", "<?xml version='1.0'?>", "<!-- c -->", "<", "\xEF\xBB\xBF", "\xEF",
          "<!DOCTYPE a>", "<a", "&amp;", "]]>", " :a='1'>", "x :a='1'> <", "</a>",
          "<?xml version='2.0'?><a/>", "<?xml?><a/>"}) {
        const ParseOutcome outcome = ParseUtf8(text);
        EXPECT_TRUE(outcome.fatal) << text;
        EXPECT_THAT(outcome.errors, SizeIs(1)) << text;
        EXPECT_THAT(outcome.events, IsEmpty()) << text;
    }
}

TEST(MalformedDocuments, KeepTheMessagesOfTheScanner)
{
    EXPECT_THAT(ParseUtf8("").errors,
                ElementsAre("Fatal Error(1,1): invalid document structure (id: id)"));
    EXPECT_THAT(ParseUtf8("<a b='1' b='2'/>").errors,
                ElementsAre(HasSubstr("Fatal Error(1,12): attribute 'b' is already specified")));
    EXPECT_THAT(ParseUtf8("<a>&e;</a>").errors,
                ElementsAre("Fatal Error(1,7): entity 'e' not found (id: id)"));
    EXPECT_THAT(ParseUtf8("<a/><b/>").errors, ElementsAre(HasSubstr("Fatal Error(1,")));
}

TEST(MalformedDocuments, LinesAreCountedFromTheVeryFirst)
{
    const std::pair<const char*, int> spaces[] = {
        {" ", 2},   {"\t", 2},   {"\n", 3},   {"\r", 3},     {"\r\n", 3},
        {" \n", 3}, {"\n\n", 4}, {"\r\r", 4}, {"\n\r\n", 4}, {"\r\n\n", 4}};
    for (const char* const byteOrderMark : {"", "\xEF\xBB\xBF"}) {
        for (const auto& [space, line] : spaces) {
            for (const char* const rest : {"version='1.0'?>\n<a><b></a>",
                                           "version='1.0' encoding='iso-8859-1'?>\n<a><b></a>"}) {
                const std::string text = std::string(byteOrderMark) + "<?xml" + space + rest;
                const auto isAtLine =
                    ElementsAre(StartsWith("Fatal Error(" + std::to_string(line)));
                EXPECT_THAT(ParseUtf8(text).errors, isAtLine) << text;
                if (*byteOrderMark == '\0') {
                    EXPECT_THAT(ParseBytes(text).errors, isAtLine) << text;
                }
            }
        }
    }
}

TEST(MalformedDocuments, ControlCharactersAreNoText)
{
    for (int byte = 0; byte < 0x20; ++byte) {
        const bool allowed = byte == '\t' || byte == '\n' || byte == '\r';
        const std::string text = "<a>" + std::string(1, static_cast<char>(byte)) + "</a>";
        EXPECT_EQ(ParseUtf8(text).fatal, !allowed) << byte;
        EXPECT_EQ(ParseUtf8("<a>&#" + std::to_string(byte) + ";</a>").fatal, !allowed) << byte;
    }
}

TEST(MalformedDocuments, ControlCharactersAreNoPartOfAnIdentifier)
{
    for (const std::string& character :
         {std::string("\x01"), std::string("\x0E"), std::string("\x1F"),
          std::string("\xEF\xBF\xBE"), std::string("\xEF\xBF\xBF")}) {
        const std::string id = "'a" + character + "b'";
        for (const std::string& type :
             {"SYSTEM " + id, "PUBLIC 'p' " + id, "PUBLIC " + id + " 's'",
              "[<!NOTATION n SYSTEM " + id + ">]", "[<!NOTATION n PUBLIC 'p' " + id + ">]",
              "[<!NOTATION n PUBLIC " + id + ">]",
              "[<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM " + id + " NDATA n>]"}) {
            SCOPED_TRACE(type);
            for (const ParseOutcome& outcome : {ParseUtf8("<!DOCTYPE a " + type + "><a/>"),
                                                ParseBytes("<!DOCTYPE a " + type + "><a/>")}) {
                EXPECT_TRUE(outcome.fatal);
                EXPECT_THAT(outcome.errors, SizeIs(1));
                EXPECT_THAT(outcome.events, IsEmpty());
            }
        }
    }
    EXPECT_THAT(ParseUtf8("<!DOCTYPE a\nSYSTEM 'b\x0E'><a/>").errors,
                ElementsAre("Fatal Error(2,12): invalid character 0xE in system identifier (id: "
                            "id)"));
    EXPECT_THAT(ParseUtf8("<!DOCTYPE a SYSTEM '\t\n\xC3\xA9\xF0\x9F\x98\x80'><a/>").errors,
                IsEmpty());
    const auto widen = [](const std::u16string& text) {
        std::string bytes;
        for (const char16_t unit : text)
            bytes += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
        return bytes;
    };
    for (const char16_t half : {u'\xD83D', u'\xDE00'}) {
        EXPECT_TRUE(
            ParseBytes(widen(u"\uFEFF<!DOCTYPE a SYSTEM '" + std::u16string(1, half) + u"'><a/>"))
                .fatal);
    }
}

TEST(MalformedDocuments, NoExternalFileIsRead)
{
    const TemporaryFolder folder;
    const std::string dtd =
        folder.Write("a.dtd", "<!ATTLIST a fromFile CDATA 'yes'>").toStdString();
    const ParseOutcome external = ParseUtf8("<!DOCTYPE a SYSTEM '" + dtd + "'><a/>");
    EXPECT_EQ(external, (ParseOutcome{{"<a>", "</>"}, {}, {}, false}));
}

TEST(MalformedDocuments, AMillionLevelsFitOnASmallStack)
{
    class CountingSink : public SAXInterface
    {
    public:
        void StartElement(TString&&, std::unordered_map<TString, TString>&&) override { ++starts; }
        void EndElement() override { ++ends; }
        void TextContent(const TString&) override {}
        int starts = 0;
        int ends = 0;
    };
    constexpr int c_levels = 1000000;
    std::string text;
    for (int i = 0; i < c_levels; ++i)
        text += "<a>";
    for (int i = 0; i < c_levels; ++i)
        text += "</a>";
    const auto sink = std::make_shared<CountingSink>();
    RunOnSmallStack([&] {
        Utf8InputSource source(std::move(text), u"id", false);
        const auto parser = XercesXMLParser::Create(source, sink);
        parser->Parse();
        EXPECT_FALSE(parser->HasErrors());
    });
    EXPECT_EQ(sink->starts, c_levels);
    EXPECT_EQ(sink->ends, c_levels);
}
