#include "bytes/DocumentDecoding.h"

#include "support/ParseOutcome.h"
#include "support/TemporaryFile.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/InputSourceUtils.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

ParseOutcome ParseBytes(const std::string& bytes)
{
    BinaryInputSource source(std::vector<unsigned char>(bytes.begin(), bytes.end()), u"id", false);
    return ParseSource(source);
}

std::list<TString> ErrorsOfBytes(const std::string& bytes)
{
    return DOMParser().ParseXmlBytes({bytes.begin(), bytes.end()})->GetErrors();
}

} // namespace

TEST(DocumentDecoding, IsNotThatOfWhatAnInstructionNames)
{
    const TemporaryFolder folder;
    for (const char* const instruction :
         {"<?xml-stylesheet type='text/xsl' href='a.xsl' encoding=\"Shift_JIS\"?>",
          "<?xml-model href='a.rng' encoding='US-ASCII'?>", "<?xml-a encoding='windows-1253'?>",
          "<?xml-a encoding='x-unknown'?>", "<?xml-a encoding='UTF-16'?>",
          "<?xml version='1.0' standalone='yes'?>", "<?xml\nversion='1.0' standalone='yes'?>",
          "<?xml version='1.0'?><?xml-a encoding='Big5'?>"}) {
        SCOPED_TRACE(instruction);
        const std::string bad = std::string(instruction) + "<a>\xFF</a>";
        const std::string good = std::string(instruction) + "<a>\xC3\xBF\xD2\x80</a>";
        const ParseOutcome expected{{"<a>", "'\xC3\xBF\xD2\x80'", "</>"}, {}, {}, false};
        EXPECT_EQ(ParseBytes(good), expected);
        EXPECT_THAT(ErrorsOfBytes(good), IsEmpty());
        FileInputSource chunks(folder.Write("a.xml", good));
        EXPECT_EQ(ParseSource(chunks), expected);
        EXPECT_TRUE(ParseBytes(bad).fatal);
    }
}

TEST(DocumentDecoding, OfAnUnknownEncodingIsRefusedBehindTheDeclarationAndNotForWhatComesTooLate)
{
    const std::string rest = "<?xml version='1.0' encoding='x-unknown'?><a/>";
    EXPECT_THAT(ErrorsOfBytes(rest),
                ElementsAre(u"Fatal Error(1,43): unable to create converter for 'X-UNKNOWN' "
                            u"encoding (id: )"));
    const TString late = u"XML or TEXT declaration must start at line 1, column 1 (id: )";
    EXPECT_THAT(ErrorsOfBytes(" " + rest), ElementsAre(u"Fatal Error(1,8): " + late));
    EXPECT_THAT(ErrorsOfBytes("\n \n" + rest), ElementsAre(u"Fatal Error(3,7): " + late));
    // As with an encoding that is known, or not named.
    for (const char* const other :
         {"<?xml version='1.0' encoding='UTF-8'?><a/>",
          "<?xml version='1.0' encoding='ISO-8859-1'?><a/>", "<?xml version='1.0'?><a/>"})
        EXPECT_EQ(ErrorsOfBytes("\n \n" + std::string(other)), ErrorsOfBytes("\n \n" + rest));
    // Where the white space is skipped, the declaration comes first.
    BinaryInputSource skipping({rest.begin(), rest.end()}, u"", true);
    EXPECT_THAT(DOMParser().ParseXmlInputSource(skipping, false)->GetErrors(),
                testing::ContainerEq(ErrorsOfBytes(rest)));
}

TEST(DocumentDecoding, OfLargerUnitsShowsByTheUnits)
{
    for (const char* const space : {" ", "\n", "\t", "\r"}) {
        for (const std::size_t size : {2U, 4U}) {
            for (const std::size_t asciiAt : {std::size_t(0), size - 1}) {
                const std::string name = size == 2 ? "UTF-16" : "UCS-4";
                std::string bytes;
                for (const char c : std::string("<?xml") + space + "version='1.0' encoding='" +
                                        name + "'?><a>e</a>") {
                    std::string unit(size, '\0');
                    unit[asciiAt] = c;
                    bytes += unit;
                }
                EXPECT_EQ(ParseBytes(bytes), (ParseOutcome{{"<a>", "'e'", "</>"}, {}, {}, false}));
            }
        }
        // Single bytes are no such units, whatever they declare.
        for (const char* const name : {"UTF-16", "utf-16", "UCS-4", "ISO-10646-UCS-2", "UTF-32"})
            EXPECT_EQ(ParseBytes(std::string("<?xml") + space + "version='1.0' encoding='" + name +
                                 "'?><a>\xC3\xA9</a>"),
                      (ParseOutcome{{"<a>", "'\xC3\xA9'", "</>"}, {}, {}, false}));
    }
}

TEST(DocumentDecoding, CountsWhateverWhiteSpaceStandsBeforeIt)
{
    const std::pair<std::string, std::string> texts[] = {
        {"iso-8859-1' ?><a>\xE9</a>", "'\xC3\xA9'"},
        // As UTF-8 this would be another text.
        {"ISO-8859-1' ?><a>\xC3\xA9</a>", "'\xC3\x83\xC2\xA9'"},
        {"windows-1252' ?><a>\x80</a>", "'\xE2\x82\xAC'"},
        {"Shift_JIS' ?><a>\x83\x41</a>", "'\xE3\x82\xA2'"},
        {"US-ASCII' ?><a>e</a>", "'e'"},
        {"UTF-8' ?><a>\xC3\xA9</a>", "'\xC3\xA9'"},
    };
    const TemporaryFolder folder;
    for (const auto& [rest, text] : texts) {
        for (const char* const space : {" ", "\n", "\t", "\r", "\r\n ", "  "}) {
            SCOPED_TRACE(rest);
            const std::string bytes =
                std::string("<?xml") + space + "version='1.0'\nencoding='" + rest;
            const ParseOutcome expected{{"<a>", text, "</>"}, {}, {}, false};
            EXPECT_EQ(ParseBytes(bytes), expected);
            const auto file =
                InputSourceUtils::InputSourceFromFileName(folder.Write("a.xml", bytes), true);
            EXPECT_EQ(ParseSource(*file), expected);
        }
    }
}

TEST(DocumentDecoding, IsAnErrorWhereItIsWrongWhateverWhiteSpaceStandsBeforeIt)
{
    for (const char* const rest :
         {"US-ASCII'?><a>\xC3\xA9</a>", "x-unknown'?><a/>", "'?><a/>", "?><a/>", "1'?><a/>",
          "iso-8859-1\xE9'?><a/>", "utf-8'?><a>\xE9</a>"}) {
        SCOPED_TRACE(rest);
        for (const char* const space : {" ", "\n", "\t"}) {
            const ParseOutcome outcome =
                ParseBytes(std::string("<?xml") + space + "version='1.0' encoding='" + rest);
            ASSERT_THAT(outcome.errors, testing::SizeIs(1));
            // Where not even the declaration can be decoded, there is no kind and no position.
            EXPECT_EQ(outcome.fatal, outcome.errors[0].starts_with("Fatal Error(")) << space;
            EXPECT_EQ(outcome.fatal, outcome.errors[0].ends_with(" (id: id)")) << space;
        }
    }
}

TEST(DocumentDecoding, ReplacesNoBytesInSilence)
{
    const std::pair<std::string, std::string> documents[] = {
        {"windows-1253", "\xD2"}, {"windows-1255", "\xD9"}, {"ISO-8859-7", "\xFF"},
        {"ISO-8859-6", "\xA1"},   {"GB18030", "\xFF"},      {"gb2312", "\xFF"},
        {"Big5", "\x81\x30"},     {"UTF-7", "\xE9"},        {"CESU-8", "\xFF"},
        {"ISO-2022-JP", "\xE9"},  {"HZ", "\xE9"},           {"EUC-JP", "\xFF"},
        {"Shift_JIS", "\xFF"},    {"EUC-KR", "\xFF"},       {"US-ASCII", "\x80"},
        {"UTF-8", "\xFF"},
    };
    for (const auto& [encoding, bytes] : documents) {
        SCOPED_TRACE(encoding);
        const std::string start = "<?xml version='1.0' encoding='" + encoding + "'?>";
        for (const std::string& rest :
             {"<a>e" + bytes + "xyz</a>", "<a e='e" + bytes + "xyz'/>",
              "<!--e" + bytes + "xyz--><a/>", "<a/><?p e" + bytes + "xyz?>",
              "<a>" + std::string(10000, 'x') + bytes + "xyz</a>"}) {
            const ParseOutcome outcome = ParseBytes(start + rest);
            EXPECT_TRUE(outcome.fatal);
            EXPECT_THAT(outcome.errors, testing::SizeIs(1));
        }
    }
    EXPECT_THAT(
        ParseBytes("<?xml version='1.0' encoding='windows-1253'?>\r\n<a>\n\xE1\xD2</a>").errors,
        ElementsAre("Fatal Error(3,2): bytes that are no character in 'windows-1253' encoding (id: "
                    "id)"));
}

TEST(DocumentDecoding, LeavesReplacementCharactersThatADocumentHolds)
{
    const std::pair<std::string, std::string> documents[] = {
        {"GB18030", "\x84\x31\xA4\x37"},
        {"CESU-8", "\xEF\xBF\xBD"},
        {"UTF-8", "\xEF\xBF\xBD"},
        {"windows-1253", "&#xFFFD;"},
    };
    for (const auto& [encoding, bytes] : documents) {
        const ParseOutcome outcome = ParseBytes("<?xml version='1.0' encoding='" + encoding +
                                                "'?><a>" + bytes + "e" + bytes + "</a>");
        EXPECT_THAT(outcome.errors, IsEmpty()) << encoding;
        EXPECT_THAT(outcome.events, ElementsAre("<a>",
                                                "'\xEF\xBF\xBD"
                                                "e\xEF\xBF\xBD'",
                                                "</>"));
    }
}

TEST(DocumentDecoding, LeavesReplacementCharactersInEverySpellingOfUtf7)
{
    const std::string replacement = "\xEF\xBF\xBD";
    const std::pair<std::string, std::string> texts[] = {
        {"+//0-", replacement},
        {"+//0", replacement},
        {"+//3//Q-", replacement + replacement},
        {"+//3//f/9-", replacement + replacement + replacement},
        {"+AGH//Q-", "a" + replacement},
        {"+AGEAYf/9-", "aa" + replacement},
        {"+//0AYQ-", replacement + "a"},
        {"e+//0-e+//0-", "e" + replacement + "e" + replacement},
    };
    for (const char* const name : {"UTF-7", "utf-7", "unicode-1-1-utf-7"}) {
        const std::string start = std::string("<?xml version='1.0' encoding='") + name + "'?><a>";
        for (const std::string& before : {std::string(), std::string(5000, 'x')}) {
            for (const auto& [spelling, text] : texts) {
                const ParseOutcome good = ParseBytes(start + before + spelling + "</a>");
                EXPECT_EQ(good,
                          (ParseOutcome{{"<a>", "'" + before + text + "'", "</>"}, {}, {}, false}))
                    << spelling;
                // What is replaced is found before it and behind it.
                for (const std::string& bad : {"\xE9 " + spelling, spelling + " \xE9"})
                    EXPECT_TRUE(ParseBytes(start + before + bad + "</a>").fatal) << bad;
            }
        }
    }
}

TEST(DocumentDecoding, TakesALineEndOfVersion11AtTheEndInEveryEncoding)
{
    const std::pair<std::string, std::string> lineEnds[] = {
        {"GB18030", "\x81\x30\x81\x35"}, {"GB18030", "\x81\x36\xA6\x35"}, {"ISO-8859-1", "\x85"},
        {"UTF-8", "\xC2\x85"},           {"UTF-8", "\xE2\x80\xA8"},       {"CESU-8", "\xC2\x85"},
        {"ISO-8859-15", "\x85"},
    };
    for (const auto& [encoding, lineEnd] : lineEnds) {
        const std::string start = "<?xml version='1.1' encoding='" + encoding + "'?>\n<a/>";
        for (const std::string& end : {lineEnd, "\n" + lineEnd + lineEnd, lineEnd + "<!--e-->"})
            EXPECT_EQ(ParseBytes(start + end), (ParseOutcome{{"<a>", "</>"}, {}, {}, false}))
                << encoding << testing::PrintToString(end);
        if (lineEnd.size() == 1)
            continue;
        // What is cut off there is an error all the same, and stands behind the line end.
        for (std::size_t length = 1; length < lineEnd.size(); ++length) {
            EXPECT_THAT(ParseBytes(start + lineEnd + lineEnd.substr(0, length)).errors,
                        ElementsAre(testing::EndsWith(
                            ",6): incomplete character at the end of the document (id: id)")))
                << encoding << length;
        }
    }
}

TEST(DocumentDecoding, DecodesAlikeAtEveryOffset)
{
    struct Encoding
    {
        std::string name;
        std::string replacement;
        std::string undecodable;
        std::string other;
    };
    const Encoding encodings[] = {
        {"GB18030", "\x84\x31\xA4\x37", "\xFF", "\x81\x30\x84\x36"},
        {"GB18030", "\x84\x31\xA4\x37", "\x84\x31\xA4\x3B", "\x81\x40"},
        {"CESU-8", "\xEF\xBF\xBD", "\xFF", "\xED\xA0\xBD\xED\xB8\x80"},
        {"CESU-8", "\xEF\xBF\xBD", "\xEF\xBF", "\xE2\x82\xAC"},
        {"ibm-1208", "\xEF\xBF\xBD", "\xC0\xAF", "\xF0\x9F\x98\x80"},
    };
    constexpr std::size_t c_block = 4096;
    for (const Encoding& encoding : encodings) {
        const std::string start = "<?xml version='1.0' encoding='" + encoding.name + "'?><a>";
        // Behind each end of a block, and somewhere in the next.
        for (const std::size_t around : {c_block, 3 * c_block, 3 * c_block + 1000}) {
            for (std::size_t at = around - 8; at <= around + 8; ++at) {
                SCOPED_TRACE(encoding.name + " " + std::to_string(at));
                const std::size_t length = at - start.size();
                std::string filled = start + std::string(length % encoding.other.size(), 'x');
                while (filled.size() < at)
                    filled += encoding.other;
                for (const std::string& before : {start + std::string(length, 'x'), filled}) {
                    ASSERT_EQ(before.size(), at);
                    const std::string& good = encoding.replacement;
                    for (const std::string& text :
                         {good, good + good, good + encoding.other + good, "x" + good + "x"}) {
                        EXPECT_THAT(ParseBytes(before + text + "</a>").errors, IsEmpty());
                        EXPECT_THAT(
                            ParseBytes(before + text + encoding.undecodable + "</a>").errors,
                            testing::SizeIs(1));
                        EXPECT_THAT(
                            ParseBytes(before + encoding.undecodable + text + "</a>").errors,
                            testing::SizeIs(1));
                    }
                }
            }
        }
    }
}

TEST(DocumentDecoding, OfLatinTextsHasTheBytesThatItHas)
{
    std::string all;
    for (int byte = 0xA0; byte <= 0xFF; ++byte)
        all += static_cast<char>(byte);
    for (const char* const name : {"ISO-8859-1", "latin1", "iso8859-1", "windows-1252"})
        EXPECT_THAT(ParseBytes(std::string("<?xml version='1.0' encoding='") + name + "'?><a>" +
                               all + "</a>")
                        .errors,
                    IsEmpty())
            << name;
}

TEST(DocumentDecoding, ReadsTextsOfAnyLength)
{
    // Characters of two bytes across the ends of whatever pieces they are decoded in.
    std::string text;
    std::string expected;
    for (int i = 0; i < 20000; ++i) {
        text += i % 7 == 0 ? "x" : "\x83\x41";
        expected += i % 7 == 0 ? "x" : "\xE3\x82\xA2";
    }
    const ParseOutcome outcome =
        ParseBytes("<?xml version='1.0' encoding='Shift_JIS'?><a>" + text + "</a>");
    EXPECT_EQ(outcome, (ParseOutcome{{"<a>", "'" + expected + "'", "</>"}, {}, {}, false}));
    const std::string gb(3000, '\x81');
    EXPECT_THAT(ParseBytes("<?xml version='1.0' encoding='GB18030'?><a>x" + gb + "</a>").errors,
                IsEmpty());
}
