#pragma once

#include <kesplatform/TString.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string_view>

/// Appends text to a string in place, much faster than piece by piece. While the buffer lives the
/// string holds more than was written; the end of the buffer cuts it to what was committed, or to
/// what it was at first.
///
/// To write is to Reserve room, to fill some of it, and to say with SetEnd how far it was filled.
class XMLTextBuffer
{
public:
    explicit XMLTextBuffer(TString& text) noexcept : m_text(text), m_keptLength(text.length()) {}
    XMLTextBuffer(const XMLTextBuffer&) = delete;
    XMLTextBuffer& operator=(const XMLTextBuffer&) = delete;
    ~XMLTextBuffer()
    {
        if (m_to != nullptr)
            m_text.resize(m_keptLength);
    }

    void Commit() noexcept { m_keptLength = GetLength(); }

    /// All that the string holds up to the end that was set last.
    TString::size_type GetLength() const noexcept
    {
        return m_to == nullptr ? m_keptLength : m_to - m_text.utf16();
    }
    /// All that the string holds up to there; valid until more is written.
    std::u16string_view GetText() const noexcept
    {
        return {m_text.utf16(), static_cast<std::size_t>(GetLength())};
    }
    /// Drops what was written behind `length`.
    void Truncate(TString::size_type length) noexcept { m_to -= GetLength() - length; }

    /// Where to write next; there is room for `units` units.
    char16_t* Reserve(std::size_t units)
    {
        if (static_cast<std::size_t>(m_roomEnd - m_to) < units)
            Grow(units);
        return m_to;
    }
    void SetEnd(char16_t* end) noexcept { m_to = end; }

    void Append(std::u16string_view text)
    {
        SetEnd(std::copy(text.begin(), text.end(), Reserve(text.size())));
    }

    void Append(char16_t unit)
    {
        char16_t* to = Reserve(1);
        *to++ = unit;
        SetEnd(to);
    }

private:
    static constexpr std::size_t c_minRoom = 200;

    void Grow(std::size_t units);

    TString& m_text;
    TString::size_type m_keptLength;
    char16_t* m_to = nullptr;
    char16_t* m_roomEnd = nullptr;
};

inline void XMLTextBuffer::Grow(std::size_t units)
{
    const TString::size_type used = GetLength();
    const auto maximum = static_cast<std::size_t>(TString::c_maxLength - used);
    if (units > maximum)
        throw std::length_error("XMLTextBuffer: the text is too long");
    m_text.resize(used +
                  static_cast<TString::size_type>(std::min(std::max(units, c_minRoom), maximum)));
    const TString::size_type length = std::min(m_text.capacity(), TString::c_maxLength);
    char16_t* first = m_text.resize(length);
    m_to = first + used;
    m_roomEnd = first + length;
}
