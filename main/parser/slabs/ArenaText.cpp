#include "slabs/ArenaText.h"

#include <kesplatform/detail/TStringBlock.h>

#include <algorithm>
#include <span>

namespace {

/// A run that needed more room than this gives it back.
constexpr std::size_t c_roomKept = 0x10000;

} // namespace

std::u16string_view ArenaText::View() const noexcept
{
    if (!IsInArena() || m_length == 0)
        return m_spilled;
    return {TStringBlock::UnitsOfSlot(m_arena.GetRoom().data()), m_length};
}

void ArenaText::Append(std::u16string_view piece)
{
    if (IsInArena()) {
        const std::span<std::byte> room = m_arena.GetRoom();
        const std::size_t length = m_length + piece.size();
        if (TStringBlock::SlotSize(length) <= std::min(room.size(), ParseArena::c_maxObjectBytes)) {
            std::copy(piece.begin(), piece.end(),
                      TStringBlock::UnitsOfSlot(room.data()) + m_length);
            m_length = length;
            return;
        }
        m_spilled.reserve(length);
        m_spilled = View();
    }
    m_spilled += piece;
    m_length = m_spilled.size();
}

TString ArenaText::Take()
{
    if (!IsInArena()) {
        TString text = m_arena.MakeText(m_spilled);
        Drop();
        return text;
    }
    std::byte* const slot = m_arena.GetRoom().data();
    TStringBlock::UnitsOfSlot(slot)[m_length] = u'\0';
    ParseSlab* slab = m_arena.GetSlab();
    slab->FinishSlot(slot, m_length);
    m_arena.Allocate(TStringBlock::SlotSize(m_length), slab);
    m_length = 0;
    return TStringBlock::AdoptSlot(slot);
}

void ArenaText::Drop() noexcept
{
    m_length = 0;
    m_spilled.clear();
    if (m_spilled.capacity() > c_roomKept)
        m_spilled = std::u16string();
}
