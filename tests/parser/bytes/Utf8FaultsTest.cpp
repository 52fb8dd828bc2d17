#include "bytes/Utf8Faults.h"

#include "support/ParseOutcome.h"
#include "support/RandomText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QString>

namespace {

/// What follows this text, counted in the text as Qt has decoded it.
ScanPosition LocateBehind(const std::string& utf8)
{
    QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    text.replace("\r\n", "\n").replace('\r', '\n');
    const auto lastLine = static_cast<unsigned long long>(text.size() - text.lastIndexOf('\n'));
    return {static_cast<unsigned long long>(text.count('\n')) + 1, lastLine};
}

void ExpectFaultAt(const std::string& bytes, unsigned long long line, unsigned long long column)
{
    const auto fault = Utf8Faults::FindFirst(bytes);
    ASSERT_TRUE(fault) << testing::PrintToString(bytes);
    EXPECT_EQ(fault->line, line) << testing::PrintToString(bytes);
    EXPECT_EQ(fault->column, column) << testing::PrintToString(bytes);
}

} // namespace

TEST(Utf8Faults, AreWhereTheFirstBrokenSequenceBegins)
{
    ExpectFaultAt("\xFF", 1, 1);
    ExpectFaultAt("<a>\xFF</a>", 1, 4);
    ExpectFaultAt("<a>\xFF\n\xFF</a>", 1, 4);
    ExpectFaultAt("<a>\n\n b\xE9</a>", 3, 3);
    ExpectFaultAt("<a>\xE2\x82</a>", 1, 4);
    ExpectFaultAt("<a>\xC3\xA9\xF0\x9F\x98\x80\xED\xA0\x80</a>", 1, 7);
    ExpectFaultAt("a\r\nb\rc\n\r\n\rd\xFF", 6, 2);
    ExpectFaultAt("a\r\xFF\n", 2, 1);
    EXPECT_FALSE(Utf8Faults::FindFirst(""));
    EXPECT_FALSE(Utf8Faults::FindFirst("\xEF\xBB\xBF<a>\xE2\x82\xAC\xEF\xBF\xBF</a>"));
}

TEST(Utf8Faults, AreCountedBehindAByteOrderMark)
{
    ExpectFaultAt("\xEF\xBB\xBF\xFF", 1, 1);
    ExpectFaultAt("\xEF\xBB\xBF<a>\xFF</a>", 1, 4);
    // In the text it is a character.
    ExpectFaultAt("<a>\xEF\xBB\xBF\xFF</a>", 1, 5);
    ExpectFaultAt("\xEF\xBB", 1, 1);
}

TEST(Utf8Faults, AreCountedInCodeUnitsAndLinesOfAnyText)
{
    RandomText random(1);
    for (int round = 0; round < 2000; ++round) {
        const std::u16string units = random.Of(u"ab\r\r\n\n\u00E9\u20AC\u4E2D", 40);
        std::string text = TString(std::u16string_view(units)).toStdString();
        if (round % 3 == 0)
            text += "\xF0\x9F\x98\x80";
        const ScanPosition expected = LocateBehind(text);
        ExpectFaultAt(text + "\xFFxyz", expected.line, expected.column);
        EXPECT_FALSE(Utf8Faults::FindFirst(text));
    }
}

TEST(Utf8Faults, AreCutWhereTheScannerWaitsForMoreBytesThanThereAre)
{
    const std::pair<std::string, bool> endings[] = {
        {"\xC3", true},
        {"\xC3<", false},
        {"\xE2\x82", true},
        {"\xE2\x82<", false},
        {"\xF0\x9F\x98", true},
        {"\xF0</", true},
        {"\xF0</a", false},
        {"\xF5</a>", true},
        {"\xF7</a> ", false},
        {"\xF8</a", true},
        {"\xF8</a>", false},
        {"\xFB</a>", false},
        {"\xFC</a>", true},
        {"\xFF</a>", true},
        {"\xFF</a> ", false},
        {"\x80", false},
        {"\xBF", false},
        {"\xC3\xA9", false},
        {"\xF0\x9F\x98\x80", false},
    };
    for (const auto& [ending, isCut] : endings) {
        const std::string bytes = "<a>x" + ending;
        const auto fault = Utf8Faults::FindFirst(bytes);
        EXPECT_EQ(fault && fault->isCut, isCut) << testing::PrintToString(ending);
        EXPECT_EQ(Utf8Faults::FindCut(bytes), isCut ? 4 : std::string::npos)
            << testing::PrintToString(ending);
    }
    // Another one may be cut than the first.
    const auto first = Utf8Faults::FindFirst("<a>\xFF</a>      <b>\xC3");
    ASSERT_TRUE(first);
    EXPECT_FALSE(first->isCut);
    EXPECT_EQ(first->column, 4U);
}

TEST(Utf8Faults, NameTheBytesThatTheScannerDoesNotSee)
{
    for (const auto& [byte, name] :
         {std::pair("\xF5", "0xF5"), std::pair("\xF6", "0xF6"), std::pair("\xF7", "0xF7")}) {
        const auto fault = Utf8Faults::FindFirst(byte + std::string("\x80\x80\x80      "));
        ASSERT_TRUE(fault);
        EXPECT_EQ(fault->message.toStdString(),
                  std::string("invalid byte '") + name + "' at position 1 of a 4-byte sequence");
    }
    for (const char* const bytes : {"\xF4\x90\x80\x80      ", "\xF8       ", "\xFF      ", "\x80"})
        EXPECT_TRUE(Utf8Faults::FindFirst(bytes)->message.IsEmpty());
    EXPECT_EQ(Utf8Faults::FindFirst("\xC3")->message,
              u"incomplete character at the end of the document");
}

TEST(Utf8Faults, AreThoseThatTheScannerRefuses)
{
    const auto sink = std::make_shared<RecordingSink>();
    StringInputSource nothing(u"<a/>", u"id", false);
    const auto parser = XercesXMLParser::Create(nothing, sink);
    const unsigned char seconds[] = {0x41, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0};
    const unsigned char others[] = {0x41, 0x80, 0xBF};
    for (int lead = 0x80; lead <= 0xFF; ++lead) {
        for (const unsigned char second : seconds) {
            for (const unsigned char third : others) {
                for (const unsigned char fourth : others) {
                    const std::string sequence = {
                        static_cast<char>(lead), static_cast<char>(second),
                        static_cast<char>(third), static_cast<char>(fourth)};
                    const std::string bytes = "<a>" + sequence + "</a>       ";
                    Utf8InputSource source(bytes, u"id", false);
                    parser->Reload(source, sink);
                    parser->Parse();
                    const bool isRefused =
                        parser->HasErrors() && parser->GetErrors().front().toStdString().find(
                                                   " byte") != std::string::npos;
                    ASSERT_EQ(Utf8Faults::FindFirst(bytes).has_value(), isRefused)
                        << testing::PrintToString(sequence);
                    parser->ClearErrorsAndWarnings();
                }
            }
        }
    }
}
