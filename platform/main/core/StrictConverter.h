#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

struct UConverter;

/// A converter of ICU from bytes to UTF-16, and a check of what it passes over by itself.
/// Different objects may be used from different threads.
class StrictConverter
{
public:
    /// Knows no encoding of names with other characters than those that names of encodings have,
    /// for ICU takes options in a name. Throws std::bad_alloc.
    explicit StrictConverter(std::string_view encoding);
    ~StrictConverter();
    StrictConverter(const StrictConverter&) = delete;
    StrictConverter& operator=(const StrictConverter&) = delete;

    /// False for an encoding that nobody knows, and for those with states in which something may
    /// get lost unnoticed. Nothing else may be called then.
    bool IsKnown() const noexcept { return m_converter != nullptr; }
    /// Whether it is a name of UTF-8.
    bool IsUtf8() const noexcept;
    /// Whether each byte below 0x80 is that character of US-ASCII, whatever stands around it.
    bool KeepsAscii();

    /// Bytes that mean no character.
    struct Fault
    {
        std::size_t offset;
        /// The bytes end before the character does that begins there.
        bool isCut;
    };

    /// Begins with these bytes, which must live as long as they are converted.
    void Begin(std::string_view bytes);
    /// The next piece of the text, which no pair is divided by; empty at the end, and where the
    /// bytes do not decode. Valid until the next one. Throws std::bad_alloc.
    std::u16string_view Next();
    /// Why there is no other piece; nothing where the text has ended.
    const std::optional<Fault>& GetFault() const noexcept { return m_fault; }

private:
    struct Close
    {
        void operator()(UConverter* converter) const noexcept;
    };

    void FindLineEnds();
    void FindUndefined();
    std::size_t Convert(std::size_t kept);
    void Finish();
    std::size_t GetOffset(std::size_t index) const noexcept;
    std::size_t CountWhole(std::size_t count);

    std::unique_ptr<UConverter, Close> m_converter;
    /// What stands for the bytes from A0 on; null where the converter knows it.
    const char16_t* m_upper = nullptr;
    /// The encoding is one of EBCDIC, where systems differ in which of two bytes ends a line.
    bool m_hasTwoLineEnds = false;
    /// A bit for each byte from 80 to 9F that the encoding leaves undefined.
    std::uint32_t m_undefined = 0;

    std::string_view m_bytes;
    std::size_t m_at = 0;
    /// Where the last call of the converter began.
    std::size_t m_from = 0;
    bool m_isDone = true;
    /// The first half of a pair of which the second is to come, else zero, and its offset.
    char16_t m_half = 0;
    std::size_t m_halfOffset = 0;
    std::optional<Fault> m_fault;
    /// The fault that stands behind the bytes, if there is one.
    std::optional<Fault> m_faultBehind;
    std::vector<char16_t> m_units;
    /// Where the character of each unit begins, counted from m_from.
    std::vector<std::int32_t> m_offsets;
};
