#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/OtherText.h>

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Programs that convert to or from it include its header.
class QString;

/// An immutable-by-sharing UTF-16 string. Lengths and positions are UTF-16 code units; -1 means
/// "not found". A TString is one pointer; the empty string is the null pointer and owns nothing.
///
/// Copies share their text and cost one atomic increment; the first change of a shared text makes
/// a private copy of it. Equality and order are by code unit. The text may hold U+0000 and halves
/// of surrogate pairs; it is always followed by a terminating U+0000 that is not part of it.
///
/// Text of other kinds (OtherText) becomes a TString where one is asked for: literals, strings and
/// views of the standard library of char, char8_t and char16_t, QString, QStringView,
/// QLatin1StringView and std::filesystem::path. All of it is compared with a TString and added to
/// it in both orders; only comparing Latin-1 allocates. Bytes are taken for UTF-8: each that is
/// part of no well-formed sequence becomes one U+FFFD. The way back is view(), toStdString() and,
/// in programs that include its header, the conversion to QString.
///
/// Different objects may be used from different threads, even when they share a text. Const
/// operations may run side by side.
/// Memory exhaustion is std::bad_alloc, a text of more than c_maxLength units std::length_error.
class KESPLATFORM_EXPORT TString
{
public:
    /// What generic code asks of a container of units.
    using size_type = std::ptrdiff_t;
    using value_type = char16_t;
    using const_iterator = const char16_t*;

    /// Whether comparisons tell capitals from small letters.
    enum CaseSensitivity
    {
        CaseInsensitive = 0,
        CaseSensitive = 1
    };

    /// The longest text, in units; std::length_error beyond.
    static constexpr size_type c_maxLength = 0x7FFFFFF0;

    constexpr TString() noexcept = default;
    /// Copies a zero-terminated UTF-16 text; null gives the empty string.
    TString(const char16_t* text);
    /// Copies `length` units; none when it is not positive.
    TString(const char16_t* text, size_type length);
    /// Copies the units.
    TString(std::u16string_view text);
    /// Decodes a zero-terminated UTF-8 text; see fromUtf8. Null gives the empty string.
    TString(const char* utf8);
    /// Copies the units.
    TString(const QString& text);
    /// Copies the units, or decodes the bytes; see fromUtf8.
    template <OtherText::Any T>
    TString(const T& text) : TString(Make(OtherText::View(text)))
    {
    }
    /// A text of `length` units, all of them `unit`; empty when `length` is not positive.
    TString(size_type length, char16_t unit);
    /// Shares the units; allocates nothing.
    TString(const TString& other) noexcept : m_rep(other.m_rep) { Retain(m_rep); }
    TString(TString&& other) noexcept : m_rep(other.m_rep) { other.m_rep = nullptr; }
    ~TString() { Release(m_rep); }

    /// Shares the units; allocates nothing.
    TString& operator=(const TString& other) noexcept
    {
        Retain(other.m_rep);
        Release(m_rep);
        m_rep = other.m_rep;
        return *this;
    }
    TString& operator=(TString&& other) noexcept
    {
        std::swap(m_rep, other.m_rep);
        return *this;
    }

    /// Copies the units.
    operator QString() const;
    /// The units; valid until this object changes or ends.
    operator std::u16string_view() const noexcept { return view(); }

    /// Whether there is no unit.
    [[nodiscard]] bool IsEmpty() const noexcept { return m_rep == nullptr || m_rep->Length() == 0; }
    /// The same, as Qt spells it.
    [[nodiscard]] bool isEmpty() const noexcept { return IsEmpty(); }
    /// The same, as the standard library spells it.
    [[nodiscard]] bool empty() const noexcept { return IsEmpty(); }
    /// The number of units.
    [[nodiscard]] size_type length() const noexcept
    {
        return m_rep == nullptr ? 0 : m_rep->Length();
    }
    /// The same, as the standard library spells it.
    [[nodiscard]] size_type size() const noexcept { return length(); }
    /// The zero-terminated units; valid until this object changes or ends.
    [[nodiscard]] const char16_t* utf16() const noexcept
    {
        return m_rep == nullptr ? u"" : m_rep->Units();
    }
    /// The units; valid until this object changes or ends.
    [[nodiscard]] std::u16string_view view() const noexcept
    {
        return {utf16(), static_cast<std::size_t>(length())};
    }
    /// The units; valid until this object changes or ends.
    [[nodiscard]] const_iterator begin() const noexcept { return utf16(); }
    [[nodiscard]] const_iterator end() const noexcept { return utf16() + length(); }
    /// Requires 0 <= index < length().
    char16_t operator[](size_type index) const noexcept { return utf16()[index]; }

    /// Amortised constant time a unit; any argument may be a part of this very text. What is added
    /// as UTF-8 is decoded; see fromUtf8.
    TString& append(const TString& text);
    TString& append(std::u16string_view text);
    TString& append(std::string_view utf8);
    TString& append(char16_t unit);
    /// Neither bytes nor numbers are units.
    template <OtherText::NoUnit T>
    TString& append(T number) = delete;
    template <OtherText::Any T>
    TString& append(const T& text)
    {
        return append(OtherText::View(text));
    }
    /// The same as append.
    TString& operator+=(const TString& text) { return append(text); }
    TString& operator+=(char16_t unit) { return append(unit); }
    template <OtherText::NoUnit T>
    TString& operator+=(T number) = delete;
    template <OtherText::Any T>
    TString& operator+=(const T& text)
    {
        return append(text);
    }
    /// Empties the string and gives its memory back.
    void clear() noexcept { *this = TString(); }

    /// Makes a private text of exactly `length` units for the caller to fill, and returns its
    /// first unit; null for no units. What was there before is gone. The pointer is valid until
    /// the next call.
    char16_t* resizeForOverwrite(size_type length);
    /// Makes the text private and `length` units long and keeps what was there as far as it fits;
    /// added units are for the caller to fill. Returns the first unit; the pointer is valid until
    /// the next call. Growing is amortised constant time a unit, shortening a private text cannot
    /// fail and keeps the memory.
    char16_t* resize(size_type length);
    /// The length up to which a private text grows without a new allocation.
    [[nodiscard]] size_type capacity() const noexcept;

    /// The first or last `count` units; a count that is negative or too large gives the whole text.
    [[nodiscard]] TString left(size_type count) const;
    /// The last `count` units, with the same exceptions.
    [[nodiscard]] TString right(size_type count) const;
    /// At most `count` units (a negative count: all) from `position` on; empty past the end.
    [[nodiscard]] TString mid(size_type position, size_type count = -1) const;

    /// Whether the text begins so; the empty text begins every text.
    [[nodiscard]] bool startsWith(const TString& text, int caseSensitivity = CaseSensitive) const;
    /// Whether the text ends so; the empty text ends every text.
    [[nodiscard]] bool endsWith(const TString& text, int caseSensitivity = CaseSensitive) const;
    /// Whether it occurs somewhere.
    [[nodiscard]] bool contains(const TString& text) const noexcept { return indexOf(text) >= 0; }
    [[nodiscard]] bool contains(char16_t unit) const noexcept { return indexOf(unit) >= 0; }
    /// First position not before `from`; an empty text is found at any `from` up to the length.
    /// A negative `from` counts as 0.
    [[nodiscard]] size_type indexOf(const TString& text, size_type from = 0) const noexcept;
    /// The same within what lies before `end`, the last unit of `text` included.
    [[nodiscard]] size_type indexOf(const TString& text, size_type from,
                                    size_type end) const noexcept;
    [[nodiscard]] size_type indexOf(char16_t unit, size_type from = 0) const noexcept;

    /// Replaces every occurrence of `before`, left to right and without overlap. An empty
    /// `before` changes nothing. Linear in the length of text and result.
    TString& replace(const TString& before, const TString& after);
    /// The parts between the separators, empty ones kept; the empty string gives one empty part.
    [[nodiscard]] std::vector<TString> split(char16_t separator) const;

    /// White space is what TCType::isSpace says.
    [[nodiscard]] TString trimmed() const;
    /// Without the white space at the start only.
    [[nodiscard]] TString trimLeft() const;

    /// Numbers in the C locale, blanks around them ignored. Bad text and overflow give 0 and false.
    /// Base 2 to 36, or 0 for the prefixes of C.
    int toInt(bool* ok = nullptr, int base = 10) const;
    /// The same for numbers of 64 bits without sign.
    unsigned long long toULongLong(bool* ok = nullptr, int base = 10) const;
    /// The same for decimal numbers, with or without exponent.
    double toDouble(bool* ok = nullptr) const;

    /// The number in decimal digits.
    [[nodiscard]] static TString number(int value);
    [[nodiscard]] static TString number(unsigned int value);
    [[nodiscard]] static TString number(long value);
    [[nodiscard]] static TString number(unsigned long value);
    [[nodiscard]] static TString number(long long value);
    [[nodiscard]] static TString number(unsigned long long value);
    /// `format` is one of e, E, f, g, G with the meaning of printf in the C locale; a negative
    /// precision counts as 6. What is no number is "nan" without a sign.
    [[nodiscard]] static TString number(double value, char format = 'g', int precision = 6);

    /// UTF-8. A unit that is half of no pair becomes U+FFFD.
    [[nodiscard]] std::string toStdString() const;
    /// The text of UTF-8 bytes.
    [[nodiscard]] static TString fromStdString(const std::string& utf8) { return fromUtf8(utf8); }
    /// Decodes UTF-8. Each byte that is part of no well-formed sequence becomes one U+FFFD. A
    /// leading byte-order mark is a character like any other and stays as U+FEFF.
    [[nodiscard]] static TString fromUtf8(std::string_view utf8);

    /// Seeded anew in each process, so that a document cannot be built to collide.
    [[nodiscard]] std::size_t Hash() const noexcept;

    [[nodiscard]] friend bool operator==(const TString& a, const TString& b) noexcept
    {
        const size_type length = a.length();
        return a.m_rep == b.m_rep ||
               (length == b.length() &&
                std::memcmp(a.utf16(), b.utf16(),
                            static_cast<std::size_t>(length) * sizeof(char16_t)) == 0);
    }
    template <OtherText::Any T>
    [[nodiscard]] friend bool operator==(const TString& a,
                                         const T& b) noexcept(noexcept(OtherText::View(b)))
    {
        return AreEqual(a.view(), OtherText::View(b));
    }
    [[nodiscard]] friend std::strong_ordering operator<=>(const TString& a,
                                                          const TString& b) noexcept
    {
        return a.m_rep == b.m_rep ? std::strong_ordering::equal : Compare(a.view(), b.view());
    }
    template <OtherText::Any T>
    [[nodiscard]] friend std::strong_ordering
    operator<=>(const TString& a, const T& b) noexcept(noexcept(OtherText::View(b)))
    {
        return Compare(a.view(), OtherText::View(b));
    }

    [[nodiscard]] friend TString operator+(const TString& a, const TString& b)
    {
        if (b.IsEmpty())
            return a;
        return a.IsEmpty() ? b : Concatenate(a.view(), b.view());
    }
    [[nodiscard]] friend TString operator+(TString&& a, const TString& b)
    {
        a.append(b);
        return std::move(a);
    }
    // Qt adds most of these to a QString; without operators of our own, calls were ambiguous.
    template <OtherText::Any T>
    [[nodiscard]] friend TString operator+(const TString& a, const T& b)
    {
        return a + TString(b);
    }
    template <OtherText::Any T>
    [[nodiscard]] friend TString operator+(TString&& a, const T& b)
    {
        a.append(b);
        return std::move(a);
    }
    template <OtherText::Any T>
    [[nodiscard]] friend TString operator+(const T& a, const TString& b)
    {
        return TString(a) + b;
    }

private:
    friend class TStringBlock;

    /// Header of a text, followed by its units and a terminating zero.
    struct Rep
    {
        /// A count of owners; or, with `c_embeddedFlag`, the distance in bytes back to the
        /// TStringBlock that the text is part of and that counts the owners.
        std::atomic<std::uint32_t> control;
        /// The length; `c_growableFlag` says that the allocation has GrowableBytes of it.
        std::uint32_t lengthAndFlag;

        size_type Length() const noexcept { return lengthAndFlag & ~c_growableFlag; }
        const char16_t* Units() const noexcept
        {
            return reinterpret_cast<const char16_t*>(this + 1);
        }
        char16_t* Units() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
    };

    static constexpr std::uint32_t c_growableFlag = 0x80000000U;
    static constexpr std::uint32_t c_embeddedFlag = 0x80000000U;
    /// From here on a count is no longer kept and the text lives until the process ends.
    static constexpr std::uint32_t c_immortalCount = 0x40000000U;
    /// What such a count is set to: threads that were just counting down stay above the limit.
    static constexpr std::uint32_t c_saturatedCount = 0x60000000U;

    explicit TString(Rep* rep) noexcept : m_rep(rep) {}

    static void Retain(Rep* rep) noexcept;
    static void Release(Rep* rep) noexcept
    {
        if (rep != nullptr)
            ReleaseNonNull(rep);
    }
    static void ReleaseNonNull(Rep* rep) noexcept;
    KESPLATFORM_NO_EXPORT static std::size_t ExactBytes(size_type length) noexcept;
    /// What a text that grows unit by unit takes: a little less than a power of two.
    KESPLATFORM_NO_EXPORT static std::size_t GrowableBytes(size_type length) noexcept;
    KESPLATFORM_NO_EXPORT static Rep* Allocate(size_type length, bool growable);
    static TString Make(std::u16string_view units) { return TString(units); }
    static TString Make(std::string_view utf8) { return fromUtf8(utf8); }
    static TString Concatenate(std::u16string_view a, std::u16string_view b);
    static bool AreEqual(std::u16string_view a, std::u16string_view b) noexcept
    {
        return a.size() == b.size() &&
               (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0);
    }
    /// What the second text would be when decoded decides.
    static bool AreEqual(std::u16string_view a, std::string_view utf8) noexcept;
    static std::strong_ordering Compare(std::u16string_view a, std::u16string_view b) noexcept;
    static std::strong_ordering Compare(std::u16string_view a, std::string_view utf8) noexcept;
    KESPLATFORM_NO_EXPORT void ShrinkTo(size_type length) noexcept;
    KESPLATFORM_NO_EXPORT bool IsExclusive() const noexcept;
    KESPLATFORM_NO_EXPORT char16_t* GrowBy(size_type count);

    Rep* m_rep = nullptr;
};

inline void TString::Retain(Rep* rep) noexcept
{
    if (rep == nullptr)
        return;
    const std::uint32_t control = rep->control.load(std::memory_order_relaxed);
    if ((control & c_embeddedFlag) != 0) {
        // A block begins with the count of its owners.
        auto* base = reinterpret_cast<std::byte*>(rep) - (control & ~c_embeddedFlag);
        reinterpret_cast<std::atomic<std::size_t>*>(base)->fetch_add(1, std::memory_order_relaxed);
    } else if (control < c_immortalCount) {
        rep->control.fetch_add(1, std::memory_order_relaxed);
    } else {
        rep->control.store(c_saturatedCount, std::memory_order_relaxed);
    }
}

/// For unordered containers.
template <>
struct std::hash<TString>
{
    /// Equal texts have equal hashes.
    std::size_t operator()(const TString& text) const noexcept { return text.Hash(); }
};

/// Writes the text as UTF-8, as a std::string of it would be: filled up to the width of the stream.
/// Halves of surrogate pairs are written as U+FFFD.
KESPLATFORM_EXPORT std::ostream& operator<<(std::ostream& out, const TString& text);
