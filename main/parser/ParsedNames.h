#pragma once

#include "AttributeBlock.h"

#include <kesplatform/TString.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string_view>
#include <vector>

/// The element and attribute names that a parser has met: one look-up a name, and no allocation
/// for a name that was there before. Bounded; forgets everything when it has grown large, which
/// costs nothing but sharing.
///
/// Different objects may be used from different threads.
class ParsedNames
{
public:
    struct Entry
    {
        Entry(TString text, std::uint32_t textHash) noexcept : name(std::move(text)), hash(textHash)
        {
        }
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;
        ~Entry();

        TString name;
        std::uint32_t hash;
        /// For an element: the attribute lists that elements of this name had, the latest first.
        std::array<AttributeNames*, 4> attributeNames{};
    };

    ParsedNames();

    /// The entry of a name, made on first use; valid until the next ForgetIfLarge.
    Entry& Find(std::u16string_view name);
    /// The list of these attribute names on elements of the name `element`. REQUIRES: at most
    /// AttributeNames::maxCount names. Null when two of them are equal. The list is valid until the
    /// next call; whoever keeps it retains it.
    AttributeNames* FindAttributeNames(Entry& element, std::span<const std::u16string_view> names);

    /// Between elements: bounds what a document of very many names can make this hold.
    void ForgetIfLarge() noexcept
    {
        if (m_entries.size() > maxEntries || m_units > maxUnits)
            Forget();
    }
    /// Between documents: gives back what an unusual one has left behind.
    void ForgetUnlessSmall() noexcept
    {
        if (m_entries.size() > maxEntries / 32 || m_units > maxUnits / 32)
            Forget();
    }

private:
    static constexpr std::size_t maxEntries = 32768;
    static constexpr std::size_t maxUnits = 1048576;

    std::uint32_t Hash(std::u16string_view name) const noexcept;
    void Forget() noexcept;
    void Grow();

    std::uint64_t m_seed;
    std::size_t m_units = 0;
    std::deque<Entry> m_entries;
    /// Open addressing with linear probing, at most half full; its size is a power of two.
    std::vector<Entry*> m_slots;
};
