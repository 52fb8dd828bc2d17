#include <kesplatform/EncodingTable.h>

#include <gtest/gtest.h>

#include <QStringConverter>

#include <algorithm>
#include <string>

using namespace std::string_view_literals;

namespace {

/// How Qt, which has a table of its own, encodes a text.
std::string Encode(const EncodingTable::Entry& entry, QStringView text, bool withMark)
{
    QStringEncoder encoder(entry.name.data(), withMark ? QStringConverter::Flag::WriteBom
                                                       : QStringConverter::Flag::Default);
    EXPECT_TRUE(encoder.isValid()) << entry.name;
    const QByteArray bytes = encoder(text);
    return bytes.toStdString();
}

} // namespace

TEST(EncodingTable, HoldsWhatQtWrites)
{
    for (const EncodingTable::Entry& entry : EncodingTable::c_entries) {
        SCOPED_TRACE(entry.name);
        const std::string marked = Encode(entry, u"<?xml", true);
        EXPECT_TRUE(marked.starts_with(entry.byteOrderMark));
        ASSERT_NE(EncodingTable::FindByByteOrderMark(marked), nullptr);
        EXPECT_EQ(EncodingTable::FindByByteOrderMark(marked)->encoding, entry.encoding);
        const std::string bytes = Encode(entry, u"<?xml", false);
        EXPECT_EQ(bytes, marked.substr(entry.byteOrderMark.size()));
        EXPECT_EQ(bytes.size(), 5 * entry.unitSize);
        EXPECT_EQ(EncodingTable::FindByByteOrderMark(bytes), nullptr);
        EXPECT_EQ(entry.encoding, DetectEncoding(marked.data(), marked.size()));
    }
    EXPECT_EQ(EncodingTable::c_utf8.name, "UTF-8");
}

TEST(EncodingTable, TellsByMarkWhatBeginsWithAnother)
{
    EXPECT_EQ(EncodingTable::FindByByteOrderMark("\xFF\xFE\0\0"sv)->encoding, Utf32LE);
    EXPECT_EQ(EncodingTable::FindByByteOrderMark("\xFF\xFE\0"sv)->encoding, Utf16LE);
    EXPECT_EQ(EncodingTable::FindByByteOrderMark("\xFF\xFE<\0"sv)->encoding, Utf16LE);
    for (const std::string_view bytes : {""sv, "\xFF"sv, "\xEF\xBB"sv, "\0\0\xFE"sv, "<a/>"sv})
        EXPECT_EQ(EncodingTable::FindByByteOrderMark(bytes), nullptr);
}

TEST(EncodingTable, KnowsUnitsByTheirAsciiCharacters)
{
    for (const EncodingTable::Entry& entry : EncodingTable::c_entries) {
        const std::string bytes = Encode(entry, u"<?xml", false);
        for (const EncodingTable::Entry& other : EncodingTable::c_entries) {
            EXPECT_EQ(other.IsBeginOf(bytes, "<?xml"), &other == &entry)
                << entry.name << " " << other.name;
        }
        EXPECT_TRUE(entry.IsBeginOf(bytes, ""));
        EXPECT_FALSE(entry.IsBeginOf(bytes, "<?xmlx"));
        EXPECT_FALSE(entry.IsBeginOf(bytes.substr(0, bytes.size() - 1), "<?xml"));
    }
}

TEST(EncodingTable, ReadsUnits)
{
    for (const EncodingTable::Entry& entry : EncodingTable::c_entries) {
        SCOPED_TRACE(entry.name);
        const std::string bytes = Encode(entry, u"a~", false);
        EXPECT_EQ(entry.ReadAscii(bytes, 0), 'a');
        EXPECT_EQ(entry.ReadAscii(bytes, entry.unitSize), '~');
        EXPECT_EQ(entry.ReadAscii(bytes, 2 * entry.unitSize), '\0');
        EXPECT_EQ(entry.ReadAscii(bytes, 100), '\0');
        EXPECT_EQ(entry.ReadUnit(bytes, entry.unitSize), std::uint32_t('~'));
        EXPECT_EQ(entry.ReadAscii(Encode(entry, u"\u0080", false), 0), '\0');
        if (entry.unitSize > 1) {
            EXPECT_EQ(entry.ReadUnit(Encode(entry, u"\u4E2D", false), 0), 0x4E2DU);
        }
    }
    EXPECT_EQ(EncodingTable::c_entries[0].ReadUnit("\x00\xF6\x01\x00"sv, 0), 0x1F600U);
    EXPECT_EQ(EncodingTable::c_entries[1].ReadUnit("\x00\x01\xF6\x00"sv, 0), 0x1F600U);
}

TEST(EncodingTable, KnowsNamesInAnyCase)
{
    for (const char* const name : {"UTF-8", "utf-8", "Utf8", "UTF8"}) {
        EXPECT_TRUE(EncodingTable::NamesUtf8(name)) << name;
        EXPECT_FALSE(EncodingTable::NamesLargerUnits(name)) << name;
    }
    for (const char* const name :
         {"UTF-16", "utf-16le", "UTF16", "utf16be", "UTF-32", "utf32", "UCS-2", "ucs-4", "UCS4",
          "ISO-10646-UCS-2", "iso-10646-ucs-4"}) {
        EXPECT_TRUE(EncodingTable::NamesLargerUnits(name)) << name;
        EXPECT_FALSE(EncodingTable::NamesUtf8(name)) << name;
    }
    for (const char* const name : {"", "UTF", "UTF-7", "UTF-88", "UTF-8 ", "UTF-1", "ISO-8859-1",
                                   "ISO-10646-UTF-1", "xUCS-4"}) {
        EXPECT_FALSE(EncodingTable::NamesLargerUnits(name)) << name;
        EXPECT_FALSE(EncodingTable::NamesUtf8(name)) << name;
    }
}
