#pragma once

#include <kescorexml/DOMElement.h>
#include <kescorexml/Export.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <ranges>
#include <type_traits>
#include <vector>

/// A walk over a subtree in which every element comes before its descendants and the children of
/// each element are taken from the last to the first: for R with children A (with A1) and B (with
/// B1), that is R, B, B1, A, A1. No recursion. The tree must not change during a walk.
///
/// T is DOMElement or const DOMElement. Different objects may be used from different threads.
namespace DOMElementTraversal {

/// Yields the elements one by one.
template <typename T>
class PreorderGeneratorTemplate
{
public:
    /// `start` comes first.
    PreorderGeneratorTemplate(T& start);

    /// The next element, or null when the walk is over.
    T* Next();

private:
    std::vector<T*> m_stack;
};

/// Stands at one element of a walk. Copies continue independently from the same point. A forward
/// iterator, each copy of which takes the time and memory of one for every element that is waiting.
template <typename T>
class PreorderIteratorTemplate
{
public:
    /// What generic code asks of an iterator.
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::remove_cv_t<T>;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    /// The end.
    PreorderIteratorTemplate() noexcept = default;
    /// `start` comes first.
    PreorderIteratorTemplate(T& start);
    /// Goes on from where `other` stands.
    PreorderIteratorTemplate(const PreorderIteratorTemplate& other);
    PreorderIteratorTemplate(PreorderIteratorTemplate&& other) noexcept = default;
    /// Goes on from where `other` stands.
    PreorderIteratorTemplate& operator=(const PreorderIteratorTemplate& other);
    PreorderIteratorTemplate& operator=(PreorderIteratorTemplate&& other) noexcept = default;
    ~PreorderIteratorTemplate() = default;

    /// At the end this does nothing.
    PreorderIteratorTemplate& operator++();
    /// Returns a copy from before.
    PreorderIteratorTemplate operator++(int);
    /// The element. REQUIRES: not the end.
    T& operator*() const noexcept { return *m_current; }
    T* operator->() const noexcept { return m_current; }

    /// Compares the elements stood at and nothing else.
    friend bool operator==(const PreorderIteratorTemplate& a,
                           const PreorderIteratorTemplate& b) noexcept
    {
        return a.m_current == b.m_current;
    }

private:
    std::unique_ptr<PreorderGeneratorTemplate<T>> m_generator;
    T* m_current = nullptr;
};

/// The walk as a range, which may be walked more than once. Its iterators outlive it.
template <typename T>
class PreorderTraversalTemplate
{
public:
    /// The elements from `start` on.
    PreorderTraversalTemplate(T& start) : m_begin(start) {}

    /// For loops.
    [[nodiscard]] PreorderIteratorTemplate<T> begin() const { return m_begin; }
    [[nodiscard]] PreorderIteratorTemplate<T> end() const { return m_end; }

private:
    PreorderIteratorTemplate<T> m_begin;
    PreorderIteratorTemplate<T> m_end;
};

/// For elements that may be changed, and for those that may not.
using PreorderGenerator = PreorderGeneratorTemplate<DOMElement>;
using ConstPreorderGenerator = PreorderGeneratorTemplate<const DOMElement>;
using PreorderIterator = PreorderIteratorTemplate<DOMElement>;
using ConstPreorderIterator = PreorderIteratorTemplate<const DOMElement>;
using PreorderTraversal = PreorderTraversalTemplate<DOMElement>;
using ConstPreorderTraversal = PreorderTraversalTemplate<const DOMElement>;

extern template class KESCOREXML_EXPORT PreorderGeneratorTemplate<DOMElement>;
extern template class KESCOREXML_EXPORT PreorderGeneratorTemplate<const DOMElement>;
extern template class KESCOREXML_EXPORT PreorderIteratorTemplate<DOMElement>;
extern template class KESCOREXML_EXPORT PreorderIteratorTemplate<const DOMElement>;
extern template class KESCOREXML_EXPORT PreorderTraversalTemplate<DOMElement>;
extern template class KESCOREXML_EXPORT PreorderTraversalTemplate<const DOMElement>;

} // namespace DOMElementTraversal

/// @cond
// Iterators own what they need.
template <typename T>
inline constexpr bool
    std::ranges::enable_borrowed_range<DOMElementTraversal::PreorderTraversalTemplate<T>> = true;
/// @endcond
