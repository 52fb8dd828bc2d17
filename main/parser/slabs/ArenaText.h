#pragma once

#include "slabs/ParseArena.h"

#include <kesplatform/TString.h>

#include <cstddef>
#include <string>
#include <string_view>

/// Gathers a run of text, which comes in pieces, at the very place in an arena where the next
/// object will begin: a run that is short, as most are, is copied once, and one that nobody wants
/// costs no memory.
///
/// While a run is open nothing may be taken from the arena.
class ArenaText
{
public:
    /// `arena` must outlive this.
    explicit ArenaText(ParseArena& arena) noexcept : m_arena(arena) {}

    /// `piece` is copied. When this throws, the run is as it was.
    void Append(std::u16string_view piece);
    bool IsEmpty() const noexcept { return m_length == 0; }
    /// The run so far, valid until the next call of another function.
    std::u16string_view View() const noexcept;

    /// Ends the run, which must not be empty, and makes a text of it. When this throws, the run is
    /// as it was.
    TString Take();
    /// Ends the run, of which nothing is kept.
    void Drop() noexcept;

private:
    bool IsInArena() const noexcept { return m_spilled.empty(); }

    ParseArena& m_arena;
    std::size_t m_length = 0;
    /// The whole run, once it has become too long for the place in the arena.
    std::u16string m_spilled;
};
