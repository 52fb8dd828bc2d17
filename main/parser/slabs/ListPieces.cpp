#include "slabs/ListPieces.h"

#include <cassert>
#include <utility>

ListPieces::~ListPieces()
{
    for (const Piece& piece : m_pieces) {
        if (piece.slab != nullptr)
            piece.slab->Release();
    }
}

std::byte* ListPieces::Take(std::size_t bytes, ParseSlab*& slab)
{
    assert(bytes <= c_maxBytes && bytes % sizeof(void*) == 0);
    const Piece piece = std::exchange(PieceOf(bytes), {});
    if (piece.slab == nullptr)
        return m_arena.Allocate(bytes, slab);
    slab = piece.slab;
    return piece.memory;
}

void ListPieces::GiveBack(std::byte* memory, std::size_t bytes, ParseSlab& slab) noexcept
{
    assert(bytes <= c_maxBytes && bytes % sizeof(void*) == 0);
    const Piece dropped = std::exchange(PieceOf(bytes), {memory, &slab});
    if (dropped.slab != nullptr)
        dropped.slab->Release();
}
