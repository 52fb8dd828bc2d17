#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

class AttributeNames;

/// A piece of memory that what a parse makes is put into, one thing after the other: elements,
/// attributes, texts and lists of children. Each of them holds a reference; the last one to go
/// frees the whole.
///
/// Slabs are small, so that something which outlives its document holds on to little.
class ParseSlab final : public TStringBlock
{
public:
    static constexpr std::size_t maxBytes = 8192;

    /// Starts with one reference, that of the caller.
    static ParseSlab* Create(std::size_t bytes);

    std::byte* Begin() noexcept { return reinterpret_cast<std::byte*>(this + 1); }
    std::byte* End() noexcept { return reinterpret_cast<std::byte*>(this) + m_bytes; }
    std::uint32_t OffsetOf(const void* object) const noexcept
    {
        return static_cast<std::uint32_t>(static_cast<const std::byte*>(object) -
                                          reinterpret_cast<const std::byte*>(this));
    }
    static ParseSlab& At(const void* object, std::uint32_t offset) noexcept
    {
        auto* bytes = static_cast<const std::byte*>(object) - offset;
        return *reinterpret_cast<ParseSlab*>(const_cast<std::byte*>(bytes));
    }

    /// A list of names that blocks in this slab refer to; kept alive as long as the slab.
    struct KeptNames
    {
        KeptNames* next;
        AttributeNames* names;
    };
    KeptNames*& FirstKeptNames() noexcept { return m_names; }

private:
    explicit ParseSlab(std::size_t bytes) noexcept;

    static Owner& GetSlabOwner() noexcept;

    std::size_t m_bytes;
    KeptNames* m_names = nullptr;
};

/// Hands out memory from slabs, each bigger than the one before up to ParseSlab::maxBytes. One
/// parse uses one arena, on one thread; what came out of it may end on any.
class KESCOREXML_EXPORT ParseArena
{
public:
    /// What is larger is not worth a place in a slab.
    static constexpr std::size_t maxObject = ParseSlab::maxBytes / 8;

    ParseArena() = default;
    ParseArena(const ParseArena&) = delete;
    ParseArena& operator=(const ParseArena&) = delete;
    ~ParseArena() { Close(); }

    /// Room for one object, aligned for pointers, with a reference to `slab` that goes with it.
    /// REQUIRES: at most maxObject bytes.
    std::byte* Allocate(std::size_t bytes, ParseSlab*& slab)
    {
        bytes = (bytes + alignof(void*) - 1) & ~(alignof(void*) - 1);
        if (static_cast<std::size_t>(m_end - m_next) < bytes)
            OpenSlab(bytes);
        --m_references;
        slab = m_slab;
        std::byte* object = m_next;
        m_next += bytes;
        return object;
    }

    /// Lets go of the slab in use; what is in it stays.
    void Close() noexcept;

    TString MakeText(std::u16string_view text);
    /// Room for attributes named by `names`, which `slab` keeps alive.
    std::byte* AllocateNamed(std::size_t bytes, AttributeNames& names, ParseSlab*& slab);

private:
    static constexpr std::size_t c_firstSlabBytes = 1024;

    void OpenSlab(std::size_t bytes);

    ParseSlab* m_slab = nullptr;
    std::byte* m_next = nullptr;
    std::byte* m_end = nullptr;
    /// References to the slab that were taken at once and not given out yet.
    std::size_t m_references = 0;
    std::size_t m_nextSlabBytes = c_firstSlabBytes;
};
