#pragma once

#include "slabs/ParseArena.h"

#include <array>
#include <cstddef>

/// Memory in the slabs of an arena for lists that grow item by item while somebody looks at them:
/// a short one lies in a piece of just its size, and the piece that it has outgrown serves the next
/// list of that size.
///
/// Keeps one piece of each size, so that it holds on to few slabs; others are dropped. For one
/// thread at a time.
class ListPieces
{
public:
    /// Lists that take more are no business of this.
    static constexpr std::size_t c_maxBytes = 136;

    explicit ListPieces(ParseArena& arena) noexcept : m_arena(arena) {}
    ListPieces(const ListPieces&) = delete;
    ListPieces& operator=(const ListPieces&) = delete;
    ~ListPieces();

    /// A piece, aligned for pointers, with a reference to `slab` that goes with it. REQUIRES: a
    /// multiple of the size of a pointer, at most c_maxBytes.
    std::byte* Take(std::size_t bytes, ParseSlab*& slab);
    /// Takes over an empty piece, which may come from another arena, and the reference to `slab`.
    /// REQUIRES: as above.
    void GiveBack(std::byte* memory, std::size_t bytes, ParseSlab& slab) noexcept;

private:
    struct Piece
    {
        std::byte* memory = nullptr;
        ParseSlab* slab = nullptr;
    };

    Piece& PieceOf(std::size_t bytes) noexcept { return m_pieces[bytes / sizeof(void*)]; }

    ParseArena& m_arena;
    std::array<Piece, c_maxBytes / sizeof(void*) + 1> m_pieces;
};
