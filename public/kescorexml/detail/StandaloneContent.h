#pragma once

#include <kesplatform/TString.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

class ParseArena;
class ParseSlab;
class StandaloneDOMElement;

/// What a StandaloneDOMElement holds: texts and child elements in order, a contiguous sequence
/// behind one pointer, so that an element without content pays for nothing else. Not copyable. What
/// is not inline serves the library alone and is not exported. Const operations may run side by
/// side.
class StandaloneContent
{
public:
    /// A text, or an element and no text.
    struct Node
    {
        TString text;
        std::unique_ptr<StandaloneDOMElement> element;

        bool IsText() const noexcept { return element == nullptr; }
    };
    using iterator = Node*;
    using const_iterator = const Node*;

    StandaloneContent() noexcept = default;
    StandaloneContent(const StandaloneContent&) = delete;
    StandaloneContent& operator=(const StandaloneContent&) = delete;
    /// The list must be empty: destroying elements is their parent's business, which does it
    /// without recursion.
    ~StandaloneContent();

    std::size_t size() const noexcept { return m_header == nullptr ? 0 : m_header->size; }
    bool empty() const noexcept { return size() == 0; }
    iterator begin() noexcept { return m_header == nullptr ? nullptr : First(); }
    iterator end() noexcept { return begin() + size(); }
    const_iterator begin() const noexcept { return m_header == nullptr ? nullptr : First(); }
    const_iterator end() const noexcept { return begin() + size(); }
    Node& operator[](std::size_t index) noexcept { return First()[index]; }
    const Node& operator[](std::size_t index) const noexcept { return First()[index]; }
    Node& back() noexcept { return First()[m_header->size - 1]; }

    /// Makes room for just so many nodes in all.
    void Reserve(std::size_t count);
    /// Moves so many nodes into an empty list, into memory of a parse where that will do. When this
    /// throws, they are where they were.
    void FillIn(ParseArena& arena, Node* nodes, std::size_t count);
    /// Inserts in front of `index`; amortised constant time at the end. When this throws, the list
    /// is as it was, and so is the node.
    void Insert(std::size_t index, Node&& node);
    void PushBack(Node&& node) { Insert(size(), std::move(node)); }
    void Erase(const_iterator node) noexcept;
    Node PopBack() noexcept;
    /// Drops the nodes behind the first `count`.
    void Truncate(std::size_t count) noexcept;
    /// Leaves the memory of an empty list, and the reference to its slab, to the caller. Null, and
    /// nothing is changed, when it lies in no slab.
    ParseSlab* TakeSlab() noexcept;

private:
    struct Header
    {
        std::uint32_t size;
        std::uint32_t capacity;
        /// Where in a slab of a parse the list lies; 0 for a list on the heap.
        std::uint64_t slabOffset;
    };

    Node* First() const noexcept { return reinterpret_cast<Node*>(m_header + 1); }
    void Reallocate(std::size_t capacity);
    void FreeMemory() noexcept;

    Header* m_header = nullptr;
};
