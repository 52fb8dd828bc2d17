#include <kesplatform/Unicode.h>

#include "support/RandomText.h"

#include <gtest/gtest.h>

#include <QString>

#include <string>

namespace {

std::string Normalize(std::string text)
{
    const std::size_t length = Unicode::normalizeLineEndings(text.data(), text.size());
    EXPECT_LE(length, text.size());
    text.resize(length);
    return text;
}

} // namespace

TEST(Unicode, TurnsEveryLineEndingIntoLineFeed)
{
    EXPECT_EQ("a\nb\nc\nd", Normalize("a\r\nb\rc\nd"));
    EXPECT_EQ("\n\n", Normalize("\r\r"));
    EXPECT_EQ("\n\n", Normalize("\n\r"));
    EXPECT_EQ("\n\n", Normalize("\r\r\n"));
    EXPECT_EQ("\n", Normalize("\r\n"));
    EXPECT_EQ("\n", Normalize("\r"));
}

TEST(Unicode, LeavesOtherTextsAlone)
{
    EXPECT_EQ("", Normalize(""));
    EXPECT_EQ(0U, Unicode::normalizeLineEndings(nullptr, 0));
    EXPECT_EQ("a\n\nb", Normalize("a\n\nb"));
    EXPECT_EQ(std::string("a\0b", 3), Normalize(std::string("a\0b", 3)));
}

TEST(Unicode, NormalizesLineEndingsLikeTwoReplacements)
{
    RandomText random(1);
    for (int round = 0; round < 2000; ++round) {
        QString text = QString::fromStdU16String(random.Of(u"ab\r\r\n", 30));
        const std::string normalized = Normalize(text.toStdString());
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
        ASSERT_EQ(text.toStdString(), normalized);
    }
}

TEST(Unicode, TouchesNothingBehindTheText)
{
    std::string text = "a\r\n\r";
    EXPECT_EQ(2U, Unicode::normalizeLineEndings(text.data(), 3));
    EXPECT_EQ("a\n", text.substr(0, 2));
    EXPECT_EQ('\r', text[3]);
}
