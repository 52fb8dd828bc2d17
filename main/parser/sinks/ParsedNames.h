#pragma once

#include "base/ByteHash.h"
#include "base/HashSlots.h"
#include "sinks/TerminatedText.h"
#include "slabs/AttributeBlock.h"

#include <kesplatform/TString.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string_view>

/// The element and attribute names that a parser has met: one look-up a name, and no allocation
/// for a name that was there before. Bounded; forgets everything when it has grown large, which
/// costs nothing but sharing.
///
/// Different objects may be used from different threads.
class ParsedNames
{
public:
    /// How many attributes the document type of a parse declares for the elements of one name.
    struct DeclaredAttributes
    {
        /// The number of the parse.
        std::uint64_t parse = 0;
        std::uint64_t count = 0;
    };

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
        DeclaredAttributes declaredAttributes;
        /// The last copy of the name that was put into a slab, and the number of that slab.
        const std::byte* slot = nullptr;
        ParseArena::SlabNumber slabNumber;
    };

    ParsedNames();

    /// The entry of a name, made on first use; valid until the next ForgetIfLarge.
    Entry& Find(std::u16string_view name);
    /// The same for a zero-terminated name. Quick when the name stands where it stood before, as
    /// the names of elements do while a document is scanned.
    Entry& FindElement(const char16_t* name)
    {
        Entry*& known = m_byAddress[HashAddress(name)];
        if (known == nullptr || !TerminatedText::Equals(name, known->name.view()))
            known = &Find(name);
        return *known;
    }
    /// The same for any name; quick under the same condition.
    Entry& FindElement(const TString& name)
    {
        Entry*& known = m_byAddress[HashAddress(name.utf16())];
        if (known == nullptr || known->name != name)
            known = &Find(name.view());
        return *known;
    }
    /// The name of an entry, where it fits with a reference to the slab in use, which other things
    /// that are made for an element refer to, too.
    static TString GetNameIn(ParseArena& arena, Entry& entry);

    /// The list of just these zero-terminated attribute names that elements of the name `element`
    /// had not long ago, or null. The list is valid until MakeAttributeNames is called; whoever
    /// keeps it retains it.
    static AttributeNames* FindAttributeNames(Entry& element,
                                              std::span<const char16_t* const> names);
    /// A new such list. Null when two of the names are equal. REQUIRES: at most
    /// AttributeNames::c_maxCount names.
    AttributeNames* MakeAttributeNames(Entry& element, std::span<const char16_t* const> names);

    /// Between elements: bounds what a document of very many names can make this hold.
    void ForgetIfLarge() noexcept
    {
        if (IsLarge())
            Forget();
    }
    bool IsLarge() const noexcept { return m_units > c_maxUnits; }
    /// Between documents: gives back what an unusual one has left behind.
    void ForgetUnlessSmall() noexcept
    {
        if (m_units > c_maxUnits / 32)
            Forget();
    }

    /// Changes whenever entries are forgotten.
    std::uint64_t GetGeneration() const noexcept { return m_generation; }
    /// What names are hashed with; nobody outside of the process knows it.
    const ByteHash::Seed& GetSeed() const noexcept { return m_seed; }

private:
    static constexpr std::size_t c_maxUnits = 1048576;
    /// What an entry counts beside its name.
    static constexpr std::size_t c_unitsAnEntry = 32;
    static constexpr std::size_t c_addresses = 256;

    static std::size_t HashAddress(const char16_t* name) noexcept
    {
        // The lowest bits are those of the allocator's alignment.
        constexpr std::uint64_t c_factor = 0x9E3779B97F4A7C15U;
        return (reinterpret_cast<std::uintptr_t>(name) >> 4) * c_factor >> 56;
    }

    void Forget() noexcept;

    ByteHash::Seed m_seed;
    std::uint64_t m_generation = 0;
    std::size_t m_units = 0;
    std::deque<Entry> m_entries;
    HashSlots<Entry> m_slots;
    /// The entries that were found for names at certain addresses.
    std::array<Entry*, c_addresses> m_byAddress{};
};
