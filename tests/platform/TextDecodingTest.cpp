// The text of a file is reached through TFile; this is about the bytes in it.
#include <kesplatform/TFile.h>

#include "support/RandomText.h"
#include "support/TemporaryFiles.h"

#include <gmock/gmock.h>

#include <QStringConverter>

#include <algorithm>
#include <array>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include <iconv.h>

using namespace std::string_literals;

namespace {

class TextDecoding : public testing::Test
{
protected:
    /// Loads a file of these bytes both ways, and expects the same of both.
    TString Load(std::string_view bytes) const
    {
        const TPath path = m_files.Write(u"text", bytes);
        TString text = TFile::LoadTextFile(path, 1);
        EXPECT_EQ(text.toStdString(), TFile::LoadTextFileAsUtf8(path, 1));
        return text;
    }

    TPath Write(std::string_view bytes) const { return m_files.Write(u"text", bytes); }

    /// The message about a file of these bytes, without the file's name.
    std::string Failure(std::string_view bytes) const
    {
        const TPath path = m_files.Write(u"text", bytes);
        const std::string first =
            MessageOf([&path] { static_cast<void>(TFile::LoadTextFile(path, 1)); });
        EXPECT_EQ(first,
                  MessageOf([&path] { static_cast<void>(TFile::LoadTextFileAsUtf8(path, 1)); }));
        const std::string prefix = path.GetString().toStdString() + ": ";
        EXPECT_THAT(first, testing::StartsWith(prefix));
        return first.substr(std::min(first.size(), prefix.size()));
    }

private:
    template <typename Action>
    static std::string MessageOf(const Action& action)
    {
        try {
            action();
            return "nothing was thrown";
        } catch (const TIO::Exception& exception) {
            return exception.what();
        }
    }

    TemporaryFiles m_files;
};

std::string InvalidAt(std::size_t offset, const std::string& encoding)
{
    return "the byte at offset " + std::to_string(offset) + " is not valid in " + encoding;
}

std::string Encode(QStringConverter::Encoding encoding, bool withMark, const TString& text)
{
    QStringEncoder encoder(encoding, withMark ? QStringConverter::Flag::WriteBom
                                              : QStringConverter::Flag::Default);
    const QByteArray bytes = encoder(QString(text));
    return bytes.toStdString();
}

TString Declared(const char16_t* encoding)
{
    return TString(u"<?xml version='1.0' encoding='") + encoding + u"'?>";
}

std::string DeclaredBytes(const char16_t* encoding)
{
    return Declared(encoding).toStdString();
}

constexpr QStringConverter::Encoding c_wide[] = {
    QStringConverter::Utf16LE, QStringConverter::Utf16BE, QStringConverter::Utf32LE,
    QStringConverter::Utf32BE};

/// What the C library makes of the bytes, in UTF-8; empty when that is nothing.
std::string Iconv(const char* to, const char* from, const std::string& bytes)
{
    const iconv_t handle = iconv_open(to, from);
    EXPECT_NE(handle, reinterpret_cast<iconv_t>(static_cast<std::intptr_t>(-1))) << from;
    std::string in = bytes;
    std::string out(bytes.size() * 8 + 16, '\0');
    char* at = in.data();
    char* end = out.data();
    std::size_t left = in.size();
    std::size_t room = out.size();
    const bool isConverted = iconv(handle, &at, &left, &end, &room) != static_cast<std::size_t>(-1);
    iconv_close(handle);
    out.resize(isConverted ? out.size() - room : 0);
    return out;
}

std::string ConvertByIconv(const char* encoding, const std::string& bytes)
{
    return Iconv("UTF-8", encoding, bytes);
}

std::string ToEbcdic(const char* encoding, const std::string& utf8)
{
    const std::string name = encoding == std::string("IBM-1140") ? "IBM1140" : encoding;
    return Iconv(name.c_str(), "UTF-8", utf8);
}

/// Texts without halves of pairs, as files can hold them.
TString RandomWholeText(RandomText& random)
{
    return TString::fromStdString(TString(std::u16string_view(random.Any(300))).toStdString());
}

} // namespace

TEST_F(TextDecoding, TakesBothBytesThatEndLinesInEbcdicForLineFeeds)
{
    for (const char* const name : {"IBM037", "IBM1047", "IBM500", "IBM273", "IBM-1140"}) {
        for (const char lineEnd : {'\x15', '\x25'}) {
            std::string bytes = ToEbcdic(name, std::string("<?xml version='1.0' encoding='") +
                                                   name + "'?>|<a>|</a>|");
            const char bar = ToEbcdic(name, "|").front();
            std::replace(bytes.begin(), bytes.end(), bar, lineEnd);
            const TString text = TFile::LoadTextFile(Write(bytes), 1);
            EXPECT_TRUE(text.endsWith(u"?>\n<a>\n</a>\n")) << name << ' ' << text.toStdString();
        }
    }
}

TEST_F(TextDecoding, DoesNotReadADeclarationThatHasNoEnd)
{
    const std::string longName(5000, 'a');
    const TString text =
        TFile::LoadTextFile(Write("<?xml version='1.0' encoding='" + longName + "'?><a/>"), 1);
    EXPECT_TRUE(text.endsWith(u"a'?><a/>"));
    EXPECT_THROW(
        static_cast<void>(TFile::LoadTextFile(
            Write("<?xml version='1.0' encoding='" + longName.substr(0, 3000) + "'?><a/>"), 1)),
        TIO::Exception);
}

TEST_F(TextDecoding, NamesTheByteThatACodePageOfSingleBytesDoesNotHave)
{
    const std::string start = "<?xml version='1.0' encoding='gsm-03.38-2009'?><r>";
    try {
        static_cast<void>(TFile::LoadTextFile(Write(start + "\x80</r>"), 1));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const TIO::DecodingException& exception) {
        EXPECT_EQ(exception.GetOffset(), start.size());
    }
}

TEST_F(TextDecoding, TellsProgramsWhichByteDoesNotDecode)
{
    const auto expect = [this](std::string_view bytes, std::uint64_t offset,
                               const char16_t* encoding) {
        const TPath path = Write(bytes);
        try {
            static_cast<void>(TFile::LoadTextFile(path, 1));
            ADD_FAILURE() << "nothing was thrown";
        } catch (const TIO::DecodingException& exception) {
            EXPECT_EQ(exception.GetOffset(), offset);
            EXPECT_EQ(exception.GetEncoding(), encoding);
            EXPECT_EQ(exception.GetPath().GetString(), path.GetString());
            const std::unique_ptr<CorvinaException> clone(exception.Clone());
            EXPECT_THROW(clone->Throw(), TIO::DecodingException);
            EXPECT_STREQ(clone->what(), exception.what());
        }
    };
    expect("ab\xE9<", 2, u"UTF-8");
    expect("\xEF\xBB\xBF"
           "ab\xE9<",
           5, u"UTF-8");
    const std::string declaration = DeclaredBytes(u"US-ASCII");
    expect(declaration + "ab\x80", declaration.size() + 2, u"US-ASCII");
}

TEST_F(TextDecoding, ReadsUtf8WhenNothingElseIsSaid)
{
    RandomText random(1);
    for (int round = 0; round < 50; ++round) {
        const TString text = u"a" + RandomWholeText(random);
        EXPECT_EQ(text, Load(text.toStdString()));
        EXPECT_EQ(text, Load("\xEF\xBB\xBF" + text.toStdString()));
    }
}

TEST_F(TextDecoding, TakesOneByteOrderMarkOffAndNoMore)
{
    EXPECT_EQ(TString(), Load("\xEF\xBB\xBF"));
    EXPECT_EQ(TString(u"\uFEFFa"), Load("\xEF\xBB\xBF\xEF\xBB\xBF"
                                        "a"));
    EXPECT_EQ(TString(), Load("\xFF\xFE"));
    EXPECT_EQ(TString(u"\uFEFFa"), Load("\xFE\xFF\xFE\xFF\0a"s));
}

TEST_F(TextDecoding, ReadsWideEncodingsByByteOrderMark)
{
    RandomText random(2);
    for (const auto encoding : c_wide) {
        for (int round = 0; round < 20; ++round) {
            const TString text = u"a" + RandomWholeText(random);
            EXPECT_EQ(text, Load(Encode(encoding, true, text)));
        }
        // The byte-order mark is right whatever the declaration says.
        const TString declared = Declared(u"windows-1252") + u"\u20AC";
        EXPECT_EQ(declared, Load(Encode(encoding, true, declared)));
    }
}

TEST_F(TextDecoding, ReadsWideEncodingsByTheirDeclaration)
{
    RandomText random(3);
    for (const auto encoding : c_wide) {
        for (const char16_t* name : {u"UTF-16", u"utf-16le", u"UTF-32", u"UTF-8", u"ISO-8859-1"}) {
            const TString text = Declared(name) + RandomWholeText(random);
            EXPECT_EQ(text, Load(Encode(encoding, false, text)));
        }
    }
}

TEST_F(TextDecoding, ReadsLongWideTexts)
{
    TString text = Declared(u"UTF-16");
    for (int i = 0; i < 20000; ++i)
        text += u"a\u20AC\U0001F600";
    EXPECT_TRUE(text == Load(Encode(QStringConverter::Utf16BE, false, text)));
    EXPECT_TRUE(text == Load(Encode(QStringConverter::Utf16LE, true, text)));
}

TEST_F(TextDecoding, ReadsEveryByteOfLatin1)
{
    std::string bytes;
    TString expected;
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        bytes += static_cast<char>(byte);
        expected += static_cast<char16_t>(byte);
    }
    for (const char16_t* name : {u"ISO-8859-1", u"iso-8859-1", u"latin1", u"ISO_8859-1"})
        EXPECT_EQ(Declared(name) + expected, Load(DeclaredBytes(name) + bytes));
}

TEST_F(TextDecoding, ReadsEveryByteOfWindows1252)
{
    // Zero marks the five bytes that stand for nothing.
    constexpr std::u16string_view c_upper(
        u"\u20AC\0\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\0\u017D\0"
        u"\0\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\0\u017E\u0178",
        32);
    const std::string declaration = DeclaredBytes(u"windows-1252");
    for (unsigned byte = 1; byte <= 0xFF; ++byte) {
        const bool isUpper = byte >= 0x80 && byte < 0xA0;
        const char16_t unit = isUpper ? c_upper[byte - 0x80] : static_cast<char16_t>(byte);
        const std::string bytes = declaration + "x" + static_cast<char>(byte) + "x";
        if (unit == 0)
            EXPECT_EQ(InvalidAt(declaration.size() + 1, "windows-1252"), Failure(bytes));
        else
            EXPECT_EQ(Declared(u"windows-1252") + u"x" + TString(1, unit) + u"x", Load(bytes));
    }
}

TEST_F(TextDecoding, ReadsUsAsciiAndNothingBeyond)
{
    const std::string declaration = DeclaredBytes(u"US-ASCII");
    EXPECT_EQ(Declared(u"US-ASCII") + u"a~\u007F", Load(declaration + "a~\x7F"));
    EXPECT_EQ(InvalidAt(declaration.size() + 2, "US-ASCII"), Failure(declaration + "ab\x80"));
    EXPECT_EQ(InvalidAt(declaration.size(), "US-ASCII"), Failure(declaration + "\xC3\xA9"));
}

TEST_F(TextDecoding, ReadsOtherEncodingsThatTheSystemKnows)
{
    EXPECT_EQ(Declared(u"ISO-8859-15") + u"\u20AC", Load(DeclaredBytes(u"ISO-8859-15") + "\xA4"));
    EXPECT_EQ(Declared(u"KOI8-R") + u"\u0430", Load(DeclaredBytes(u"KOI8-R") + "\xC1"));
    EXPECT_EQ(Declared(u"Shift_JIS") + u"\u3042", Load(DeclaredBytes(u"Shift_JIS") + "\x82\xA0"));
    EXPECT_EQ(Declared(u"ISO-2022-JP") + u"\u3042z",
              Load(DeclaredBytes(u"ISO-2022-JP") + "\x1B$B$\"\x1B(Bz"));
}

TEST_F(TextDecoding, ReadsEveryByteAsTheCLibraryDoes)
{
    for (const char* const name :
         {"US-ASCII",     "ISO-8859-1",   "ISO-8859-2",   "ISO-8859-3",   "ISO-8859-4",
          "ISO-8859-5",   "ISO-8859-9",   "ISO-8859-10",  "ISO-8859-13",  "ISO-8859-14",
          "ISO-8859-15",  "ISO-8859-16",  "windows-1250", "windows-1251", "windows-1252",
          "windows-1254", "windows-1256", "windows-1257", "KOI8-R",       "IBM850",
          "IBM855",       "IBM866"}) {
        const std::string declaration =
            "<?xml version='1.0' encoding='" + std::string(name) + "'?>";
        // ICU has three control characters of code pages for personal computers at other places.
        const unsigned first = name[0] == 'I' && name[1] == 'B' ? 0x80 : 1;
        for (unsigned byte = first; byte <= 0xFF; ++byte) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(byte));
            const std::string bytes(1, static_cast<char>(byte));
            const std::string expected = ConvertByIconv(name, bytes);
            if (expected.empty())
                EXPECT_EQ(InvalidAt(declaration.size(), name), Failure(declaration + bytes));
            else
                EXPECT_EQ(declaration + expected, Load(declaration + bytes).toStdString());
        }
    }
}

TEST_F(TextDecoding, ReadsNoByteThatACodePageLeavesUndefinedAsAControlCharacter)
{
    // A former one, without the euro sign.
    constexpr const char16_t* name = u"ibm-1252_P100-2000";
    for (const char* const undefined : {"\x80", "\x81", "\x9E"})
        EXPECT_THAT(Failure(DeclaredBytes(name) + undefined),
                    testing::HasSubstr(" is not valid in "));
    EXPECT_EQ(Declared(name) + u"\u00A0", Load(DeclaredBytes(name) + "\xA0"));
}

TEST_F(TextDecoding, KnowsIso885916ByItsNames)
{
    for (const char16_t* name :
         {u"ISO-8859-16", u"iso8859-16", u"ISO_8859-16:2001", u"latin10", u"l10", u"iso-ir-226"})
        EXPECT_EQ(Declared(name) + u"\u20AC\u0218", Load(DeclaredBytes(name) + "\xA4\xAA"));
}

TEST_F(TextDecoding, LosesNothingInAShift)
{
    const std::pair<const char16_t*, std::string> bad[] = {
        {u"UTF-7", "+AG"},
        {u"UTF-7", "+AGF"},
        {u"UTF-7", "+A"},
        {u"UTF-7", "+"},
        {u"UTF-7", "+A-x"},
        {u"UTF-7", "+AGEA-x"},
        {u"UTF-7", "+!x"},
        {u"UTF-7", "+2D0-x"},
        {u"UTF-7", "+3gA-x"},
        {u"UTF-7", "\xE9x"},
        {u"ISO-2022-JP", "\x1B"},
        {u"ISO-2022-JP", "\x1B$"},
        {u"ISO-2022-JP", "\x1B$B$"},
        {u"ISO-2022-JP", "\x1BXx"},
        {u"ISO-2022-JP", "\xE9x"},
        {u"ISO-2022-KR", "\x1B$)C\x0E\x30"},
        {u"ISO-2022-CN", "\x0E\x30x"},
        {u"HZ", "~"},
        {u"HZ", "~{V"},
        {u"HZ", "~{V~}"},
        {u"HZ", "~{VP"},
        {u"HZ", "~xx"},
        {u"HZ", "\xE9x"},
        {u"CESU-8", "\xED\xA0\xBDx"},
        {u"CESU-8", "\xED\xA0\xBD"},
        {u"CESU-8", "\xED\xB8\x80x"},
        {u"GB18030", "\x81\x30\x84"},
    };
    for (const auto& [name, bytes] : bad) {
        for (const std::string& before : {std::string(), std::string(5000, 'x')}) {
            EXPECT_THAT(Failure(DeclaredBytes(name) + before + bytes),
                        testing::HasSubstr(" is not valid in " + TString(name).toStdString()))
                << testing::PrintToString(bytes);
        }
    }
}

TEST_F(TextDecoding, TellsWhereAShiftLosesSomething)
{
    const std::string start = DeclaredBytes(u"UTF-7");
    EXPECT_EQ(InvalidAt(start.size() + 1, "UTF-7"), Failure(start + "x+A-+AGE-"));
    EXPECT_EQ(InvalidAt(start.size() + 1, "UTF-7"), Failure(start + "x+AGEA"));
    const std::string hz = DeclaredBytes(u"HZ");
    EXPECT_EQ(InvalidAt(hz.size() + 3, "HZ"), Failure(hz + "x~{V"));
}

TEST_F(TextDecoding, ReadsShiftsThatAreComplete)
{
    const std::tuple<const char16_t*, std::string, const char16_t*> good[] = {
        {u"UTF-7", "+AGE-b", u"ab"},
        {u"UTF-7", "+AGE", u"a"},
        {u"UTF-7", "+-", u"+"},
        {u"UTF-7", "+AGEAYgBj-", u"abc"},
        {u"UTF-7", "+2D3eAA-", u"\U0001F600"},
        {u"UTF-7", "+AGE{", u"a{"},
        {u"CESU-8", "\xED\xAF\xBF\xED\xBF\xBD", u"\U0010FFFD"},
        {u"ISO-2022-JP", "\x1B$B$\"\x1B(Bz", u"\u3042z"},
        // A shift that nothing follows means no character.
        {u"ISO-2022-JP", "a\x1B$B", u"a"},
        {u"ISO-2022-KR", "\x1B$)C\x0E\x30\x21\x0F", u"\uAC00"},
        {u"HZ", "~{VP~}b~~",
         u"\u4E2D"
         u"b~"},
        {u"CESU-8", "\xED\xA0\xBD\xED\xB8\x80", u"\U0001F600"},
    };
    for (const auto& [name, bytes, text] : good) {
        for (const std::size_t length : {0U, 4000U, 4001U, 4002U, 4095U, 4096U}) {
            const std::string before(length, 'x');
            EXPECT_EQ(Declared(name) + TString::fromStdString(before) + text,
                      Load(DeclaredBytes(name) + before + bytes));
        }
    }
}

TEST_F(TextDecoding, KeepsPairsWholeWhereverPiecesEnd)
{
    TString text = Declared(u"GB18030");
    std::string bytes = DeclaredBytes(u"GB18030");
    for (int i = 0; i < 9000; ++i) {
        text += u"\U0001F600";
        bytes += "\x94\x39\xFC\x36";
    }
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(text == Load(bytes));
        const std::size_t end = DeclaredBytes(u"GB18030").size();
        text = text.left(static_cast<int>(end)) + u"x" + text.mid(static_cast<int>(end));
        bytes.insert(end, "x");
    }
}

TEST_F(TextDecoding, RefusesEncodingsInWhichSomethingMayGetLost)
{
    for (const char16_t* name : {u"SCSU", u"BOCU-1", u"IMAP-mailbox-name", u"LMBCS-1"})
        EXPECT_EQ("the encoding \"" + TString(name).toStdString() + "\" is not known",
                  Failure(DeclaredBytes(name)));
}

TEST_F(TextDecoding, ReadsEbcdicThatSaysInWhichEncodingOfIt)
{
    for (const char* const name : {"IBM037", "IBM1047", "ebcdic-cp-us", "IBM273", "IBM-1140"}) {
        const std::string text =
            "<?xml version='1.0' encoding='" + std::string(name) + "'?>\n<a>\xC3\xA9 [x]</a>";
        EXPECT_EQ(Load(ToEbcdic(name, text)).toStdString(), text) << name;
    }
}

TEST_F(TextDecoding, RefusesEbcdicThatDoesNotSayInWhich)
{
    EXPECT_EQ("the text is in EBCDIC, and does not say in which encoding of it",
              Failure(ToEbcdic("IBM037", "<?xml version='1.0'?><a/>")));
    EXPECT_EQ("the text is in EBCDIC, and does not say in which encoding of it",
              Failure("\x4C\x6F\xA7\x94"));
    EXPECT_EQ("the text is in EBCDIC, and not in the encoding that it names",
              Failure(ToEbcdic("IBM037", "<?xml version='1.0' encoding='UTF-8'?><a/>")));
    EXPECT_EQ("the encoding \"x-1\" is not known",
              Failure(ToEbcdic("IBM037", "<?xml version='1.0' encoding='x-1'?><a/>")));
}

TEST_F(TextDecoding, ReadsXmlInLargerUnitsWithoutMarkAndDeclaration)
{
    for (const auto encoding : c_wide) {
        EXPECT_EQ(TString(u"<?p ?><a>\u20AC</a>"),
                  Load(Encode(encoding, false, u"<?p ?><a>\u20AC</a>")));
        EXPECT_EQ(TString(u"<a/>"), Load(Encode(encoding, false, u"<a/>")));
    }
    EXPECT_EQ(TString(u"<?p ?>"), Load("<?p ?>"));
}

TEST_F(TextDecoding, TellsOfTheByteOrderMarkThatItTakesOff)
{
    for (const std::string mark : {"", "\xEF\xBB\xBF"}) {
        bool hadByteOrderMark = mark.empty();
        static_cast<void>(TFile::LoadTextFileAsUtf8(Write(mark + "a"), 1, hadByteOrderMark));
        EXPECT_EQ(hadByteOrderMark, !mark.empty());
    }
}

TEST_F(TextDecoding, ReadsTheDeclarationInEveryForm)
{
    for (const std::string declaration :
         {"<?xml version='1.0' encoding='ISO-8859-1'?>",
          "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone='yes' ?>",
          "<?xml\tversion = '1.0'\r\n encoding\n=\t'ISO-8859-1'?>", "<?xml encoding='ISO-8859-1'?>",
          "<?xml version=\"it's\" encoding='ISO-8859-1'?>",
          " \r\n\t<?xml version='1.0' encoding='ISO-8859-1'?>",
          // Wrong, which whoever reads the text is to say.
          "\v\f<?xml\vversion='1.0'\fencoding\v=\f'ISO-8859-1'?>"})
        EXPECT_EQ(TString::fromStdString(declaration) + u"\u00E9", Load(declaration + "\xE9"));
}

TEST_F(TextDecoding, IgnoresWhatIsNoDeclaration)
{
    for (const std::string text :
         {"<?xml-stylesheet encoding='ISO-8859-1'?>", "<?XML encoding='ISO-8859-1'?>",
          "<a encoding='ISO-8859-1'>", "x<?xml encoding='ISO-8859-1'?>",
          "<?xml version='1.0'?><a encoding='ISO-8859-1'>",
          "<?xml version='1.0 encoding=\"ISO-8859-1\"?>", "<?xml encoding=ISO-8859-1?>",
          "<?xml encoding='ISO-8859-1", "<?xml encoding='ISO-8859-1'", "<?xml Encoding='latin1'?>",
          "<?xml version='1.0' encoding=''?>", "<?xml version='encoding=\"latin1\"'?>",
          "<?xml encoding='caf\xC3\xA9'?>"}) {
        EXPECT_EQ(TString::fromStdString(text) + u"\u00E9", Load(text + "\xC3\xA9"));
        EXPECT_EQ(InvalidAt(text.size(), "UTF-8"), Failure(text + "\xE9<"));
    }
}

TEST_F(TextDecoding, TrustsTheBytesWhereTheDeclarationCannotBeTrue)
{
    for (const char16_t* name :
         {u"UTF-16", u"UTF-16LE", u"UCS-2", u"UTF-32", u"ebcdic-cp-us", u"IBM037"}) {
        EXPECT_EQ(Declared(name) + u"\u00E9", Load(DeclaredBytes(name) + "\xC3\xA9"));
        EXPECT_EQ(InvalidAt(DeclaredBytes(name).size(), "UTF-8"),
                  Failure(DeclaredBytes(name) + "\xE9"));
    }
}

TEST_F(TextDecoding, NamesAnEncodingThatNobodyKnows)
{
    for (const char16_t* name :
         {u"no-such-encoding", u"UTF-9", u"latin1//IGNORE", u"ut f-8", u"/"}) {
        const std::string expected =
            "the encoding \"" + TString(name).toStdString() + "\" is not known";
        EXPECT_EQ(expected, Failure(DeclaredBytes(name)));
        EXPECT_EQ(expected, Failure(Encode(QStringConverter::Utf16LE, false, Declared(name))));
    }
}

TEST_F(TextDecoding, NamesTheFirstByteThatIsNotUtf8)
{
    EXPECT_EQ(InvalidAt(0, "UTF-8"), Failure("\x80"));
    EXPECT_EQ(InvalidAt(0, "UTF-8"), Failure("\xC3"));
    EXPECT_EQ(InvalidAt(3, "UTF-8"), Failure("abc\xFF"
                                             "def\xFF"));
    EXPECT_EQ(InvalidAt(4, "UTF-8"), Failure("\xEF\xBB\xBF"
                                             "a\xE9"));
    EXPECT_EQ(InvalidAt(2, "UTF-8"), Failure("\xC3\xA9\xED\xA0\x80"));
    for (std::size_t at = 0; at < 70; ++at) {
        const std::string bytes = std::string(at, 'x') + "\xE2\x82" + std::string(40, 'x');
        EXPECT_EQ(InvalidAt(at, "UTF-8"), Failure(bytes));
        EXPECT_EQ(InvalidAt(at, "UTF-8"), Failure(bytes.substr(0, at + 2)));
    }
}

TEST_F(TextDecoding, NamesTheFirstByteThatIsNotUtf16OrUtf32)
{
    EXPECT_EQ(InvalidAt(4, "UTF-16LE"), Failure("\xFF\xFE"
                                                "a\0\0\xD8"
                                                "b\0"s));
    EXPECT_EQ(InvalidAt(4, "UTF-16LE"), Failure("\xFF\xFE"
                                                "a\0\0\xDC"
                                                "b\0"s));
    EXPECT_EQ(InvalidAt(2, "UTF-16BE"), Failure("\xFE\xFF\xD8\x3D"s));
    EXPECT_EQ(InvalidAt(4, "UTF-16BE"), Failure("\xFE\xFF\0ab"s));
    EXPECT_EQ(InvalidAt(4, "UTF-32LE"), Failure("\xFF\xFE\0\0\0\0\x11\0"s));
    EXPECT_EQ(InvalidAt(8, "UTF-32BE"), Failure("\0\0\xFE\xFF\0\0\0a\0\0\xD8\0"s));
    EXPECT_EQ(InvalidAt(4, "UTF-32BE"), Failure("\0\0\xFE\xFF\0\0\0"s));
}

TEST_F(TextDecoding, NamesOffsetsFarIntoTheFile)
{
    const std::string declaration = DeclaredBytes(u"windows-1252");
    const std::string text(100000, '\x80');
    EXPECT_EQ(InvalidAt(declaration.size() + text.size(), "windows-1252"),
              Failure(declaration + text + "\x81"));
}

// Blocks of sequences

namespace {

/// Some text in which sequences of every length stand at every place of a block.
std::string MakeMixedText(std::mt19937& random, std::size_t size)
{
    constexpr std::array<std::string_view, 9> c_characters = {"a",
                                                              " ",
                                                              "\xC3\xA9",
                                                              "\xDF\xBF",
                                                              "\xE0\xA0\x80",
                                                              "\xE0\xB0\x95",
                                                              "\xED\x9F\xBF",
                                                              "\xEF\xBF\xBF",
                                                              "\xF0\x9F\x98\x80"};
    std::string text;
    while (text.size() < size)
        text += c_characters[random() % c_characters.size()];
    return text;
}

} // namespace

TEST_F(TextDecoding, AnInvalidByteIsFoundAtEachPlaceOfALongTextBeyondAscii)
{
    constexpr std::array<std::string_view, 16> c_wrong = {"\x80",
                                                          "\xBF",
                                                          "\xC0\xAF",
                                                          "\xC1\xBF",
                                                          "\xC3",
                                                          "\xE0\x9F\xBF",
                                                          "\xE0\xA0",
                                                          "\xED\xA0\x80",
                                                          "\xE1\x80",
                                                          "\xF0\x8F\xBF\xBF",
                                                          "\xF0\x90\x80",
                                                          "\xF4\x90\x80\x80",
                                                          "\xF5\x80\x80\x80",
                                                          "\xFE",
                                                          "\xFF",
                                                          "\xC3\xA9\x80"};
    std::mt19937 random(20261122);
    for (std::size_t place = 0; place < 150; ++place) {
        const std::string_view wrong = c_wrong[random() % c_wrong.size()];
        // What begins a block is beyond ASCII, and so is most of what follows.
        const std::string before = "\xE0\xB0\x95" + MakeMixedText(random, place);
        const std::size_t offset =
            before.size() + (wrong.size() == 3 && wrong[1] == '\xA9' ? 2 : 0);
        const std::string text =
            before + std::string(wrong) + "a" + MakeMixedText(random, 100 + random() % 100);
        EXPECT_EQ(Failure(text), InvalidAt(offset, "UTF-8")) << before.size();
        EXPECT_EQ(Failure(before + std::string(wrong)), InvalidAt(offset, "UTF-8"));
    }
}

TEST_F(TextDecoding, ALongTextBeyondAsciiIsTakenWholeWhateverItsLength)
{
    std::mt19937 random(7);
    for (std::size_t size = 0; size < 300; ++size) {
        const std::string text = MakeMixedText(random, size);
        EXPECT_EQ(Load(text).toStdString(), text);
    }
}
