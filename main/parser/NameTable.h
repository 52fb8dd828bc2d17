#pragma once

#include <kesplatform/TString.h>

#include <array>
#include <cstdint>
#include <string_view>

/// Remembers the names of a document's elements and attributes, which repeat, so that a name that
/// came before costs one look-up and no allocation.
///
/// The table has a fixed size: of names that crowd one place the older ones are forgotten. No
/// document can make it grow or make a look-up slow.
class NameTable
{
public:
    /// `name` as a TString. The reference is valid until the next call.
    const TString& Intern(std::u16string_view name)
    {
        const std::uint32_t hash = Hash(name);
        for (std::uint32_t probe = 0; probe < c_probes; ++probe) {
            const Slot& slot = m_slots[(hash + probe) % c_slots];
            if (slot.hash == hash && slot.name.view() == name)
                return slot.name;
        }
        return Remember(name, hash);
    }

private:
    struct Slot
    {
        TString name;
        std::uint32_t hash = 0;
    };

    static constexpr std::uint32_t c_slots = 2048;
    static constexpr std::uint32_t c_probes = 8;
    /// Longer names are not kept, so that they hold no memory.
    static constexpr std::size_t c_longestKept = 256;

    static std::uint32_t Hash(std::u16string_view name) noexcept
    {
        std::uint64_t hash = name.size();
        for (const char16_t unit : name)
            hash = (hash ^ unit) * 0x9E3779B97F4A7C15U;
        return static_cast<std::uint32_t>(hash >> 32);
    }

    const TString& Remember(std::u16string_view name, std::uint32_t hash);

    std::array<Slot, c_slots> m_slots;
    TString m_unkept;
};
