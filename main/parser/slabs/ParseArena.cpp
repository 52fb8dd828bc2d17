#include "slabs/ParseArena.h"

#include "slabs/AttributeBlock.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

/// How many arenas there were.
std::atomic<std::uint64_t> s_arenas{0};

class SlabOwner final : public TStringBlock::Owner
{
public:
    void Destroy(TStringBlock* block) noexcept override
    {
        auto* slab = static_cast<ParseSlab*>(block);
        for (ParseSlab::KeptNames* kept = slab->FirstKeptNames(); kept != nullptr;
             kept = kept->next)
            kept->names->Release();
        std::free(slab);
    }
};

} // namespace

TStringBlock::Owner& ParseSlab::GetSlabOwner() noexcept
{
    static constinit SlabOwner s_owner;
    return s_owner;
}

ParseSlab::ParseSlab(std::size_t bytes) noexcept : TStringBlock(GetSlabOwner()), m_bytes(bytes) {}

ParseSlab* ParseSlab::Create(std::size_t bytes)
{
    void* memory = std::malloc(bytes);
    if (memory == nullptr)
        throw std::bad_alloc();
    return new (memory) ParseSlab(bytes);
}

ParseArena::ParseArena() noexcept
    : m_slabNumber{1 + s_arenas.fetch_add(1, std::memory_order_relaxed), 0}
{
}

ParseArena::ParseArena(std::size_t expectedBytes) noexcept : ParseArena()
{
    m_expectedBytes = RoundUp(expectedBytes);
}

std::size_t ParseArena::GetNextSlabBytes() const noexcept
{
    if (m_expectedBytes == 0)
        return m_nextSlabBytes;
    return sizeof(ParseSlab) + std::min(m_expectedBytes, ParseSlab::c_maxBytes - sizeof(ParseSlab));
}

void ParseArena::OpenSlab(std::size_t bytes)
{
    const std::size_t needed = sizeof(ParseSlab) + bytes;
    ParseSlab* slab = ParseSlab::Create(std::max(GetNextSlabBytes(), needed));
    Close();
    m_slab = slab;
    m_next = slab->Begin();
    m_end = slab->End();
    m_references = static_cast<std::size_t>(m_end - m_next) / c_smallestObject;
    // Nobody else has seen it yet.
    slab->RetainUnshared(m_references);
    if (m_expectedBytes > 0)
        m_expectedBytes -= std::min(m_expectedBytes, static_cast<std::size_t>(m_end - m_next));
    else
        m_nextSlabBytes = std::min(m_nextSlabBytes * 2, ParseSlab::c_maxBytes);
}

void ParseArena::Close() noexcept
{
    if (ParseSlab* slab = std::exchange(m_slab, nullptr)) {
        if (m_isShared)
            slab->Release(m_references + 1);
        else
            slab->ReleaseUnshared(m_references + 1);
    }
    ++m_slabNumber.slab;
    m_next = nullptr;
    m_end = nullptr;
}

TString ParseArena::MakeText(std::u16string_view text)
{
    if (!IsTextForSlab(text))
        return TString(text);
    ParseSlab* slab = nullptr;
    std::byte* slot = Allocate(TStringBlock::SlotSize(text.size()), slab);
    slab->WriteSlot(slot, text);
    return TStringBlock::AdoptSlot(slot);
}

std::byte* ParseArena::AllocateNamed(std::size_t bytes, AttributeNames& names, ParseSlab*& slab)
{
    // One piece for both, so that they come into the same slab.
    const std::size_t keptAt = RoundUp(bytes);
    const bool fits = static_cast<std::size_t>(m_end - m_next) >= keptAt;
    if (fits && names.IsKeptIn(m_slabNumber))
        return Allocate(bytes, slab);
    std::byte* object = Allocate(keptAt + sizeof(ParseSlab::KeptNames), slab);
    names.Retain();
    names.SetKeptIn(m_slabNumber);
    slab->FirstKeptNames() =
        new (object + keptAt) ParseSlab::KeptNames{slab->FirstKeptNames(), &names};
    return object;
}
