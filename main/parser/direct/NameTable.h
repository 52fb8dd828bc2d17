#pragma once

#include "base/HashSlots.h"
#include "sinks/ParsedNames.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

/// The names of a parser by their bytes in UTF-8, as they stand in documents. Bounded as
/// ParsedNames is, to whose entries it leads.
///
/// For one thread at a time.
class NameTable
{
public:
    struct Name
    {
        std::string bytes;
        std::uint32_t hash;
        ParsedNames::Entry* entry;
        /// Of the last tag that had an attribute of this name.
        std::uint64_t lastTag = 0;
        /// For an element: its attributes in the last tag that had some, but not very many.
        std::vector<Name*> lastAttributes{};
        /// For an element: that of the start tag behind its last one.
        Name* following = nullptr;
    };

    /// `names` must outlive the table.
    explicit NameTable(ParsedNames& names) : m_names(names) {}
    NameTable(const NameTable&) = delete;
    NameTable& operator=(const NameTable&) = delete;

    /// The entry of a name, which is valid UTF-8; made on first use and valid until the next
    /// ForgetIfLarge.
    Name& Find(std::string_view bytes);
    /// The element that began behind the latest one when one of that name began the last time; null
    /// when it is not known.
    Name* GuessElement() const noexcept
    {
        return m_element == nullptr ? nullptr : m_element->following;
    }
    /// An element begins.
    void NoteElement(Name& name) noexcept
    {
        if (m_element != nullptr)
            m_element->following = &name;
        m_element = &name;
    }
    /// Between elements; see ParsedNames.
    void ForgetIfLarge() noexcept;
    /// Forgets all when ParsedNames has forgotten what the entries lead to.
    void ForgetWhatIsGone() noexcept;

private:
    Name& Add(std::string_view bytes, std::uint32_t hash);

    ParsedNames& m_names;
    std::uint64_t m_generation = 0;
    std::deque<Name> m_entries;
    Name* m_element = nullptr;
    HashSlots<Name> m_slots;
};
