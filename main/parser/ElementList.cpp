#include <kescorexml/detail/ElementList.h>

#include <kescorexml/DOMElement.h>

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>

ElementList::~ElementList()
{
    assert(empty());
    std::free(m_header);
}

void ElementList::Reallocate(std::size_t capacity)
{
    if (capacity > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("DOMElement: too many children");
    auto* header = static_cast<Header*>(std::malloc(sizeof(Header) + capacity * sizeof(Owner)));
    if (header == nullptr)
        throw std::bad_alloc();
    header->size = static_cast<std::uint32_t>(size());
    header->capacity = static_cast<std::uint32_t>(capacity);
    auto* to = reinterpret_cast<Owner*>(header + 1);
    std::uninitialized_move_n(begin(), size(), to);
    std::destroy_n(begin(), size());
    std::free(m_header);
    m_header = header;
}

void ElementList::ReserveMore(std::size_t count)
{
    const std::size_t needed = size() + count;
    const std::size_t capacity = m_header == nullptr ? 0 : m_header->capacity;
    if (needed > capacity)
        Reallocate(std::max({needed, capacity + capacity / 2, std::size_t{3}}));
}

void ElementList::ReserveExactly(std::size_t count)
{
    const std::size_t needed = size() + count;
    if (needed > (m_header == nullptr ? 0 : m_header->capacity))
        Reallocate(needed);
}

void ElementList::Insert(std::size_t index, Owner&& element) noexcept
{
    Insert(index, &element, 1);
}

void ElementList::Insert(std::size_t index, Owner* elements, std::size_t count) noexcept
{
    if (count == 0)
        return;
    assert(m_header != nullptr && m_header->size + count <= m_header->capacity);
    Owner* first = First();
    for (std::size_t i = m_header->size; i > index; --i) {
        new (first + i - 1 + count) Owner(std::move(first[i - 1]));
        std::destroy_at(first + i - 1);
    }
    std::uninitialized_move_n(elements, count, first + index);
    m_header->size += static_cast<std::uint32_t>(count);
}

ElementList::Owner ElementList::Take(std::size_t index) noexcept
{
    Owner* first = First();
    Owner taken = std::move(first[index]);
    std::move(first + index + 1, first + m_header->size, first + index);
    std::destroy_at(first + m_header->size - 1);
    --m_header->size;
    return taken;
}

ElementList::Owner ElementList::PopBack() noexcept
{
    --m_header->size;
    Owner* last = First() + m_header->size;
    Owner taken = std::move(*last);
    std::destroy_at(last);
    return taken;
}
