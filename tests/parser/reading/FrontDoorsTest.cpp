// Whatever form a document comes in, bytes or code units that are no characters are refused, and
// with the words and at the place by which they are refused as bytes.

#include "support/RecordingSink.h"
#include "support/Repeat.h"
#include "support/TemporaryFile.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <kesplatform/CorvinaException.h>
#include <kesplatform/TFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <ostream>

namespace {

using testing::IsEmpty;
using testing::Not;

struct Finding
{
    XMLDiagnostic::Kind kind;
    std::string text;
    int line;
    int column;

    bool operator==(const Finding&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Finding& finding)
    {
        return out << finding.line << "," << finding.column << ": " << finding.text;
    }
};

using Findings = std::vector<Finding>;

Findings Describe(const std::vector<XMLDiagnostic>& diagnostics)
{
    Findings findings;
    for (const XMLDiagnostic& diagnostic : diagnostics)
        findings.push_back({diagnostic.GetKind(), diagnostic.GetText().toStdString(),
                            diagnostic.GetLine(), diagnostic.GetColumn()});
    return findings;
}

Findings Describe(const std::unique_ptr<DOM>& document)
{
    return Describe(document->GetErrorDiagnostics());
}

Findings Describe(const StandaloneParseResult& result)
{
    return Describe(result.diagnostics);
}

/// What all that read a source find in it, one after the other.
std::vector<Findings> ReadSource(InputSource& source)
{
    std::vector<Findings> all;
    all.push_back(Describe(DOMParser().ParseXmlInputSource(source, false)));
    source.ResetToStart();
    all.push_back(Describe(StandaloneDOMParser().ParseXmlInputSource(source, false)));
    source.ResetToStart();
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    parser->Parse();
    all.push_back(Describe(parser->GetErrorDiagnostics()));
    return all;
}

std::vector<unsigned char> ToBytes(const std::string& bytes)
{
    return {bytes.begin(), bytes.end()};
}

Findings FindByBytes(const std::string& bytes)
{
    return Describe(DOMParser().ParseXmlBytes(ToBytes(bytes)));
}

void ExpectOfByteDoors(const std::string& bytes, const Findings& expected)
{
    const std::vector<unsigned char> vector = ToBytes(bytes);
    EXPECT_EQ(Describe(DOMParser().ParseXmlBytes(vector)), expected);
    EXPECT_EQ(Describe(StandaloneDOMParser().ParseXmlBytes(vector)), expected);
    BinaryInputSource binary(vector, TString(), false);
    for (const Findings& findings : ReadSource(binary))
        EXPECT_EQ(findings, expected);
}

void ExpectOfUtf8Doors(const std::string& bytes, const Findings& expected)
{
    EXPECT_EQ(Describe(DOMParser().ParseXmlString(bytes, TString())), expected);
    EXPECT_EQ(Describe(DOMParser().ParseXmlString(std::string(bytes), TString())), expected);
    EXPECT_EQ(Describe(StandaloneDOMParser().ParseXmlString(bytes, TString())), expected);
    if (bytes.find('\0') == std::string::npos) {
        EXPECT_EQ(Describe(DOMParser().ParseXmlString(bytes.c_str(), TString())), expected);
        EXPECT_EQ(Describe(StandaloneDOMParser().ParseXmlString(bytes.c_str(), TString())),
                  expected);
    }
    // Both skip white space at the start.
    EXPECT_EQ(Describe(StandaloneDOMParser().ParseXmlString(" \n" + bytes, TString())), expected);
    Utf8InputSource utf8(bytes, TString(), false);
    for (const Findings& findings : ReadSource(utf8))
        EXPECT_EQ(findings, expected);
}

void ExpectOfTextDoors(const TString& text, const Findings& expected)
{
    EXPECT_EQ(Describe(DOMParser().ParseXmlString(text, TString())), expected);
    EXPECT_EQ(Describe(DOMParser().ParseXmlString(TString(text), TString())), expected);
    EXPECT_EQ(Describe(StandaloneDOMParser().ParseXmlString(text, TString())), expected);
    EXPECT_EQ(Describe(StandaloneDOMParser().ParseXmlString(u" \n" + text, TString())), expected);
    StringInputSource source(text, TString(), false);
    for (const Findings& findings : ReadSource(source))
        EXPECT_EQ(findings, expected);
}

/// Files that are read whole are refused before a parse, by the offset of the byte. Those read in
/// chunks are when the first chunk shows it.
void ExpectOfFileDoors(const TemporaryFolder& folder, const std::string& bytes,
                       const Findings& expected)
{
    const TString path = folder.Write("a.xml", bytes);
    EXPECT_THAT(DOMParser().ParseXmlFile(path)->GetErrors(), Not(IsEmpty()));
    EXPECT_THROW(StandaloneDOMParser().ParseXmlFile(path), TIO::DecodingException);
    FileInputSource chunks(path);
    try {
        for (const Findings& findings : ReadSource(chunks))
            EXPECT_EQ(findings, expected);
    } catch (const CorvinaException&) {
    }
}

/// With comments, instructions and text, some of it beyond ASCII, and no XML declaration.
const std::string c_start = "<!DOCTYPE a [<!ATTLIST b z CDATA 'def'>]>\n<!-- \xC3\xA9 -->";
const std::string c_rest = "<?pi \xE2\x82\xAC?><a x='\xC3\xA9' :y=\"&lt;\">t\xF0\x9F\x98\x80\n<b/>"
                           "<![CDATA[<\xC3\xA9>]]>&#x20AC;</a>\n<!-- \xC3\xA9 -->\n";

bool IsBoundary(const std::string& text, std::size_t at)
{
    return at == text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80;
}

/// The places where an invalid piece is put: all of a small document, the ends of the pieces in
/// which documents are read, and what lies around them.
std::vector<std::pair<std::string, std::string>> Places()
{
    std::vector<std::pair<std::string, std::string>> places;
    const std::string small = c_start + c_rest;
    for (std::size_t at = 0; at <= small.size(); ++at) {
        if (IsBoundary(small, at))
            places.emplace_back(small.substr(0, at), small.substr(at));
    }
    for (const std::size_t end : {2048U, 16384U, 49152U}) {
        for (std::size_t at = end - 2; at <= end; ++at)
            places.emplace_back("<a>" + Repeat("x", at - 3), Repeat("y", 20000) + "</a>");
    }
    return places;
}

} // namespace

TEST(FrontDoors, RefuseBytesThatAreNoUtf8AsTheByteDoorDoes)
{
    const TemporaryFolder folder;
    int count = 0;
    for (const char* const bad : {"\xFF", "\x80", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                  "\xF5\x80\x80\x80", "\xF8\x88\x80\x80\x80", "\xE2\x82"}) {
        for (const auto& [before, after] : Places()) {
            SCOPED_TRACE(testing::PrintToString(bad) + " at " + std::to_string(before.size()));
            const std::string spoilt = before + bad + after;
            const Findings expected = FindByBytes(spoilt);
            ASSERT_THAT(expected, Not(IsEmpty()));
            ExpectOfByteDoors(spoilt, expected);
            ExpectOfUtf8Doors(spoilt, expected);
            if (++count % 16 == 0)
                ExpectOfFileDoors(folder, spoilt, expected);
            if (HasFailure())
                return;
        }
    }
}

TEST(FrontDoors, RefuseHalvesOfPairsAsTheByteDoorDoes)
{
    const std::pair<std::u16string, std::string> halves[] = {
        {u"\xD800", "\xED\xA0\x80"},
        {u"\xDBFF", "\xED\xAF\xBF"},
        {u"\xDC00", "\xED\xB0\x80"},
        {u"\xDFFF", "\xED\xBF\xBF"},
        {u"\xDE00\xD83D", "\xED\xB8\x80\xED\xA0\xBD"},
        {u"\xD83D\xD83D\xDE00", "\xED\xA0\xBD\xF0\x9F\x98\x80"},
    };
    for (const auto& [units, bytes] : halves) {
        for (const auto& [before, after] : Places()) {
            SCOPED_TRACE(testing::PrintToString(bytes) + " at " + std::to_string(before.size()));
            const TString text =
                TString::fromUtf8(before) + TString(units) + TString::fromUtf8(after);
            const Findings expected = FindByBytes(before + bytes + after);
            ASSERT_THAT(expected, Not(IsEmpty()));
            ExpectOfTextDoors(text, expected);
            if (HasFailure())
                return;
        }
    }
}

TEST(FrontDoors, RefuseWhatIsNoCharacterOfXmlAsTheByteDoorDoes)
{
    using namespace std::string_literals;
    for (const std::string& bad : {"\0"s, "\x01"s, "\xEF\xBF\xBE"s, "\xEF\xBF\xBF"s}) {
        for (const auto& [before, after] : Places()) {
            SCOPED_TRACE(testing::PrintToString(bad) + " at " + std::to_string(before.size()));
            const std::string spoilt = before + bad + after;
            const Findings expected = FindByBytes(spoilt);
            // A null character as the very first is taken for a unit of two or four bytes.
            if (before.size() < 4 && bad[0] == '\0')
                continue;
            ASSERT_THAT(expected, Not(IsEmpty()));
            ExpectOfByteDoors(spoilt, expected);
            ExpectOfUtf8Doors(spoilt, expected);
            ExpectOfTextDoors(TString::fromUtf8(spoilt), expected);
            if (HasFailure())
                return;
        }
    }
}

TEST(FrontDoors, TakeWhatIsValid)
{
    const std::string good = c_start + c_rest;
    ExpectOfByteDoors(good, {});
    ExpectOfUtf8Doors(good, {});
    ExpectOfTextDoors(TString::fromUtf8(good), {});
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", good);
    EXPECT_THAT(DOMParser().ParseXmlFile(path)->GetErrors(), IsEmpty());
    EXPECT_THAT(StandaloneDOMParser().ParseXmlFile(path).errors, IsEmpty());
    FileInputSource chunks(path);
    for (const Findings& findings : ReadSource(chunks))
        EXPECT_THAT(findings, IsEmpty());
}
