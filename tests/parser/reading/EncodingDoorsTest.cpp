// Whatever door the bytes of a document come in by, one decoder reads them and one rule says in
// which encoding they are.

#include "support/Effort.h"
#include "support/ParseOutcome.h"
#include "support/Repeat.h"
#include "support/TemporaryFile.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <kesplatform/TFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using namespace std::string_literals;

constexpr int c_stride = static_cast<int>(Effort::c_stride);

/// Encodings of single bytes, of several bytes, with states, in EBCDIC, of Unicode, and names that
/// not everybody knows.
const char* const c_singleBytes[] = {
    "US-ASCII",     "ISO-8859-1",   "ISO-8859-2",   "ISO-8859-3",   "ISO-8859-4",   "ISO-8859-5",
    "ISO-8859-6",   "ISO-8859-7",   "ISO-8859-8",   "ISO-8859-9",   "ISO-8859-10",  "ISO-8859-11",
    "ISO-8859-13",  "ISO-8859-14",  "ISO-8859-15",  "ISO-8859-16",  "latin1",       "windows-1250",
    "windows-1251", "windows-1252", "windows-1253", "windows-1254", "windows-1255", "windows-1256",
    "windows-1257", "windows-1258", "windows-874",  "macintosh",    "x-mac-greek",  "IBM437",
    "IBM850",       "IBM852",       "IBM855",       "IBM858",       "IBM866",       "KOI8-R",
    "KOI8-U",       "TIS-620",      "hp-roman8",
};
const char* const c_others[] = {
    "Big5",     "Big5-HKSCS",  "GB2312",          "GBK",          "GB18030",
    "EUC-JP",   "EUC-KR",      "EUC-TW",          "Shift_JIS",    "cp932",
    "cp949",    "windows-31j", "ISO-2022-JP",     "ISO-2022-KR",  "HZ",
    "UTF-7",    "UTF-8",       "CESU-8",          "SCSU",         "BOCU-1",
    "ibm-1208", "IBM037",      "ebcdic-cp-us",    "IBM930",       "VISCII",
    "TCVN",     "ARMSCII-8",   "JOHAB",           "ISO-2022-CN",  "IMAP-mailbox-name",
    "T.61",     "UTF-16",      "ISO-10646-UCS-4", "no-such-name",
};

std::vector<const char*> AllEncodings()
{
    std::vector<const char*> all(std::begin(c_singleBytes), std::end(c_singleBytes));
    all.insert(all.end(), std::begin(c_others), std::end(c_others));
    return all;
}

std::string Declare(const std::string& encoding)
{
    return "<?xml version='1.0' encoding='" + encoding + "'?>";
}

std::vector<unsigned char> ToBytes(const std::string& bytes)
{
    return {bytes.begin(), bytes.end()};
}

ParseOutcome ParseBytes(const std::string& bytes)
{
    BinaryInputSource source(ToBytes(bytes), u"id", false);
    return ParseSource(source);
}

/// Nothing for a file that cannot be read.
std::optional<ParseOutcome> ParseFile(const TString& path)
{
    try {
        return ParseSource(*InputSourceUtils::InputSourceFromFileName(path, true));
    } catch (const TIO::Exception&) {
        return std::nullopt;
    }
}

/// What is wrong, without the identifier that differs from door to door.
std::vector<std::string> WithoutIdentifiers(std::vector<std::string> errors)
{
    for (std::string& error : errors)
        error = error.substr(0, error.find(" (id: "));
    return errors;
}

/// Both doors read the same, or both refuse the document.
void ExpectSameOfFile(const TString& path, const ParseOutcome& fromBytes)
{
    const auto fromFile = ParseFile(path);
    if (!fromFile) {
        EXPECT_THAT(fromBytes.errors, SizeIs(1));
        return;
    }
    EXPECT_EQ(WithoutIdentifiers(fromBytes.errors), WithoutIdentifiers(fromFile->errors));
    EXPECT_EQ(fromBytes.events, fromFile->events);
}

/// The text of the root element.
TString TextOf(const StandaloneDOMElement& element)
{
    TString text;
    for (const TString& node : element.GetChild(u"a")->GetTextNodes())
        text += node;
    return text;
}

void ExpectSameOfTrees(const TString& path, const std::string& bytes, bool isGood)
{
    const auto byBytes = DOMParser().ParseXmlBytes(ToBytes(bytes));
    const auto byFile = DOMParser().ParseXmlFile(path);
    const StandaloneParseResult standalone = StandaloneDOMParser().ParseXmlBytes(ToBytes(bytes));
    EXPECT_EQ(!byBytes->HasErrors(), isGood);
    EXPECT_EQ(!byFile->HasErrors(), isGood);
    EXPECT_EQ(standalone.errors.empty(), isGood);
    if (!isGood || testing::Test::HasFailure())
        return;
    const TString text = byBytes->GetDocumentRoot()->GetText();
    EXPECT_EQ(byFile->GetDocumentRoot()->GetText(), text);
    const StandaloneParseResult fromFile = StandaloneDOMParser().ParseXmlFile(path);
    for (const StandaloneParseResult* const result : {&standalone, &fromFile}) {
        ASSERT_NE(result->root, nullptr);
        EXPECT_EQ(TextOf(*result->root), text);
    }
}

void ExpectSameOfAllDoors(const TemporaryFolder& folder, const std::string& bytes)
{
    const TString path = folder.Write("a.xml", bytes);
    const ParseOutcome fromBytes = ParseBytes(bytes);
    ExpectSameOfFile(path, fromBytes);
    ExpectSameOfTrees(path, bytes, fromBytes.errors.empty());
}

std::string Widen(std::u32string_view text, std::size_t size, bool isBigEndian)
{
    std::string bytes;
    for (const char32_t unit : text) {
        for (std::size_t i = 0; i < size; ++i)
            bytes += static_cast<char>(unit >> 8 * (isBigEndian ? size - 1 - i : i) & 0xFF);
    }
    return bytes;
}

ParseOutcome OfText(const std::string& text)
{
    return {{"<a>", "'" + text + "'", "</>"}, {}, {}, false};
}

/// The declaration that names IBM037, in it.
const std::string c_ebcdicDeclaration =
    "\x4C\x6F\xA7\x94\x93\x40\xA5\x85\x99\xA2\x89\x96\x95\x7E\x7D\xF1\x4B\xF0\x7D\x40\x85\x95\x83"
    "\x96\x84\x89\x95\x87\x7E\x7D\xC9\xC2\xD4\xF0\xF3\xF7\x7D\x6F\x6E";

} // namespace

TEST(EncodingDoors, ReadEveryByteAlike)
{
    const TemporaryFolder folder;
    for (const char* const encoding : AllEncodings()) {
        for (int byte = 1; byte < 256; byte += byte < 0x7E ? 7 : c_stride) {
            SCOPED_TRACE(std::string(encoding) + " " + std::to_string(byte));
            const std::string text(1, static_cast<char>(byte));
            for (const std::string& rest : {"<a>" + text + "</a>", "<a/>" + text}) {
                const std::string bytes = Declare(encoding) + rest;
                ExpectSameOfFile(folder.Write("a.xml", bytes), ParseBytes(bytes));
            }
            if (HasFailure())
                return;
        }
    }
}

TEST(EncodingDoors, ReadPairsOfBytesAlike)
{
    const TemporaryFolder folder;
    for (const char* const encoding :
         {"Big5", "Big5-HKSCS", "GB2312", "GBK", "GB18030", "EUC-JP", "EUC-KR", "EUC-TW",
          "Shift_JIS", "cp932", "ISO-2022-JP", "HZ", "UTF-7", "CESU-8", "windows-1258"}) {
        for (int first = 0x7E; first < 256; first += 3) {
            for (int second = 0x21 + first % 13; second < 256; second += 13 * c_stride) {
                SCOPED_TRACE(std::string(encoding) + " " + std::to_string(first * 256 + second));
                const std::string text{static_cast<char>(first), static_cast<char>(second)};
                const std::string bytes = Declare(encoding) + "<a>" + text + "</a>";
                ExpectSameOfFile(folder.Write("a.xml", bytes), ParseBytes(bytes));
                if (HasFailure())
                    return;
            }
        }
    }
}

TEST(EncodingDoors, ReadWholeTextsAlikeForTreesToo)
{
    const TemporaryFolder folder;
    for (const char* const encoding : AllEncodings()) {
        SCOPED_TRACE(encoding);
        std::string good = "<a>x";
        for (int byte = 0x80; byte < 256; ++byte) {
            const std::string text(1, static_cast<char>(byte));
            if (ParseBytes(Declare(encoding) + "<a>" + text + "</a>").errors.empty())
                good += text;
        }
        ExpectSameOfAllDoors(folder, Declare(encoding) + good + "</a>");
        ExpectSameOfAllDoors(folder, Declare(encoding) + good + "\xFF\xFF</a>");
    }
}

TEST(EncodingDoors, ReadLargerUnitsAlike)
{
    const TemporaryFolder folder;
    for (const std::size_t size : {2U, 4U}) {
        for (const bool isBigEndian : {false, true}) {
            for (const std::u32string_view start :
                 {U"\uFEFF<a>", U"\uFEFF\uFEFF<a>", U"<?xml version='1.0'?><a>", U"<a>",
                  U"<?xml version='1.0' encoding='windows-1252'?><a>", U" \uFEFF<a>",
                  U"<?xml version='1.0' encoding='no-such-name'?><a>"}) {
                for (const char32_t unit : {0x41U, 0xE9U, 0x20ACU, 0xD800U, 0xDC00U, 0xFFFEU,
                                            0xFEFFU, 0x10000U, 0x10FFFFU, 0x110000U, 0U}) {
                    std::u32string text(start);
                    text += unit;
                    const std::string bytes = Widen(text + U"</a>", size, isBigEndian);
                    SCOPED_TRACE(testing::PrintToString(bytes));
                    ExpectSameOfAllDoors(folder, bytes);
                    ExpectSameOfAllDoors(folder, bytes + "x");
                }
            }
        }
    }
}

TEST(EncodingDoors, ReadFilesInChunksAsBytes)
{
    const TemporaryFolder folder;
    // The first chunk must be UTF-8.
    const std::string filler(3000, 'x');
    for (const char* const encoding : AllEncodings()) {
        for (const char* const text :
             {"\x80", "\xE9", "\xC3\xA9", "\x81\x30", "\xA4\xA2", "+AGE-"}) {
            SCOPED_TRACE(std::string(encoding) + " " + testing::PrintToString(text));
            const std::string bytes = Declare(encoding) + "<a>" + filler + text + "</a>";
            FileInputSource chunks(folder.Write("a.xml", bytes));
            const ParseOutcome fromChunks = ParseSource(chunks);
            const ParseOutcome fromBytes = ParseBytes(bytes);
            EXPECT_EQ(WithoutIdentifiers(fromChunks.errors), WithoutIdentifiers(fromBytes.errors));
            EXPECT_EQ(fromChunks.events, fromBytes.events);
        }
    }
}

TEST(EncodingDoors, ReadWhatOneReadAndAnotherNot)
{
    const TemporaryFolder folder;
    const std::pair<std::string, std::string> texts[] = {
        {Declare("ISO-8859-16") + "<a>\xA4</a>", "\xE2\x82\xAC"},
        {Declare("windows-1252") + "<a>\x80</a>", "\xE2\x82\xAC"},
        {Declare("macintosh") + "<a>\xC6</a>", "\xE2\x88\x86"},
        {Declare("Shift_JIS") + "<a>\x81\x91</a>", "\xEF\xBF\xA0"},
        {Declare("UTF-7") + "<a>+AGEAYg-</a>", "ab"},
        {Declare("HZ") + "<a>~{VP~}</a>", "\xE4\xB8\xAD"},
        {Declare("IBM037") + "<a>\xC3\xA9</a>", "\xC3\xA9"},
        {c_ebcdicDeclaration + "\x15\x4C\x81\x6E\x51\x4C\x61\x81\x6E", "\xC3\xA9"},
        {Widen(U"<a>e</a>", 4, true), "e"},
        {Widen(U"<a>e</a>", 2, false), "e"},
        {Widen(U"<?p ?><a>e</a>", 2, true), "e"},
    };
    for (const auto& [bytes, text] : texts) {
        EXPECT_EQ(ParseBytes(bytes), OfText(text)) << bytes;
        EXPECT_EQ(ParseFile(folder.Write("a.xml", bytes)), OfText(text)) << bytes;
        ExpectSameOfAllDoors(folder, bytes);
    }
}

TEST(EncodingDoors, RefuseEbcdicThatDoesNotSayInWhich)
{
    const TemporaryFolder folder;
    const std::string bytes = "\x4C\x6F\xA7\x94\x93\x40\xA5\x85\x99\xA2\x89\x96\x95\x7E\x7D\xF1\x4B"
                              "\xF0\x7D\x6F\x6E\x4C\x81\x61\x6E";
    EXPECT_EQ(ParseBytes(bytes),
              (ParseOutcome{{},
                            {"Fatal Error(1,1): the text is in EBCDIC, and does not say in which "
                             "encoding of it (id: id)"},
                            {},
                            true}));
    ExpectSameOfAllDoors(folder, bytes);
}

TEST(EncodingDoors, RefuseEncodingsInWhichSomethingMayGetLost)
{
    for (const std::string encoding : {"SCSU", "BOCU-1", "IMAP-mailbox-name", "LMBCS-1"}) {
        for (const char* const space : {" ", "\n"}) {
            const std::string bytes = std::string("<?xml") + space + "version='1.0' encoding='" +
                                      encoding + "'?><a>e</a>";
            EXPECT_THAT(ParseBytes(bytes).errors,
                        ElementsAre(HasSubstr("unable to create converter for '")));
        }
    }
}

TEST(EncodingDoors, TellWhereAByteMeansNothing)
{
    EXPECT_THAT(ParseBytes(Declare("windows-1252") + "\n<a>\n\xE9\x81</a>").errors,
                ElementsAre("Fatal Error(3,2): bytes that are no character in 'windows-1252' "
                            "encoding (id: id)"));
    EXPECT_THAT(ParseBytes(Declare("US-ASCII") + "\n<a>\nab\xE9</a>").errors,
                ElementsAre("Fatal Error(3,3): bytes that are no character in 'US-ASCII' encoding "
                            "(id: id)"));
    EXPECT_THAT(ParseBytes(Declare("US-ASCII") + "\xE9").errors,
                ElementsAre("Fatal Error(1,42): bytes that are no character in 'US-ASCII' encoding "
                            "(id: id)"));
    EXPECT_THAT(ParseBytes(Widen(U"\uFEFF<a>\n\xE9\xD800</a>", 2, false)).errors,
                ElementsAre("Fatal Error(2,2): bytes that are no character in 'UTF-16LE' encoding "
                            "(id: id)"));
    const auto document =
        DOMParser().ParseXmlBytes({0xFF, 0xFE, '<', 0, 'a', 0, '/', 0, '>', 0, 'x'});
    ASSERT_THAT(document->GetErrorDiagnostics(), SizeIs(1));
    const XMLDiagnostic error = document->GetErrorDiagnostics().front();
    EXPECT_EQ(error.GetText(), u"incomplete character at the end of the document");
    EXPECT_EQ(error.GetColumn(), 5);
    EXPECT_FALSE(error.IsInvalidUtf8());
}

TEST(EncodingDoors, TellOfSchemasThatCannotBeDecoded)
{
    const std::pair<std::string, std::string> schemas[] = {
        {Declare("windows-1253") + "\n<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>\xD2",
         "bytes that are no character in 'windows-1253' encoding"},
        {Declare("no-such-name") + "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'/>",
         "unable to create converter for 'NO-SUCH-NAME' encoding"},
    };
    for (const auto& [bytes, message] : schemas) {
        Utf8InputSource document("<a/>"s, u"id", false);
        const auto parser = XercesXMLParser::Create(document, std::make_shared<RecordingSink>());
        BinaryInputSource schema(ToBytes(bytes), u"schema", false);
        parser->LoadXSDSource(schema);
        EXPECT_THAT(ToUtf8(parser->GetErrors()), testing::Contains(HasSubstr(message)));
    }
}

TEST(EncodingDoors, RefuseSchemasThatHoldNoValidText)
{
    const std::string start = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                              "<!--";
    const std::string end = "--><xs:element name='a'/></xs:schema>";
    const auto load = [&](const auto& text) {
        Utf8InputSource document("<a/>"s, u"id", false);
        const auto parser = XercesXMLParser::Create(document, std::make_shared<RecordingSink>());
        parser->LoadXSDString(text, u"schema");
        return ToUtf8(parser->GetErrors());
    };
    EXPECT_THAT(load(start + "\xC3\xA9" + end), IsEmpty());
    EXPECT_THAT(load(TString::fromUtf8(start) + u"\u00E9" + TString::fromUtf8(end)), IsEmpty());
    const std::string bad = start + "\xE9" + end;
    const auto names = [](const char* text) { return testing::Contains(HasSubstr(text)); };
    EXPECT_THAT(load(bad), names("(1,60): invalid byte"));
    EXPECT_EQ(load(bad.c_str()), load(bad));
    EXPECT_EQ(load(std::string_view(bad)), load(bad));
    const TString half = TString::fromUtf8(start) + TString(u"\xD800") + TString::fromUtf8(end);
    EXPECT_THAT(load(half), names("(1,60): irregular bytes"));
}

TEST(EncodingDoors, LoseNothingInAShift)
{
    const TemporaryFolder folder;
    // Half of a character, and bits of none, in the shift that the end leaves open.
    const std::pair<std::string, std::string> cut[] = {
        {"UTF-7", "+AG"},         {"UTF-7", "+AGF"},          {"UTF-7", "+A"}, {"UTF-7", "+"},
        {"ISO-2022-JP", "\x1B$"}, {"ISO-2022-JP", "\x1B$B$"}, {"HZ", "~"},     {"HZ", "~{V"},
    };
    for (const auto& [encoding, end] : cut) {
        SCOPED_TRACE(encoding + end);
        const std::string bytes = Declare(encoding) + "<a/>" + end;
        EXPECT_THAT(ParseBytes(bytes).errors,
                    ElementsAre(HasSubstr("incomplete character at the end of the document")));
        ExpectSameOfAllDoors(folder, bytes);
    }
    for (const std::string text : {"x+A-x", "x+AGEA-x", "x+!x", "x+2D0-x"})
        EXPECT_THAT(ParseBytes(Declare("UTF-7") + "<a>" + text + "</a>").errors,
                    ElementsAre(HasSubstr(",43): bytes that are no character in 'UTF-7' encoding")))
            << text;
    // A shift that nothing follows means no character.
    EXPECT_THAT(ParseBytes(Declare("ISO-2022-JP") + "<a/>\x1B$B").errors, IsEmpty());
}

TEST(EncodingDoors, GoByTheByteOrderMarkWhateverIsDeclared)
{
    const TemporaryFolder folder;
    const std::string mark = "\xEF\xBB\xBF";
    for (const char* const encoding :
         {"windows-1253", "UTF-16", "IBM037", "Shift_JIS", "no-such-name"}) {
        for (const char* const space : {" ", "\n"}) {
            const std::string start =
                mark + "<?xml" + space + "version='1.0' encoding='" + encoding + "'?><a>";
            const std::string good = start + "\xD2\x90</a>";
            EXPECT_EQ(ParseBytes(good), OfText("\xD2\x90")) << encoding;
            ExpectSameOfAllDoors(folder, good);
            EXPECT_TRUE(ParseBytes(start + "\xE1</a>").fatal) << encoding;
            ExpectSameOfAllDoors(folder, start + "\xE1</a>");
        }
    }
    // The units that the declaration is written in overrule it.
    for (const std::size_t size : {2U, 4U}) {
        const std::string bytes =
            Widen(U"<?xml version='1.0' encoding='windows-1253'?><a>\u0490</a>", size, true);
        EXPECT_EQ(ParseBytes(bytes), OfText("\xD2\x90"));
        ExpectSameOfAllDoors(folder, bytes);
    }
}

TEST(EncodingDoors, TakeOneByteOrderMarkWhereTheDocumentBegins)
{
    const TemporaryFolder folder;
    const std::string mark = "\xEF\xBB\xBF";
    const auto expect = [&](const std::string& bytes, bool isGood) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        const TString text = TString::fromUtf8(bytes);
        const TString path = folder.Write("a.xml", bytes);
        EXPECT_EQ(ParseBytes(bytes).errors.empty(), isGood);
        EXPECT_EQ(ParseUtf8(bytes).errors.empty(), isGood);
        EXPECT_EQ(!DOMParser().ParseXmlString(bytes, u"id")->HasErrors(), isGood);
        EXPECT_EQ(!DOMParser().ParseXmlString(text, u"id")->HasErrors(), isGood);
        EXPECT_EQ(!DOMParser().ParseXmlFile(path)->HasErrors(), isGood);
        EXPECT_EQ(StandaloneDOMParser().ParseXmlString(bytes, u"id").errors.empty(), isGood);
        EXPECT_EQ(StandaloneDOMParser().ParseXmlString(text, u"id").errors.empty(), isGood);
        EXPECT_EQ(StandaloneDOMParser().ParseXmlFile(path).errors.empty(), isGood);
        FileInputSource chunks(path);
        EXPECT_EQ(ParseSource(chunks).errors.empty(), isGood);
    };
    expect(mark + "<a>e</a>", true);
    expect(mark + "<?xml version='1.0'?><a>e</a>", true);
    for (const std::string& bytes :
         {mark + mark + "<a>e</a>", "<?xml version='1.0'?>" + mark + "<a>e</a>",
          "<!-- c -->" + mark + "<a>e</a>", mark + "\n" + mark + "<a>e</a>",
          mark + " " + mark + "<a>e</a>", "<a>e</a>" + mark, "<!DOCTYPE a>" + mark + "<a>e</a>"})
        expect(bytes, false);
    for (const std::size_t size : {2U, 4U}) {
        const std::string two = Widen(U"\uFEFF\uFEFF<a>e</a>", size, true);
        EXPECT_TRUE(ParseBytes(two).fatal);
        ExpectSameOfAllDoors(folder, two);
    }
    // Behind white space only where that is skipped.
    const std::string behind = " \n" + mark + "<a>e</a>";
    EXPECT_TRUE(ParseBytes(behind).fatal);
    EXPECT_TRUE(ParseUtf8(behind).fatal);
    EXPECT_FALSE(DOMParser().ParseXmlString(behind, u"id")->HasErrors());
    EXPECT_THAT(StandaloneDOMParser().ParseXmlString(behind, u"id").errors, IsEmpty());
    EXPECT_EQ(ParseFile(folder.Write("a.xml", behind)), OfText("e"));
    // In text it is a character like any other.
    EXPECT_EQ(ParseBytes("<a>" + mark + "</a>"), OfText(mark));
    EXPECT_EQ(ParseFile(folder.Write("a.xml", "<a>" + mark + "</a>")), OfText(mark));
}

TEST(EncodingDoors, TakeOneByteOrderMarkOffASchema)
{
    const TemporaryFolder folder;
    const std::string mark = "\xEF\xBB\xBF";
    const std::string schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'/>";
    for (const std::size_t marks : {0U, 1U, 2U}) {
        Utf8InputSource document("<a/>"s, u"id", false);
        const auto parser = XercesXMLParser::Create(document, std::make_shared<RecordingSink>());
        parser->LoadXSDFile(folder.Write("a.xsd", Repeat(mark, marks) + schema));
        EXPECT_EQ(parser->HasErrors(), marks == 2);
    }
}
