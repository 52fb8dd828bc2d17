#include <kescorexml/detail/StandaloneContent.h>

#include "slabs/ParseArena.h"

#include <kescorexml/StandaloneDOMElement.h>

#include <algorithm>
#include <cassert>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

StandaloneContent::~StandaloneContent()
{
    assert(empty());
    FreeMemory();
}

void StandaloneContent::FreeMemory() noexcept
{
    if (m_header == nullptr)
        return;
    if (m_header->slabOffset != 0)
        ParseSlab::At(m_header, static_cast<std::uint32_t>(m_header->slabOffset)).Release();
    else
        ::operator delete(m_header);
}

ParseSlab* StandaloneContent::TakeSlab() noexcept
{
    assert(empty());
    if (m_header == nullptr || m_header->slabOffset == 0)
        return nullptr;
    const auto offset = static_cast<std::uint32_t>(m_header->slabOffset);
    return &ParseSlab::At(std::exchange(m_header, nullptr), offset);
}

void StandaloneContent::Reallocate(std::size_t capacity)
{
    if (capacity > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("StandaloneDOMElement: too much content");
    void* const memory = ::operator new(sizeof(Header) + capacity * sizeof(Node));
    auto* const header = new (memory)
        Header{static_cast<std::uint32_t>(size()), static_cast<std::uint32_t>(capacity), 0};
    std::uninitialized_move_n(begin(), size(), reinterpret_cast<Node*>(header + 1));
    std::destroy_n(begin(), size());
    FreeMemory();
    m_header = header;
}

void StandaloneContent::Reserve(std::size_t count)
{
    if (count > 0 && (m_header == nullptr || count > m_header->capacity))
        Reallocate(count);
}

void StandaloneContent::FillIn(ParseArena& arena, Node* nodes, std::size_t count)
{
    assert(empty());
    const std::size_t bytes = sizeof(Header) + count * sizeof(Node);
    if (m_header != nullptr || bytes > ParseArena::c_maxObjectBytes) {
        Reserve(count);
    } else {
        ParseSlab* slab = nullptr;
        std::byte* const memory = arena.Allocate(bytes, slab);
        m_header =
            new (memory) Header{0, static_cast<std::uint32_t>(count), slab->OffsetOf(memory)};
    }
    std::uninitialized_move_n(nodes, count, First());
    m_header->size = static_cast<std::uint32_t>(count);
}

void StandaloneContent::Insert(std::size_t index, Node&& node)
{
    const std::size_t count = size();
    if (m_header == nullptr || count == m_header->capacity)
        Reallocate(std::max(count + count / 2, std::size_t{2}));
    Node* const first = First();
    new (first + count) Node(std::move(node));
    std::rotate(first + index, first + count, first + count + 1);
    ++m_header->size;
}

void StandaloneContent::Erase(const_iterator node) noexcept
{
    Node* const at = First() + (node - First());
    std::move(at + 1, end(), at);
    Truncate(size() - 1);
}

StandaloneContent::Node StandaloneContent::PopBack() noexcept
{
    Node last = std::move(back());
    Truncate(size() - 1);
    return last;
}

void StandaloneContent::Truncate(std::size_t count) noexcept
{
    std::destroy(begin() + count, end());
    if (m_header != nullptr)
        m_header->size = static_cast<std::uint32_t>(count);
}
