#include <kesplatform/DetectEncoding.h>

#include "support/RandomText.h"

#include <gtest/gtest.h>

#include <QByteArrayView>
#include <QStringConverter>

#include <string>
#include <string_view>

using namespace std::string_view_literals;

namespace {

int Detect(std::string_view bytes)
{
    return DetectEncoding(bytes.data(), bytes.size());
}

std::string Encode(QStringConverter::Encoding encoding, bool withMark)
{
    QStringEncoder encoder(encoding, withMark ? QStringConverter::Flag::WriteBom
                                              : QStringConverter::Flag::Default);
    const QByteArray bytes = encoder(u"<?xml version='1.0'?><a/>");
    return bytes.toStdString();
}

} // namespace

TEST(DetectEncoding, TakesUtf8AndItsSubsets)
{
    EXPECT_EQ(1, DetectEncoding(nullptr, 0));
    EXPECT_EQ(1, Detect("<a/>"));
    EXPECT_EQ(1, Detect("x"));
    EXPECT_EQ(1, Detect("\xEF\xBB\xBF<a/>"));
    EXPECT_EQ(1, Detect("<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</a>"));
}

TEST(DetectEncoding, TakesASequenceThatTheEndCuts)
{
    const std::string_view sequences[] = {"\xC3\xA9", "\xE2\x82\xAC", "\xED\x9F\xBF",
                                          "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"};
    for (const std::string_view sequence : sequences) {
        for (std::size_t length = 1; length <= sequence.size(); ++length)
            EXPECT_EQ(1, Detect("<a>" + std::string(sequence.substr(0, length))));
    }
}

TEST(DetectEncoding, RefusesWhatCannotBecomeUtf8)
{
    EXPECT_EQ(0, Detect("<a>\xE9</a>"));
    EXPECT_EQ(0, Detect("<a>\x80"));
    EXPECT_EQ(0, Detect("<a>\xC0"));
    EXPECT_EQ(0, Detect("<a>\xFF"));
    EXPECT_EQ(0, Detect("<a>\xF5"));
    EXPECT_EQ(0, Detect("<a>\xE0\x80"));
    EXPECT_EQ(0, Detect("<a>\xED\xA0"));
    EXPECT_EQ(0, Detect("<a>\xF4\x90"));
    EXPECT_EQ(0, Detect("<a>\xF0\x9F\x41"));
    EXPECT_EQ(0, Detect("<a>\xE2\x82 "));
    EXPECT_EQ(0, Detect("\xEF\xBB\xBF<a>\xE9</a>"));
    EXPECT_EQ(0, Detect("\xEF\xBB\xBF\xFF\xFE"));
}

TEST(DetectEncoding, TakesAByteOrderMarkBeforeAPattern)
{
    EXPECT_EQ(2, Detect("\xFF\xFE\0<"sv));
    EXPECT_EQ(3, Detect("\xFE\xFF<\0"sv));
    EXPECT_EQ(1, Detect("\xEF\xBB\xBF\0<"sv));
}

TEST(DetectEncoding, TellsWideEncodingsByByteOrderMarkOrPattern)
{
    for (const bool withMark : {true, false}) {
        EXPECT_EQ(2, Detect(Encode(QStringConverter::Utf16LE, withMark)));
        EXPECT_EQ(3, Detect(Encode(QStringConverter::Utf16BE, withMark)));
        EXPECT_EQ(4, Detect(Encode(QStringConverter::Utf32LE, withMark)));
        EXPECT_EQ(5, Detect(Encode(QStringConverter::Utf32BE, withMark)));
    }
    EXPECT_EQ(2, Detect("<\0"sv));
    EXPECT_EQ(3, Detect("\0<"sv));
    EXPECT_EQ(2, Detect("<\0\0\x4E"sv)) << "a character beyond ASCII follows";
    EXPECT_EQ(3, Detect("\0<\x4E\0"sv));
    EXPECT_EQ(2, Detect("\xFF\xFE"sv));
    EXPECT_EQ(3, Detect("\xFE\xFF"sv));
}

TEST(DetectEncoding, AgreesWithQtOnCompleteTexts)
{
    RandomText random(1);
    for (int round = 0; round < 20000; ++round) {
        // Starts with two letters and ends with one, so that neither pattern nor cut comes in.
        const std::string bytes = "<a" + random.Bytes(40) + ">";
        ASSERT_EQ(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())).isValidUtf8(),
                  Detect(bytes) == 1)
            << testing::PrintToString(bytes);
    }
}
