#include "bytes/XercesInputSource.h"
#include "support/ParseOutcome.h"
#include "support/RecordingMetrics.h"
#include "support/TemporaryFile.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/InputSourceUtils.h>

#include <QStringEncoder>

#include <xercesc/util/BinInputStream.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

enum class ByteOrderMark
{
    Without,
    With
};

/// The characters of the Latin-1 range, which all encodings under test have.
TString LatinText()
{
    TString text = u"x";
    for (char16_t unit = 0xA1; unit <= 0xFF; ++unit)
        text += unit;
    return text;
}

std::string DocumentIn(const std::string& declared, const std::string& text)
{
    return "<?xml version='1.0' encoding='" + declared + "'?><a b='" + text + "'>" + text + "</a>";
}

std::string Utf16(const std::string& utf8, QStringConverter::Encoding encoding,
                  ByteOrderMark byteOrderMark)
{
    QStringEncoder encoder(encoding, byteOrderMark == ByteOrderMark::With
                                         ? QStringConverter::Flag::WriteBom
                                         : QStringConverter::Flag::Default);
    const QByteArray bytes = encoder.encode(QString::fromStdString(utf8));
    return bytes.toStdString();
}

ParseOutcome ParseBytes(const std::string& bytes)
{
    BinaryInputSource source(std::vector<unsigned char>(bytes.begin(), bytes.end()), u"id", false);
    return ParseSource(source);
}

ParseOutcome ParseFileThroughMemory(const std::string& bytes)
{
    const TemporaryFolder folder;
    const auto source =
        InputSourceUtils::InputSourceFromFileName(folder.Write("a.xml", bytes), true);
    return ParseSource(*source);
}

ParseOutcome ParseFileInChunks(const std::string& bytes)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", bytes));
    return ParseSource(source);
}

void ExpectText(const ParseOutcome& outcome, const TString& text)
{
    const std::string utf8 = text.toStdString();
    EXPECT_THAT(outcome.errors, IsEmpty());
    EXPECT_THAT(outcome.events, ElementsAre("<a b=" + utf8 + ">", "'" + utf8 + "'", "</>"));
}

} // namespace

TEST(XercesInputSource, ReadsBytesInTheEncodingThatTheyDeclare)
{
    const TString text = LatinText();
    std::string latin;
    for (const char16_t unit : text.view())
        latin += static_cast<char>(unit);
    for (const char* const name : {"ISO-8859-1", "iso-8859-1", "windows-1252"}) {
        ExpectText(ParseBytes(DocumentIn(name, latin)), text);
        ExpectText(ParseFileThroughMemory(DocumentIn(name, latin)), text);
    }
    ExpectText(ParseBytes(DocumentIn("utf-8", text.toStdString())), text);
    ExpectText(ParseFileThroughMemory(DocumentIn("utf-8", text.toStdString())), text);
    ExpectText(ParseFileInChunks(DocumentIn("utf-8", text.toStdString())), text);
}

TEST(XercesInputSource, ReadsWindows1252BeyondLatin1)
{
    ExpectText(ParseBytes(DocumentIn("windows-1252", "\x80\x93")), u"\u20AC\u201C");
    ExpectText(ParseFileThroughMemory(DocumentIn("windows-1252", "\x80\x93")), u"\u20AC\u201C");
}

TEST(XercesInputSource, ReadsUtf16ByItsByteOrderMark)
{
    const TString text = LatinText() + u"\u20AC\U0001F600";
    for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        for (const char* const declared : {"utf-16", "UTF-16"}) {
            const std::string bytes =
                Utf16(DocumentIn(declared, text.toStdString()), encoding, ByteOrderMark::With);
            ExpectText(ParseBytes(bytes), text);
            ExpectText(ParseFileThroughMemory(bytes), text);
        }
    }
}

TEST(XercesInputSource, ReadsBytesOfUtf16ByTheirPattern)
{
    const TString text = LatinText();
    for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        ExpectText(ParseBytes(Utf16(DocumentIn("utf-16", text.toStdString()), encoding,
                                    ByteOrderMark::Without)),
                   text);
    }
}

TEST(XercesInputSource, LeavesBytesOfUtf16AloneWhateverLooksLikeAColonThere)
{
    // In big-endian order this holds the bytes of blank, colon, name and equals sign.
    const TString text = u" \u3A62\u3D3E";
    const std::string bytes = Utf16("<a b='x'>" + text.toStdString() + "<c/></a>",
                                    QStringConverter::Utf16BE, ByteOrderMark::With);
    EXPECT_THAT(ParseBytes(bytes).events,
                ElementsAre("<a b=x>", "'" + text.toStdString() + "'", "<c>", "</>", "</>"));
}

TEST(XercesInputSource, ReadsTextAsWhatItIsWhateverItDeclares)
{
    const TString text = LatinText() + u"\u20AC\U0001F600";
    const std::string utf8 = text.toStdString();
    for (const char* const name : {"utf-8", "ISO-8859-1", "windows-1252", "UTF-16", "US-ASCII",
                                   "IBM037", "ISO-10646-UCS-4", "no-such-encoding"}) {
        for (const char* const byteOrderMark : {"", "\xEF\xBB\xBF"}) {
            ExpectText(ParseUtf8(byteOrderMark + DocumentIn(name, utf8)), text);
            StringInputSource source(TString::fromStdString(byteOrderMark + DocumentIn(name, utf8)),
                                     u"id", true);
            ExpectText(ParseSource(source), text);
        }
    }
}

TEST(XercesInputSource, IgnoresAByteOrderMarkAndCountsColumnsBehindIt)
{
    for (const char* const byteOrderMark : {"", "\xEF\xBB\xBF"}) {
        EXPECT_THAT(ParseUtf8(std::string(byteOrderMark) + "<a></b>").errors,
                    ElementsAre("Fatal Error(1,6): expected end of tag 'a' (id: id)"));
    }
    EXPECT_THAT(ParseUtf8("\xEF\xBB\xBF\xEF\xBB\xBF<a/>").errors,
                ElementsAre(HasSubstr("invalid document structure")));
    EXPECT_THAT(ParseUtf8("<a>\xEF\xBB\xBF</a>").events,
                ElementsAre("<a>", "'\xEF\xBB\xBF'", "</>"));
}

TEST(XercesInputSource, RefusesSequencesBeyondTheLastCharacterWhereverTheyStand)
{
    const std::string bad = "\xF7\x80\x80\x80";
    for (const std::size_t before : {0U, 1U, 20U, 40U, 1000U, 60000U}) {
        for (const char* const start : {"", "\xEF\xBB\xBF", "<?xml version='1.0'?>",
                                        "<?xml version='1.0' encoding = \"utf-8\" ?>"}) {
            std::string text = start;
            text.append("<a>").append(before, 'x').append(bad).append("</a>");
            EXPECT_TRUE(ParseUtf8(text).fatal) << start << before;
            EXPECT_TRUE(ParseBytes(text).fatal) << start << before;
        }
    }
}

TEST(XercesInputSource, KnowsTheSameBytesAsLettersOfOtherEncodings)
{
    const std::string document = DocumentIn("ISO-8859-1", "\xF5\xF6\xF7");
    EXPECT_THAT(ParseBytes(document).events,
                ElementsAre("<a b=\xC3\xB5\xC3\xB6\xC3\xB7>", "'\xC3\xB5\xC3\xB6\xC3\xB7'", "</>"));
    // A byte-order mark counts before the declaration.
    EXPECT_TRUE(ParseBytes("\xEF\xBB\xBF" + document).fatal);
    const std::string utf16 =
        Utf16("<a>\xC3\xB5</a>", QStringConverter::Utf16LE, ByteOrderMark::With);
    EXPECT_THAT(ParseBytes(utf16).events, ElementsAre("<a>", "'\xC3\xB5'", "</>"));
}

TEST(XercesInputSource, CannotReadBytesInAnUnknownEncoding)
{
    EXPECT_THAT(ParseBytes(DocumentIn("no-such-encoding", "x")).errors,
                ElementsAre("Fatal Error(1,50): unable to create converter for "
                            "'NO-SUCH-ENCODING' encoding (id: id)"));
}

TEST(XercesInputSource, BeginsBehindSkippedWhitespaceWhateverWasReadBefore)
{
    Utf8InputSource source(" \n <?xml version='1.0'?><a :b='1'/>", u"id", true);
    std::string bytes;
    source.GetBytes(bytes, 5);
    EXPECT_THAT(ParseSource(source).events, ElementsAre("<a :b=1>", "</>"));
    EXPECT_TRUE(source.GetBytes(bytes, 2));
    EXPECT_EQ(bytes, " v");

    Utf8InputSource unskipped(" \n <?xml version='1.0'?><a/>", u"id", false);
    EXPECT_TRUE(ParseSource(unskipped).fatal);
}

TEST(XercesInputSource, OfAFileHoldsTheRestOfItBehindWhitespace)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", " \r\n<?xml version='1.0'?><a>x\r\ny</a>"));
    EXPECT_THAT(ParseSource(source).events, ElementsAre("<a>", "'x\ny'", "</>"));
    EXPECT_TRUE(ParseSource(source).fatal);
    source.ResetToStart();
    EXPECT_FALSE(ParseSource(source).fatal);
}

TEST(XercesInputSource, OfAFileHoldsSeveralMebibytes)
{
    std::string text(3 * 1024 * 1024 + 17, 'x');
    for (std::size_t i = 0; i < text.size(); i += 97)
        text[i] = static_cast<char>('a' + i % 26);
    EXPECT_THAT(ParseFileInChunks("<a>" + text + "</a>").events,
                ElementsAre("<a>", "'" + text + "'", "</>"));
}

/// A source that shows the text that it holds.
class OpenSource : public Utf8InputSource
{
public:
    using Utf8InputSource::Utf8InputSource;
    /// The bytes themselves: these are not const.
    char& At(std::size_t index) const { return const_cast<char&>((*GetData())[index]); }
    long GetOwners() const { return GetData().use_count(); }
};

std::string ReadBuffer(const XercesInputSource& buffer)
{
    const std::unique_ptr<xercesc::BinInputStream> stream(buffer().makeStream());
    std::string bytes(1000, '\0');
    bytes.resize(stream->readBytes(reinterpret_cast<XMLByte*>(bytes.data()), bytes.size()));
    return bytes;
}

TEST(XercesInputSource, ReferencesTheTextOfItsSource)
{
    // Xerces is initialised by the first parser.
    ParseUtf8("<a/>");
    const std::string text = "<a b='c'>a text that is too long for the string itself</a>";
    for (const ColonProcessingMode mode :
         {ColonProcessingMode::None, ColonProcessingMode::EncodeColonAttributes}) {
        OpenSource source("  " + text, u"the id", true);
        const XercesInputSource first = source.GetXercesInputSource(mode);
        const XercesInputSource second = source.GetXercesInputSource(mode);
        EXPECT_EQ(source.GetOwners(), 3);
        EXPECT_EQ(ReadBuffer(first), text);
        EXPECT_EQ(TString(reinterpret_cast<const char16_t*>(first().getSystemId())), u"the id");
        source.At(3) = 'A';
        for (const XercesInputSource* const buffer : {&first, &second})
            EXPECT_EQ(ReadBuffer(*buffer), "<A" + text.substr(2));
    }
}

TEST(XercesInputSource, EncodesColonAttributesInDocumentsOnly)
{
    ParseUtf8("<a/>");
    const std::string text = "<a :b='c'/>";
    OpenSource source(text, u"id", true);
    const XercesInputSource schema = source.GetXercesInputSource(ColonProcessingMode::None);
    const XercesInputSource document =
        source.GetXercesInputSource(ColonProcessingMode::EncodeColonAttributes);
    EXPECT_EQ(ReadBuffer(schema), text);
    EXPECT_THAT(ReadBuffer(document), HasSubstr(" IllegalColon:b='c'"));
    EXPECT_EQ(source.GetOwners(), 2);
}

TEST(XercesInputSource, ShowsMetricsTheSanitizerOnceForEachDocument)
{
    ParseUtf8("<a/>");
    for (const char* const text : {"<a/>", "<a :b='c'/>"}) {
        OpenSource source(text, u"id", true);
        const RecordingMetrics metrics;
        ReadBuffer(source.GetXercesInputSource(ColonProcessingMode::None));
        EXPECT_THAT(metrics.GetLines(), IsEmpty());
        const XercesInputSource document =
            source.GetXercesInputSource(ColonProcessingMode::EncodeColonAttributes);
        const auto lines = ElementsAre("+XercesColonSanitizer", "-XercesColonSanitizer");
        EXPECT_THAT(metrics.GetLines(), lines) << "before anybody knows whether it is needed";
        ReadBuffer(document);
        EXPECT_THAT(metrics.GetLines(), lines);
    }
}

TEST(XercesInputSource, LeavesATextWithoutRootTagToTheScanner)
{
    for (const char* const text :
         {" :a='1'/>", "x :a='1'>", "<!x :a='1'>", "<!-- --> :a='1'/>", "<? :a='1'?>",
          "</r :a='1'>", "< :a='1'", "<!DOCTYPE r [ :a='1'> ]> :b='1'/>"}) {
        EXPECT_TRUE(ParseUtf8(text).fatal) << text;
        EXPECT_TRUE(ParseBytes(text).fatal) << text;
    }
}

TEST(XercesInputSource, MayOutliveItsSource)
{
    // The parser keeps no buffer between parses: the source may end before the parser.
    const auto sink = std::make_shared<RecordingSink>();
    auto source = std::make_unique<StringInputSource>(u"<a>x<b/></a>", u"id", false);
    const auto parser = XercesXMLParser::Create(*source, sink);
    sink->stopAfter = 1;
    parser->Parse();
    source = std::make_unique<StringInputSource>(u"<c/>", u"id", false);
    sink->stopAfter = 0;
    parser->Reload(*source, sink);
    parser->Parse();
    EXPECT_THAT(sink->events, ElementsAre("<a>", "<c>", "</>"));
    EXPECT_FALSE(parser->HasErrors());
}
