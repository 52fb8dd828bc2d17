#include <kesplatform/EncodingTable.h>

#include <gtest/gtest.h>

#include <QStringConverter>

#include <algorithm>
#include <string>

using namespace std::string_view_literals;

namespace {

/// How Qt, which has a table of its own, encodes a text.
std::string Encode(const EncodingTable::Scheme& scheme, QStringView text, bool withByteOrderMark)
{
    QStringEncoder encoder(scheme.name.data(), withByteOrderMark ? QStringConverter::Flag::WriteBom
                                                                 : QStringConverter::Flag::Default);
    EXPECT_TRUE(encoder.isValid()) << scheme.name;
    const QByteArray bytes = encoder(text);
    return bytes.toStdString();
}

} // namespace

TEST(EncodingTable, ReadsEveryAsciiCharacterAndNothingElseAsSuch)
{
    for (const EncodingTable::Scheme& scheme : EncodingTable::c_schemes) {
        for (char16_t unit = 1; unit < 0x100; ++unit) {
            const std::string bytes = Encode(scheme, QStringView(&unit, 1), false);
            const char expected = unit < 0x80 ? static_cast<char>(unit) : '\0';
            EXPECT_EQ(scheme.ReadAscii(bytes, 0), expected) << scheme.name << " " << int{unit};
        }
    }
}

TEST(EncodingTable, HoldsWhatQtWrites)
{
    for (const EncodingTable::Scheme& scheme : EncodingTable::c_schemes) {
        SCOPED_TRACE(scheme.name);
        const std::string marked = Encode(scheme, u"<?xml", true);
        EXPECT_TRUE(marked.starts_with(scheme.byteOrderMark));
        ASSERT_NE(EncodingTable::FindByByteOrderMark(marked), nullptr);
        EXPECT_EQ(EncodingTable::FindByByteOrderMark(marked)->encoding, scheme.encoding);
        const std::string bytes = Encode(scheme, u"<?xml", false);
        EXPECT_EQ(bytes, marked.substr(scheme.byteOrderMark.size()));
        EXPECT_EQ(bytes.size(), 5 * scheme.unitSize);
        EXPECT_EQ(EncodingTable::FindByByteOrderMark(bytes), nullptr);
        EXPECT_EQ(scheme.encoding, DetectEncoding(marked.data(), marked.size()));
    }
    EXPECT_EQ(EncodingTable::c_utf8.name, "UTF-8");
}

TEST(EncodingTable, TellsByByteOrderMarkWhatBeginsWithAnother)
{
    EXPECT_EQ(EncodingTable::FindByByteOrderMark("\xFF\xFE\0\0"sv)->encoding, Utf32LE);
    EXPECT_EQ(EncodingTable::FindByByteOrderMark("\xFF\xFE\0"sv)->encoding, Utf16LE);
    EXPECT_EQ(EncodingTable::FindByByteOrderMark("\xFF\xFE<\0"sv)->encoding, Utf16LE);
    for (const std::string_view bytes : {""sv, "\xFF"sv, "\xEF\xBB"sv, "\0\0\xFE"sv, "<a/>"sv})
        EXPECT_EQ(EncodingTable::FindByByteOrderMark(bytes), nullptr);
}

TEST(EncodingTable, KnowsUnitsByTheirAsciiCharacters)
{
    for (const EncodingTable::Scheme& scheme : EncodingTable::c_schemes) {
        const std::string bytes = Encode(scheme, u"<?xml", false);
        for (const EncodingTable::Scheme& other : EncodingTable::c_schemes) {
            EXPECT_EQ(other.IsBeginOf(bytes, "<?xml"), &other == &scheme)
                << scheme.name << " " << other.name;
        }
        EXPECT_TRUE(scheme.IsBeginOf(bytes, ""));
        EXPECT_FALSE(scheme.IsBeginOf(bytes, "<?xmlx"));
        EXPECT_FALSE(scheme.IsBeginOf(bytes.substr(0, bytes.size() - 1), "<?xml"));
    }
}

TEST(EncodingTable, ReadsUnits)
{
    for (const EncodingTable::Scheme& scheme : EncodingTable::c_schemes) {
        SCOPED_TRACE(scheme.name);
        const std::string bytes = Encode(scheme, u"a~", false);
        EXPECT_EQ(scheme.ReadAscii(bytes, 0), 'a');
        EXPECT_EQ(scheme.ReadAscii(bytes, scheme.unitSize), '~');
        EXPECT_EQ(scheme.ReadAscii(bytes, 2 * scheme.unitSize), '\0');
        EXPECT_EQ(scheme.ReadAscii(bytes, 100), '\0');
        EXPECT_EQ(scheme.ReadUnit(bytes, scheme.unitSize), std::uint32_t('~'));
        EXPECT_EQ(scheme.ReadAscii(Encode(scheme, u"\u0080", false), 0), '\0');
        if (scheme.unitSize > 1) {
            EXPECT_EQ(scheme.ReadUnit(Encode(scheme, u"\u4E2D", false), 0), 0x4E2DU);
        }
    }
    EXPECT_EQ(EncodingTable::c_schemes[0].ReadUnit("\x00\xF6\x01\x00"sv, 0), 0x1F600U);
    EXPECT_EQ(EncodingTable::c_schemes[1].ReadUnit("\x00\x01\xF6\x00"sv, 0), 0x1F600U);
}

TEST(EncodingTable, KnowsNamesInAnyCase)
{
    for (const char* const name : {"UTF-8", "utf-8", "Utf8", "UTF8"})
        EXPECT_TRUE(EncodingTable::NamesUtf8(name)) << name;
    for (const char* const name :
         {"", "UTF", "UTF-7", "UTF-88", "UTF-8 ", "UTF-1", "UTF-16", "ISO-8859-1", "xUTF-8"})
        EXPECT_FALSE(EncodingTable::NamesUtf8(name)) << name;
}

TEST(EncodingTable, PassesOverTheByteOrderMarkOfUtf8Alone)
{
    EXPECT_EQ(EncodingTable::SkipByteOrderMark("\xEF\xBB\xBF<a/>"), "<a/>");
    EXPECT_EQ(EncodingTable::SkipByteOrderMark("\xEF\xBB\xBF\xEF\xBB\xBF"), "\xEF\xBB\xBF");
    for (const std::string_view bytes : {""sv, "\xEF\xBB"sv, "\xFF\xFE<\0"sv, " \xEF\xBB\xBF"sv})
        EXPECT_EQ(EncodingTable::SkipByteOrderMark(bytes), bytes);
}

TEST(EncodingTable, TellsNamesByTheGrammar)
{
    for (const char* const name : {"a", "Z", "UTF-8", "ISO_8859.1", "x-0"})
        EXPECT_TRUE(EncodingTable::IsName(name)) << name;
    for (const char* const text : {"", "8", "-a", ".a", "_a", "a:b", "a b", "a\xE4", "@", "[", "`",
                                   "{", "a@", "a[", "a`", "a{", "a/", "a+"})
        EXPECT_FALSE(EncodingTable::IsName(text)) << text;
}

TEST(EncodingTable, ComparesNamesInAnyCase)
{
    EXPECT_TRUE(EncodingTable::EqualsName("us-Ascii", "US-ASCII"));
    EXPECT_FALSE(EncodingTable::EqualsName("US-ASCII-", "US-ASCII"));
    EXPECT_FALSE(EncodingTable::EqualsName("US-ASCI", "US-ASCII"));
    EXPECT_FALSE(EncodingTable::EqualsName("US\rASCII", "US-ASCII"));
}
