#include <kesplatform/OtherText.h>

#include <kesplatform/DataValue.h>
#include <kesplatform/TFormatString.h>
#include <kesplatform/TPath.h>
#include <kesplatform/TString.h>
#include <kesplatform/TStringFormat.h>

#include "support/FailingAllocations.h"
#include "support/RandomText.h"

#include <gmock/gmock.h>

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <algorithm>
#include <any>
#include <array>
#include <compare>
#include <filesystem>
#include <iomanip>
#include <memory_resource>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace {

constexpr int c_rounds = 2000;

/// One text in every form in which somebody may have it.
struct Forms
{
    Forms(const char16_t* text)
        : utf16(text), utf8(TString(text).toStdString()), u8(utf8.begin(), utf8.end()),
          pmr(utf8.begin(), utf8.end()), qt(TString(text)), path(utf16)
    {
        for (const char16_t unit : utf16)
            latin1 += static_cast<char>(unit);
    }

    std::u16string utf16;
    std::string utf8;
    std::u8string u8;
    std::pmr::string pmr;
    std::string latin1;
    QString qt;
    std::filesystem::path path;
};

template <typename T>
T As(const Forms& forms)
{
    if constexpr (std::is_same_v<T, std::pmr::string>)
        return forms.pmr;
    else if constexpr (std::is_same_v<T, QLatin1String>)
        return QLatin1String(forms.latin1.data(), static_cast<qsizetype>(forms.latin1.size()));
    else if constexpr (std::is_same_v<T, QString> || std::is_same_v<T, QStringView>)
        return forms.qt;
    else if constexpr (std::is_same_v<T, std::filesystem::path>)
        return forms.path;
    else if constexpr (std::is_pointer_v<T> && OtherText::Utf16<T>)
        return forms.utf16.c_str();
    else if constexpr (std::is_same_v<T, const char*>)
        return forms.utf8.c_str();
    else if constexpr (std::is_same_v<T, const char8_t*>)
        return forms.u8.c_str();
    else if constexpr (OtherText::Utf16<T>)
        return forms.utf16;
    else if constexpr (OtherText::Standard<T, char8_t>)
        return forms.u8;
    else
        return forms.utf8;
}

/// Texts in their order. Those that Latin-1 does not have are the last.
const std::vector<Forms>& Samples(bool isLatin1)
{
    static const std::vector<Forms> s_latin1{u"",       u" ",           u"coffee",   u"te",
                                             u"tea",    u"tea, green",  u"th\u00E9", u"\u007F",
                                             u"\u0080", u"\u00FF\u00FF"};
    static const std::vector<Forms> s_all = [] {
        std::vector<Forms> all = s_latin1;
        for (const char16_t* text : {u"\u0100", u"\u07FF\u0800", u"\u8336", u"\xD83C\xDF75",
                                     u"\xD83C\xDF75\x8336", u"\uE000", u"\uFFFD"})
            all.emplace_back(text);
        return all;
    }();
    return isLatin1 ? s_latin1 : s_all;
}

/// Whether both ways of adding one to the end of a string compile, and whether either does.
template <typename T>
concept IsAppended = requires(TString text, T value)
{
    text += value;
    text.append(value);
};
template <typename T>
concept IsAppendedInSomeWay = requires(TString text, T value)
{
    text += value;
}
|| requires(TString text, T value)
{
    text.append(value);
};

TString Take(const TString& text)
{
    return text;
}

} // namespace

template <typename T>
class OtherTextTest : public testing::Test
{
protected:
    const std::vector<Forms>& Texts() const { return Samples(OtherText::QtLatin1<T>); }
};

using Kinds = testing::Types<std::string, std::string_view, std::pmr::string, std::u8string,
                             std::u8string_view, std::u16string, std::u16string_view, const char*,
                             const char8_t*, const char16_t*, QString, QStringView, QLatin1String,
                             std::filesystem::path>;
TYPED_TEST_SUITE(OtherTextTest, Kinds);

TYPED_TEST(OtherTextTest, GoesWhereAStringGoes)
{
    static_assert(std::is_convertible_v<TypeParam, TString>);
    for (const Forms& forms : this->Texts()) {
        const auto text = As<TypeParam>(forms);
        EXPECT_EQ(Take(text).view(), forms.utf16);
        EXPECT_EQ(TString(text).view(), forms.utf16);
        TString assigned(u"before");
        assigned = text;
        EXPECT_EQ(assigned.view(), forms.utf16);
        EXPECT_EQ(TPath(text).GetString().view(), forms.utf16);
        EXPECT_EQ(TFormatString(text).GetFormat().view(), forms.utf16);
        EXPECT_EQ(TFormatString(u"%1").Format(text).view(), forms.utf16);
        EXPECT_EQ(DataValue(text), DataValue(TString(forms.utf16)));
        const std::unordered_map<TString, int> map{{TString(forms.utf16), 1}};
        EXPECT_TRUE(map.contains(text));
    }
}

TYPED_TEST(OtherTextTest, IsComparedInBothOrders)
{
    const std::vector<Forms>& texts = this->Texts();
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const TString a(texts[i].utf16);
        for (std::size_t j = 0; j < texts.size(); ++j) {
            const auto b = As<TypeParam>(texts[j]);
            const std::strong_ordering order = i <=> j;
            EXPECT_EQ(a == b, i == j);
            EXPECT_EQ(b == a, i == j);
            EXPECT_EQ(a != b, i != j);
            EXPECT_EQ(b != a, i != j);
            EXPECT_TRUE((a <=> b) == order) << i << ' ' << j;
            EXPECT_TRUE((b <=> a) == 0 <=> order) << i << ' ' << j;
            EXPECT_EQ(a < b, i < j);
            EXPECT_EQ(b < a, j < i);
            EXPECT_EQ(a >= b, i >= j);
            EXPECT_EQ(b >= a, j >= i);
        }
    }
}

TYPED_TEST(OtherTextTest, IsAddedInBothOrders)
{
    const TString left(u"<\u8336");
    for (const Forms& forms : this->Texts()) {
        const auto text = As<TypeParam>(forms);
        static_assert(std::is_same_v<decltype(left + text), TString>);
        static_assert(std::is_same_v<decltype(text + left), TString>);
        const std::u16string after = std::u16string(left.view()) + forms.utf16;
        EXPECT_EQ((left + text).view(), after);
        EXPECT_EQ((text + left).view(), forms.utf16 + std::u16string(left.view()));
        EXPECT_EQ((TString(left) + text).view(), after);
        TString sum = left;
        sum += text;
        EXPECT_EQ(sum.view(), after);
        sum.append(text);
        EXPECT_EQ(sum.view(), after + forms.utf16);
        EXPECT_EQ(sum.utf16()[sum.length()], u'\0');
        EXPECT_EQ(left.view(), u"<\u8336");
        TString fromNothing;
        fromNothing += text;
        EXPECT_EQ(fromNothing.view(), forms.utf16);
        EXPECT_EQ(fromNothing.utf16()[fromNothing.length()], u'\0');
    }
}

TYPED_TEST(OtherTextTest, IsComparedWithoutAllocatingUnlessItIsLatin1)
{
    if constexpr (!OtherText::QtLatin1<TypeParam>) {
        for (const Forms& forms : this->Texts()) {
            const TString text(forms.utf16);
            const auto other = As<TypeParam>(forms);
            static_assert(noexcept(text == other));
            static_assert(noexcept(text <=> other));
            bool isSame = false;
            {
                const FailingAllocations none(0);
                isSame = text == other && other == text && (text <=> other) == 0;
            }
            EXPECT_TRUE(isSame);
        }
    }
}

TEST(OtherText, LiteralsAndArraysAreTexts)
{
    const TString text(u"th\u00E9");
    EXPECT_TRUE(text == u"th\u00E9" && text == "th\xC3\xA9" && text == u8"th\u00E9");
    EXPECT_TRUE("th\xC3\xA9" == text && u8"th\u00E9" == text && u"th\u00E9" == text);
    EXPECT_TRUE(text < "th\xC3\xAA" && "thz" < text);
    char buffer[8] = "green ";
    EXPECT_EQ((buffer + text).view(), u"green th\u00E9");
    EXPECT_EQ((text + " " + buffer + u8"!" + u"?").view(), u"th\u00E9 green !?");
    EXPECT_EQ(TString(buffer).view(), u"green ");
    EXPECT_EQ(DataValue("text"), DataValue(TString(u"text")));
}

TEST(OtherText, ANullPointerIsTheEmptyText)
{
    const char* const bytes = nullptr;
    const char8_t* const u8 = nullptr;
    const char16_t* const units = nullptr;
    TString text(u"a");
    EXPECT_FALSE(text == bytes || text == u8 || text == units);
    EXPECT_TRUE(TString() == bytes && TString() == u8 && TString() == units);
    text += bytes;
    text += u8;
    text += units;
    EXPECT_EQ((text + bytes + u8 + units).view(), u"a");
    EXPECT_TRUE(TString(u8).empty());
}

TEST(OtherText, NothingElseBecomesAString)
{
    static_assert(!std::is_convertible_v<int, TString>);
    static_assert(!std::is_convertible_v<char, TString>);
    static_assert(!std::is_convertible_v<char16_t, TString>);
    static_assert(!std::is_convertible_v<bool, TString>);
    static_assert(!std::is_convertible_v<std::nullptr_t, TString>);
    static_assert(!std::is_convertible_v<const void*, TString>);
    static_assert(!std::is_convertible_v<const unsigned char*, TString>);
    static_assert(!std::is_convertible_v<const wchar_t*, TString>);
    static_assert(!std::is_convertible_v<std::wstring, TString>);
    static_assert(!std::is_convertible_v<std::u32string, TString>);
    static_assert(!std::is_convertible_v<std::vector<char>, TString>);
    static_assert(!std::is_convertible_v<std::vector<char16_t>, TString>);
    static_assert(!std::is_convertible_v<QByteArray, TString>);
    static_assert(!std::is_convertible_v<std::any, TString>);
    static_assert(!OtherText::Any<TString>);
    static_assert(!OtherText::Any<TPath>);
}

TEST(OtherText, OnlyAUnitIsAddedAsOne)
{
    enum Unscoped
    {
        Value
    };
    static_assert(IsAppended<char16_t>);
    static_assert(!IsAppendedInSomeWay<char>);
    static_assert(!IsAppendedInSomeWay<signed char>);
    static_assert(!IsAppendedInSomeWay<unsigned char>);
    static_assert(!IsAppendedInSomeWay<char8_t>);
    static_assert(!IsAppendedInSomeWay<char32_t>);
    static_assert(!IsAppendedInSomeWay<wchar_t>);
    static_assert(!IsAppendedInSomeWay<bool>);
    static_assert(!IsAppendedInSomeWay<short>);
    static_assert(!IsAppendedInSomeWay<int>);
    static_assert(!IsAppendedInSomeWay<unsigned long>);
    static_assert(!IsAppendedInSomeWay<double>);
    static_assert(!IsAppendedInSomeWay<Unscoped>);
    TString text(u"t");
    const char16_t unit = u'\u00E9';
    text += unit;
    text.append(u'!');
    EXPECT_EQ(text, u"t\u00E9!");
}

TEST(OtherText, ViewsHoldZerosAndNoMoreThanTheyShow)
{
    using namespace std::string_literals;
    const std::string bytes = "a\0b"s;
    EXPECT_EQ(TString(bytes).view(), u"a\0b"s);
    EXPECT_TRUE(TString(u"a\0b"s) == bytes && TString(u"a") != bytes);
    EXPECT_EQ(TString(std::string_view(bytes).substr(2)).view(), u"b");
    EXPECT_EQ(TString(QStringView(u"abc").mid(1, 1)).view(), u"b");
    EXPECT_TRUE(TString(QStringView()).empty() && TString() == QStringView());
    EXPECT_EQ(TString(QLatin1String("abc", 2)).view(), u"ab");
}

TEST(OtherText, ADerivedStringSharesItsText)
{
    struct Derived : TString
    {
        using TString::TString;
    };
    const Derived derived(u"shared");
    EXPECT_EQ(TString(derived).utf16(), derived.utf16());
    TString sum;
    sum += derived;
    EXPECT_EQ(sum.utf16(), derived.utf16());
}

TEST(OtherText, BytesMeanWhatFromUtf8MakesOfThem)
{
    RandomText random(1);
    for (int round = 0; round < c_rounds; ++round) {
        const std::string bytes = random.Bytes(12);
        const TString decoded = TString::fromUtf8(bytes);
        EXPECT_EQ(TString(bytes), decoded);
        EXPECT_TRUE(decoded == bytes && (decoded <=> bytes) == 0);
        TString sum(u"+");
        sum += bytes;
        ASSERT_EQ(sum, u"+" + decoded);

        const TString other = random.Number(1) == 0
                                  ? TString(random.Any(12))
                                  : decoded.left(static_cast<TString::size_type>(
                                        random.Number(static_cast<std::size_t>(decoded.length()))));
        ASSERT_EQ(other == bytes, other == decoded);
        ASSERT_TRUE((other <=> bytes) == (other <=> decoded)) << bytes;
    }
}

TEST(OtherText, WhatIsAddedAsUtf8LeavesOthersWhoShareAlone)
{
    const TString original(u"tea");
    TString sum = original;
    sum += "\xE8\x8C\xB6";
    EXPECT_EQ(original, u"tea");
    EXPECT_EQ(sum, u"tea\u8336");
    sum += std::string(1000, 'x');
    EXPECT_EQ(sum, u"tea\u8336" + TString(1000, u'x'));
}

TEST(OtherText, StringsGoToStreamsAsUtf8)
{
    std::ostringstream out;
    out << std::setw(5) << std::setfill('.') << TString(u"tea") << std::left << std::setw(4)
        << TString(u"a") << TString(u"\u8336\xD83C") << TString(u"\0", 1);
    EXPECT_EQ(out.str(), "..teaa...\xE8\x8C\xB6\xEF\xBF\xBD" + std::string(1, '\0'));
}

#if defined(__cpp_lib_format)

TEST(OtherText, StringsAreFormattedAsUtf8)
{
    EXPECT_EQ(std::format("<{}>", TString(u"\u8336")), "<\xE8\x8C\xB6>");
    EXPECT_EQ(std::format("{:.>5}", TString(u"tea")), "..tea");
}

#endif
