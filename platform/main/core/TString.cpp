#include <kesplatform/TString.h>

#include <kesplatform/VectorRegisters.h>
#include <kesplatform/detail/TStringBlock.h>

#include <QHashFunctions>
#include <QString>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <ostream>
#include <stdexcept>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {

constexpr std::size_t c_unitSize = sizeof(char16_t);

void CopyUnits(char16_t* to, std::u16string_view text) noexcept
{
    // memcpy takes no null pointer, not even for nothing.
    if (!text.empty())
        std::memcpy(to, text.data(), text.size() * c_unitSize);
}

/// What a text may take too much of to be filled again.
constexpr std::size_t c_littleWaste = 32;

/// How many bytes an allocation has; 0 when nobody can tell.
std::size_t RoomOf([[maybe_unused]] void* memory) noexcept
{
#if defined(__GLIBC__)
    return malloc_usable_size(memory);
#else
    return 0;
#endif
}

} // namespace

// Storage

std::size_t TString::ExactBytes(size_type length) noexcept
{
    return sizeof(Rep) + (static_cast<std::size_t>(length) + 1) * c_unitSize;
}

std::size_t TString::GrowableBytes(size_type length) noexcept
{
    // What allocators add for themselves, and round up to whole pages, must not push a block over
    // the power of two: from some power on they map and clear fresh pages each time.
    const auto rounded = [](std::size_t power) { return power - power / 1024 - 32; };
    const std::size_t exact = ExactBytes(length);
    const std::size_t power = std::bit_ceil(exact + 32);
    return rounded(power) >= exact ? rounded(power) : rounded(2 * power);
}

TString::Rep* TString::Allocate(size_type length, bool growable)
{
    if (length > c_maxLength)
        throw std::length_error("TString: the text is too long");
    const std::size_t bytes = growable ? GrowableBytes(length) : ExactBytes(length);
    void* memory = std::malloc(bytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    auto* rep = new (memory) Rep{1, static_cast<std::uint32_t>(length)};
    if (growable)
        rep->lengthAndFlag |= c_growableFlag;
    rep->Units()[length] = u'\0';
    return rep;
}

void TString::ReleaseNonNull(Rep* rep) noexcept
{
    const std::uint32_t control = rep->control.load(std::memory_order_acquire);
    if ((control & c_embeddedFlag) != 0) {
        auto* base = reinterpret_cast<std::byte*>(rep) - (control & ~c_embeddedFlag);
        reinterpret_cast<TStringBlock*>(base)->Release();
        return;
    }
    // A sole owner needs no atomic subtraction: nobody else is left who could share the text.
    if (control == 1 ||
        (control < c_immortalCount && rep->control.fetch_sub(1, std::memory_order_acq_rel) == 1))
        std::free(rep);
}

bool TString::IsExclusive() const noexcept
{
    return m_rep != nullptr && m_rep->control.load(std::memory_order_acquire) == 1;
}

TString::size_type TString::capacity() const noexcept
{
    if (m_rep == nullptr)
        return 0;
    const size_type length = m_rep->Length();
    if ((m_rep->lengthAndFlag & c_growableFlag) == 0)
        return length;
    return static_cast<size_type>((GrowableBytes(length) - sizeof(Rep)) / c_unitSize - 1);
}

char16_t* TString::GrowBy(size_type count)
{
    const size_type oldLength = length();
    if (count > c_maxLength - oldLength)
        throw std::length_error("TString: the text is too long");
    const size_type newLength = oldLength + count;
    if (IsExclusive() && newLength > capacity()) {
        void* memory = std::realloc(static_cast<void*>(m_rep), GrowableBytes(newLength));
        if (memory == nullptr)
            throw std::bad_alloc();
        m_rep = static_cast<Rep*>(memory);
    } else if (!IsExclusive()) {
        TString grown(Allocate(newLength, true));
        std::memcpy(grown.m_rep->Units(), utf16(),
                    static_cast<std::size_t>(oldLength) * c_unitSize);
        std::swap(m_rep, grown.m_rep);
        return m_rep->Units() + oldLength;
    } else if ((m_rep->lengthAndFlag & c_growableFlag) == 0) {
        return m_rep->Units() + oldLength;
    }
    m_rep->lengthAndFlag = static_cast<std::uint32_t>(newLength) | c_growableFlag;
    m_rep->Units()[newLength] = u'\0';
    return m_rep->Units() + oldLength;
}

char16_t* TString::resizeForOverwrite(size_type length)
{
    // A text that is filled again and again stays where it is, unless most of it would be waste.
    if (length > 0 && length <= c_maxLength && m_rep != nullptr &&
        m_rep->control.load(std::memory_order_acquire) == 1) {
        const std::size_t room = RoomOf(m_rep);
        const std::size_t needed = ExactBytes(length);
        if (needed <= room && room <= 2 * needed + c_littleWaste) {
            m_rep->lengthAndFlag = static_cast<std::uint32_t>(length);
            m_rep->Units()[length] = u'\0';
            return m_rep->Units();
        }
    }
    *this = length <= 0 ? TString() : TString(Allocate(length, false));
    return m_rep == nullptr ? nullptr : m_rep->Units();
}

char16_t* TString::resize(size_type length)
{
    if (length > this->length()) {
        GrowBy(length - this->length());
    } else if (length < this->length()) {
        if (IsExclusive()) {
            m_rep->lengthAndFlag =
                static_cast<std::uint32_t>(length) | (m_rep->lengthAndFlag & c_growableFlag);
            m_rep->Units()[length] = u'\0';
        } else {
            *this = TString(view().substr(0, static_cast<std::size_t>(length)));
        }
    } else if (m_rep != nullptr && !IsExclusive()) {
        *this = TString(view());
    }
    return m_rep == nullptr ? nullptr : m_rep->Units();
}

// Construction

TString::TString(std::u16string_view text)
{
    if (text.empty())
        return;
    m_rep = Allocate(static_cast<size_type>(text.size()), false);
    CopyUnits(m_rep->Units(), text);
}

TString::TString(const char16_t* text)
    : TString(text == nullptr ? std::u16string_view() : std::u16string_view(text))
{
}

TString::TString(const char16_t* text, size_type length)
    : TString(length <= 0 ? std::u16string_view()
                          : std::u16string_view(text, static_cast<std::size_t>(length)))
{
}

TString::TString(const char* utf8)
    : TString(utf8 == nullptr ? TString() : fromUtf8(std::string_view(utf8)))
{
}

TString::TString(const QString& text)
    : TString(std::u16string_view(reinterpret_cast<const char16_t*>(text.utf16()),
                                  static_cast<std::size_t>(text.size())))
{
}

TString::TString(size_type length, char16_t unit)
{
    if (length <= 0)
        return;
    m_rep = Allocate(length, false);
    std::fill_n(m_rep->Units(), length, unit);
}

TString::operator QString() const
{
    return QString(reinterpret_cast<const QChar*>(utf16()), length());
}

// Growing

TString& TString::append(std::u16string_view text)
{
    if (text.empty())
        return *this;
    const char16_t* first = utf16();
    // Growing moves this text, and with it what is part of it.
    const bool isOwnText =
        std::less_equal<>()(first, text.data()) && std::less<>()(text.data(), first + length());
    const std::ptrdiff_t offset = isOwnText ? text.data() - first : 0;
    char16_t* to = GrowBy(static_cast<size_type>(text.size()));
    CopyUnits(to, isOwnText ? std::u16string_view(utf16() + offset, text.size()) : text);
    return *this;
}

TString& TString::append(const TString& text)
{
    if (m_rep == nullptr)
        return *this = text;
    return append(text.view());
}

TString& TString::append(char16_t unit)
{
    *GrowBy(1) = unit;
    return *this;
}

TString TString::Concatenate(std::u16string_view a, std::u16string_view b)
{
    if (a.size() + b.size() > static_cast<std::size_t>(c_maxLength))
        throw std::length_error("TString: the text is too long");
    TString result(Allocate(static_cast<size_type>(a.size() + b.size()), false));
    CopyUnits(result.m_rep->Units(), a);
    CopyUnits(result.m_rep->Units() + a.size(), b);
    return result;
}

void TString::ShrinkTo(size_type length) noexcept
{
    const std::size_t bytes = sizeof(Rep) + (static_cast<std::size_t>(length) + 1) * c_unitSize;
    // Where memory cannot be given back, the text stays in the larger room.
    if (void* memory = std::realloc(static_cast<void*>(m_rep), bytes))
        m_rep = static_cast<Rep*>(memory);
    m_rep->lengthAndFlag = static_cast<std::uint32_t>(length);
    m_rep->Units()[length] = u'\0';
}

// Comparing

std::strong_ordering TString::Compare(std::u16string_view a, std::u16string_view b) noexcept
{
    const std::size_t common = std::min(a.size(), b.size());
    constexpr std::size_t c_step = sizeof(std::uint64_t) / c_unitSize;
    std::size_t i = 0;
    while (i + c_step <= common &&
           std::memcmp(a.data() + i, b.data() + i, sizeof(std::uint64_t)) == 0)
        i += c_step;
    for (; i < common; ++i) {
        if (a[i] != b[i])
            return a[i] <=> b[i];
    }
    return a.size() <=> b.size();
}

std::size_t TString::Hash() const noexcept
{
    // Fixed at the first use: a seed that changed later would unhinge the tables made before.
    static const std::size_t s_seed = QHashSeed::globalSeed();
    const std::size_t hash =
        qHashBits(utf16(), static_cast<std::size_t>(length()) * c_unitSize, s_seed);
    // It may leave them in use.
    ClearUpperVectorHalves();
    return hash;
}
