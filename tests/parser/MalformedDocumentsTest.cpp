#include "support/ParseOutcome.h"
#include "support/SmallStack.h"
#include "support/TemporaryFile.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/InputSourceUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::string c_document = "<?xml version='1.0' encoding='UTF-8'?>\n"
                               "<!DOCTYPE a [<!ATTLIST b z CDATA 'def'>]>\n"
                               "<!-- c\xC3\xA9 --><?pi d\xE2\x82\xAC?>"
                               "<a x='\xC3\xA9' :y=\"&lt;\">t\xF0\x9F\x98\x80<b/>"
                               "<![CDATA[<\xC3\xA9>]]>&#x20AC;</a>\n";

const std::size_t c_declarationSize = c_document.find('\n');

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
            for (const ParseOutcome& outcome : {ParseUtf8(spoilt), ParseBytes(spoilt)}) {
                // In the declaration the scanner gives up with an exception, which is no fatal
                // error.
                if (at < c_declarationSize && !outcome.fatal) {
                    EXPECT_THAT(outcome.errors, SizeIs(1));
                    EXPECT_THAT(outcome.events, IsEmpty());
                } else {
                    ExpectBeginningOf(whole, outcome);
                }
            }
            if (at % 8 != 0)
                continue;
            // The chunked reader refuses such a file, the decoding one says where it is wrong.
            EXPECT_THROW(ParseFileInChunks(folder, spoilt), CorvinaException);
            EXPECT_THROW(
                InputSourceUtils::InputSourceFromFileName(folder.Write("a.xml", spoilt), true),
                TIO::Exception);
        }
    }
}

TEST(MalformedDocuments, ANulByteAnywhereBehindTheDeclarationIsAFatalError)
{
    const ParseOutcome whole = ParseUtf8(c_document);
    const std::size_t end = c_document.rfind('>');
    for (std::size_t at = c_declarationSize; at <= end; ++at) {
        SCOPED_TRACE(at);
        std::string spoilt = c_document;
        spoilt.insert(at, 1, '\0');
        ExpectBeginningOf(whole, ParseUtf8(spoilt));
        ExpectBeginningOf(whole, ParseBytes(spoilt));
        StringInputSource source(TString::fromStdString(spoilt), u"id", false);
        ExpectBeginningOf(whole, ParseSource(source));
    }
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

TEST(MalformedDocuments, ControlCharactersAreNoText)
{
    for (int byte = 0; byte < 0x20; ++byte) {
        const bool allowed = byte == '\t' || byte == '\n' || byte == '\r';
        const std::string text = "<a>" + std::string(1, static_cast<char>(byte)) + "</a>";
        EXPECT_EQ(ParseUtf8(text).fatal, !allowed) << byte;
        EXPECT_EQ(ParseUtf8("<a>&#" + std::to_string(byte) + ";</a>").fatal, !allowed) << byte;
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
