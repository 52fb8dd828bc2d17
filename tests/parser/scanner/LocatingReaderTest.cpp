#include "scanner/LocatingReader.h"

#include "bytes/Utf8Faults.h"
#include "support/ParseOutcome.h"
#include "support/TemporaryFile.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <random>

namespace {

using testing::ElementsAre;
using testing::StartsWith;

ParseOutcome ParseBytes(const std::string& bytes)
{
    BinaryInputSource source(std::vector<unsigned char>(bytes.begin(), bytes.end()), u"id", false);
    return ParseSource(source);
}

ParseOutcome ParseFile(const std::string& bytes)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", bytes));
    return ParseSource(source);
}

/// The one error of each kind of source, which must be at `position`.
void ExpectErrorAt(const std::string& bytes, const std::string& position)
{
    const auto isThere = ElementsAre(StartsWith("Fatal Error" + position + ": "));
    EXPECT_THAT(ParseUtf8(bytes).errors, isThere);
    EXPECT_THAT(ParseBytes(bytes).errors, isThere);
}

std::string MakeLines(std::size_t count)
{
    std::string lines;
    for (std::size_t i = 0; i < count; ++i)
        lines += i % 3 == 0 ? "<b>\xC3\xA9</b>\r\n" : "<b>text</b>\n";
    return lines;
}

} // namespace

TEST(LocatingReader, PlacesBytesThatAreNoUtf8WhereTheyStand)
{
    ExpectErrorAt("<a>\xFF</a>        ", "(1,4)");
    ExpectErrorAt("<a>\n \xE9</a>\n", "(2,2)");
    ExpectErrorAt("\xFF<a/>        ", "(1,1)");
    ExpectErrorAt("<?xml version='1.0'?>\n\n<a b='\xC3\xA9\xF0\x9F\x98\x80\x80'/>", "(3,10)");
    ExpectErrorAt("<?xml version='1.0' encoding='utf-8'?>\r\n<a>\xED\xA0\x80</a>\n", "(2,4)");
    ExpectErrorAt("<?xml\nversion='1.0'?>\n<a>\xF4\x90\x80\x80</a>\n", "(3,4)");
    ExpectErrorAt("\xEF\xBB\xBF<a>\xFF</a>       ", "(1,4)");
    ExpectErrorAt("<!DOCTYPE a [\n<!ENTITY e '\xFF'>\n]><a/>       ", "(2,13)");
    ExpectErrorAt("<a>\n<!--\n\xC0\x80--></a>\n", "(3,1)");
}

TEST(LocatingReader, PlacesThemFarIntoADocumentOfAnySource)
{
    for (const std::size_t lines : {500U, 5000U, 50000U}) {
        const std::string bytes = "<a>\n" + MakeLines(lines) + "xy\xFF</a>\n\n\n\n\n\n\n";
        const std::string position = "(" + std::to_string(lines + 2) + ",3)";
        ExpectErrorAt(bytes, position);
        EXPECT_THAT(
            ParseFile(lines == 500 ? bytes : "<a>\n" + MakeLines(lines) + "\xC3</a>\n\n\n").errors,
            lines == 500
                // The first chunk of a file decides on the encoding.
                ? testing::Matcher<const std::vector<std::string>&>(
                      ElementsAre(StartsWith("Fatal Error" + position + ": ")))
                : ElementsAre(StartsWith("Fatal Error(" + std::to_string(lines + 2) + ",1): ")));
    }
}

TEST(LocatingReader, PlacesThemInTheLastBytesToo)
{
    const std::pair<std::string, std::string> endings[] = {
        {"\xFF</a>", "(2,2)"},
        {"\xF5</a>", "(2,2)"},
        {"\xFE", "(2,2)"},
        {"\xC3", "(2,2)"},
        {"\xE2\x82", "(2,2)"},
        {"\xF0\x9F<", "(2,2)"},
        {"<c d='\xE2\x82", "(2,8)"},
        {"<!-- \xC3", "(2,7)"},
        {"<![CDATA[\n\xC3", "(3,1)"},
        {"<?p \xF0", "(2,6)"},
        {"</a\xC3", "(2,5)"},
        {"\xC3\xA9\xF0", "(2,3)"},
        {"<c>\r\n\xFF</a>", "(3,1)"},
    };
    for (const auto& [ending, position] : endings) {
        const std::string bytes = "<a>\nx" + ending;
        SCOPED_TRACE(testing::PrintToString(ending));
        ExpectErrorAt(bytes, position);
        EXPECT_THAT(ParseUtf8(bytes).errors,
                    ElementsAre("Fatal Error" + position +
                                ": incomplete character at the end of the document (id: id)"));
        // What stands before them has been read.
        EXPECT_THAT(ParseUtf8(bytes).events, testing::Contains("<a>"));
    }
    EXPECT_THAT(ParseUtf8("\xFF").errors,
                ElementsAre("Fatal Error(1,1): incomplete character at the end of the document "
                            "(id: id)"));
}

TEST(LocatingReader, LeavesErrorsAloneThatComeBeforeThem)
{
    EXPECT_THAT(ParseUtf8("<a><b></a>\xC3").errors,
                ElementsAre("Fatal Error(1,9): expected end of tag 'b' (id: id)"));
    EXPECT_THAT(ParseUtf8("<a/>x\xC3").errors,
                ElementsAre(testing::HasSubstr("comment or processing instruction expected")));
    // Far behind, in a part that was not decoded yet.
    EXPECT_THAT(ParseUtf8("<a></b>" + std::string(100000, ' ') + "\xFF</a>       ").errors,
                ElementsAre("Fatal Error(1,6): expected end of tag 'a' (id: id)"));
    EXPECT_THAT(ParseUtf8("<a><b></a>").errors,
                ElementsAre("Fatal Error(1,9): expected end of tag 'b' (id: id)"));
}

TEST(LocatingReader, LeavesAnErrorAloneThatEndsRightBeforeThem)
{
    // So many characters are decoded at a time.
    constexpr std::size_t c_block = 16 * 1024;
    for (const char* const bad : {"\xF5\x80\x80\x80", "\xFF", "\x80"}) {
        std::string bytes = "<a>" + std::string(c_block - 4, 'x') + "\x01";
        ASSERT_EQ(bytes.size(), c_block);
        bytes.append(bad).append("</a>        ");
        EXPECT_THAT(ParseUtf8(bytes).errors,
                    ElementsAre("Fatal Error(1,16385): invalid character 0x1 (id: id)"));
    }
}

TEST(LocatingReader, NamesBytesBeyondTheLastCharacterAsWhatTheyAre)
{
    for (const auto& [byte, name] :
         {std::pair("\xF5", "F5"), std::pair("\xF6", "F6"), std::pair("\xF7", "F7")}) {
        const std::string bytes = std::string("<a>\n") + byte + "\x80\x80\x80</a>\n\n\n";
        const std::string expected = std::string("Fatal Error(2,1): invalid byte '0x") + name +
                                     "' at position 1 of a 4-byte sequence (id: id)";
        EXPECT_THAT(ParseUtf8(bytes).errors, ElementsAre(expected));
        EXPECT_THAT(ParseBytes(bytes).errors, ElementsAre(expected));
    }
}

TEST(LocatingReader, KeepsBytesOfOtherEncodingsOutOfIt)
{
    // The bytes are no UTF-8, and the errors are where they were.
    EXPECT_THAT(ParseBytes("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</b>").errors,
                ElementsAre("Fatal Error(1,50): expected end of tag 'a' (id: id)"));
    EXPECT_THAT(ParseBytes("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9").errors,
                ElementsAre(StartsWith("Fatal Error(1,48): input ended before")));
}

TEST(LocatingReader, PlacesThemForEveryParser)
{
    const std::string bytes = "<a>\n\n \xFF</a>       ";
    const auto isThere = StartsWith("Fatal Error(3,2): ");
    const auto toStrings = [](const auto& errors) {
        std::vector<std::string> result;
        for (const TString& error : errors)
            result.push_back(error.toStdString());
        return result;
    };
    EXPECT_THAT(toStrings(DOMParser().ParseXmlString(bytes, u"id")->GetErrors()),
                ElementsAre(isThere));
    EXPECT_THAT(toStrings(DOMParser().ParseXmlBytes({bytes.begin(), bytes.end()})->GetErrors()),
                ElementsAre(isThere));
    Utf8InputSource source(bytes, u"id", false);
    EXPECT_THAT(toStrings(StandaloneDOMParser().ParseXmlInputSource(source, false).errors),
                ElementsAre(isThere));
}

TEST(LocatingReader, PlacesThemInASchema)
{
    const std::string schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>\n"
                               "<!-- \xFF -->\n</xs:schema>        ";
    const auto sink = std::make_shared<RecordingSink>();
    StringInputSource document(u"<a/>", u"id", false);
    const auto parser = XercesXMLParser::Create(document, sink);
    Utf8InputSource source(schema, u"schema", false);
    parser->LoadXSDSource(source);
    EXPECT_THAT(ToUtf8(parser->GetErrors()),
                testing::Contains(StartsWith("Fatal Error(2,6): invalid byte")));
}

TEST(LocatingReader, AgreesWithASearchForTheBytesInAnyDocument)
{
    std::mt19937 random(1);
    const std::string pieces[] = {
        "x", " ", "\n", "\r\n", "<b/>", "\r", "&lt;", "\xC3\xA9", "\xF0\x9F\x98\x80", "<!-- -->"};
    const std::string bad[] = {"\xFF",         "\xC3", "\xE2\x82", "\xF5\x80\x80\x80",
                               "\xED\xA0\x80", "\x80"};
    for (int round = 0; round < 500; ++round) {
        std::string bytes = "<a>";
        for (auto i = random() % 60; i > 0; --i)
            bytes += pieces[random() % std::size(pieces)];
        bytes += bad[random() % std::size(bad)];
        if (random() % 2 == 0)
            bytes += "</a>";
        if (random() % 2 == 0)
            bytes += "\n      ";
        const auto fault = Utf8Faults::FindFirst(bytes);
        ASSERT_TRUE(fault);
        const std::string position =
            "(" + std::to_string(fault->line) + "," + std::to_string(fault->column) + ")";
        SCOPED_TRACE(testing::PrintToString(bytes));
        ExpectErrorAt(bytes, position);
    }
}

TEST(LocatingReader, MarksWhatIsAboutBytesThatAreNoUtf8)
{
    const auto read = [](const std::string& bytes) {
        const auto document =
            DOMParser().ParseXmlBytes(std::vector<unsigned char>(bytes.begin(), bytes.end()));
        const std::vector<XMLDiagnostic> errors = document->GetErrorDiagnostics();
        return errors.empty() ? XMLDiagnostic(XMLDiagnostic::Kind::Warning, u"") : errors.front();
    };
    const XMLDiagnostic wrong = read("<a>\n \xE9t</a>");
    EXPECT_TRUE(wrong.IsInvalidUtf8());
    EXPECT_EQ(wrong.GetLine(), 2);
    EXPECT_EQ(wrong.GetColumn(), 2);
    // The document may go on where its end is missing.
    EXPECT_FALSE(read("<a>\xE2\x82").IsInvalidUtf8());
    EXPECT_FALSE(read("<a>\xC3\xA9</b>").IsInvalidUtf8());
    EXPECT_FALSE(read("<?xml version='1.0' encoding='US-ASCII'?><a>\xE9</a>").IsInvalidUtf8());
}

TEST(LocatingReader, KnowsWhereADeclarationCannotBeDecodedWhoseMessageHasNoPosition)
{
    const std::string_view bytes = "<?xml version='1.0' \xE9?><a/>";
    BinaryInputSource source(std::vector<unsigned char>(bytes.begin(), bytes.end()), u"id", false);
    const auto sink = std::make_shared<RecordingSink>();
    const auto parser = XercesXMLParser::Create(source, sink);
    parser->Parse();
    EXPECT_THAT(parser->GetErrors(), ElementsAre(u"unable to decode first line in entity 'id'"));
    EXPECT_FALSE(parser->HasFatallyErrored());
    ASSERT_EQ(parser->GetErrorDiagnostics().size(), 1u);
    const XMLDiagnostic& error = parser->GetErrorDiagnostics()[0];
    EXPECT_EQ(error.GetText(), u"unable to decode first line in entity 'id'");
    EXPECT_EQ(error.GetKind(), XMLDiagnostic::Kind::Error);
    EXPECT_EQ(error.GetId(), u"id");
    EXPECT_EQ(error.GetLine(), 1);
    EXPECT_EQ(error.GetColumn(), 21);
    EXPECT_TRUE(error.IsInvalidUtf8());
}

TEST(LocatingReader, LocatesAUnitInTheDeclarationThatIsNoCharacter)
{
    std::vector<unsigned char> bytes{0xFF, 0xFE};
    for (const char16_t unit : std::u16string_view(u"<?xml version='1.0' \xD800?><a/>")) {
        bytes.push_back(static_cast<unsigned char>(unit & 0xFF));
        bytes.push_back(static_cast<unsigned char>(unit >> 8));
    }
    const auto document = DOMParser().ParseXmlBytes(bytes);
    const std::vector<XMLDiagnostic> errors = document->GetErrorDiagnostics();
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors.front().GetText(), u"bytes that are no character in 'UTF-16LE' encoding");
    EXPECT_EQ(errors.front().GetLine(), 1U);
    EXPECT_EQ(errors.front().GetColumn(), 21U);
}

TEST(LocatingReader, TellsRefusedEntitiesFromThoseThatAreTooMany)
{
    const std::string declared = "<!DOCTYPE a [<!ENTITY e 'x'><!ENTITY f '&e;'>]>";
    std::string many = declared + "<a>";
    for (int i = 0; i <= 50000; ++i)
        many += "&e;";
    const auto read = [](const std::string& text, bool allowed) {
        StandaloneDOMParser parser;
        if (allowed)
            parser.AllowEntityExpansion_Insecure();
        const auto result = parser.ParseXmlString(text, u"id");
        EXPECT_EQ(result.diagnostics.size(), 1u) << text.substr(0, 60);
        return result.diagnostics.front();
    };
    for (const char* const content : {"<a>&e;</a>", "<a b='&e;'/>", "<a>&f;</a>", "<a>&e;&e;"})
        EXPECT_TRUE(read(declared + content, false).IsEntityRefused()) << content;
    const XMLDiagnostic refused = read(declared + "\n<a>text &e;</a>", false);
    EXPECT_EQ(refused.GetLine(), 2U);
    EXPECT_GT(refused.GetColumn(), 8U);
    EXPECT_FALSE(read(declared + "<a>&g;</a>", false).IsEntityRefused());
    EXPECT_FALSE(read(declared + "<a>", false).IsEntityRefused());
    EXPECT_FALSE(read(many, true).IsEntityRefused());
    const auto document = DOMParser().ParseXmlString(declared + "<a>&e;</a>", u"id");
    ASSERT_EQ(document->GetErrorDiagnostics().size(), 1u);
    EXPECT_TRUE(document->GetErrorDiagnostics().front().IsEntityRefused());
}
