#pragma once

#include <kescorexml/Export.h>
#include <kescorexml/detail/ElementList.h>

#include <cstddef>
#include <iterator>
#include <ranges>

class ConstDOMElementChildren;
class DOMElement;

/// Shows the children of an element in document order. Owns nothing, costs one pointer, follows
/// later changes of the list, and is valid as long as the element lives. Iterators yield the
/// owning pointers and are invalid once the list changes. A borrowed view for std::ranges: it can
/// be piped into adaptors, and iterators outlive it. Sorting it sorts the children.
///
/// Const operations may run side by side.
///
/// @code
/// DOMElement list(u"list");
/// for (const char* text : {"2", "3", "1"})
///     list.AddNewChild(u"item")->SetText(text);
/// const auto number = [](const auto& item) { return item->GetText().toInt(); };
/// std::ranges::sort(list.GetChildren(), {}, number);
/// std::cout << list.GetChildren().back().GetText() << '\n'; // 3
/// @endcode
class KESCOREXML_EXPORT DOMElementChildren
{
public:
    /// What generic code asks of a container.
    using value_type = ElementList::value_type;
    using iterator = ElementList::iterator;
    using const_iterator = ElementList::const_iterator;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    /// The children of `element`, which must outlive this view.
    DOMElementChildren(DOMElement& element) noexcept : m_element(&element) {}
    /// Children of an element that must not change do not become such as may.
    DOMElementChildren(const ConstDOMElementChildren&) = delete;
    DOMElementChildren& operator=(const ConstDOMElementChildren&) = delete;

    /// The number of children.
    [[nodiscard]] std::size_t size() const noexcept;
    /// Whether there is none.
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }

    /// std::out_of_range when `index` is not below size().
    [[nodiscard]] DOMElement& at(std::size_t index);
    [[nodiscard]] const DOMElement& at(std::size_t index) const;
    /// REQUIRES: an index below size().
    DOMElement& operator[](std::size_t index) noexcept;
    const DOMElement& operator[](std::size_t index) const noexcept;
    /// REQUIRES: at least one child.
    [[nodiscard]] DOMElement& front() noexcept { return (*this)[0]; }
    [[nodiscard]] const DOMElement& front() const noexcept { return (*this)[0]; }
    /// REQUIRES: at least one child.
    [[nodiscard]] DOMElement& back() noexcept { return (*this)[size() - 1]; }
    [[nodiscard]] const DOMElement& back() const noexcept { return (*this)[size() - 1]; }

    /// The owners of the children; valid until a child is added or removed.
    [[nodiscard]] iterator begin() noexcept;
    [[nodiscard]] iterator end() noexcept;
    [[nodiscard]] const_iterator begin() const noexcept;
    [[nodiscard]] const_iterator end() const noexcept;
    [[nodiscard]] const_iterator cbegin() const noexcept { return begin(); }
    [[nodiscard]] const_iterator cend() const noexcept { return end(); }
    [[nodiscard]] reverse_iterator rbegin() noexcept { return reverse_iterator(end()); }
    [[nodiscard]] reverse_iterator rend() noexcept { return reverse_iterator(begin()); }
    [[nodiscard]] const_reverse_iterator rbegin() const noexcept
    {
        return const_reverse_iterator(end());
    }
    [[nodiscard]] const_reverse_iterator rend() const noexcept
    {
        return const_reverse_iterator(begin());
    }
    [[nodiscard]] const_reverse_iterator crbegin() const noexcept { return rbegin(); }
    [[nodiscard]] const_reverse_iterator crend() const noexcept { return rend(); }

private:
    DOMElement* m_element;
};

/// The same view of an element that must not change, what GetChildren() of a const element gives:
/// copies of it stay const, too. It serves wherever a const DOMElementChildren is wanted. What is
/// const is the list and its owning pointers: like any std::unique_ptr, these still give elements
/// that can be changed.
///
/// Const operations may run side by side.
class ConstDOMElementChildren : public DOMElementChildren
{
public:
    /// What generic code asks of a container.
    using iterator = const_iterator;
    using reverse_iterator = const_reverse_iterator;

    /// The children of `element`, which must outlive this view.
    ConstDOMElementChildren(const DOMElement& element) noexcept
        : DOMElementChildren(const_cast<DOMElement&>(element))
    {
    }
    /// The children that `children` shows.
    ConstDOMElementChildren(const DOMElementChildren& children) noexcept
        : DOMElementChildren(children)
    {
    }

    /// std::out_of_range when `index` is not below size().
    [[nodiscard]] const DOMElement& at(std::size_t index) const
    {
        return DOMElementChildren::at(index);
    }
    /// REQUIRES: an index below size().
    const DOMElement& operator[](std::size_t index) const noexcept
    {
        return DOMElementChildren::operator[](index);
    }
    /// REQUIRES: at least one child.
    [[nodiscard]] const DOMElement& front() const noexcept { return DOMElementChildren::front(); }
    /// REQUIRES: at least one child.
    [[nodiscard]] const DOMElement& back() const noexcept { return DOMElementChildren::back(); }

    /// The owners of the children; valid until a child is added or removed.
    [[nodiscard]] const_iterator begin() const noexcept { return cbegin(); }
    [[nodiscard]] const_iterator end() const noexcept { return cend(); }
    [[nodiscard]] const_reverse_iterator rbegin() const noexcept { return crbegin(); }
    [[nodiscard]] const_reverse_iterator rend() const noexcept { return crend(); }
};

/// @cond
// It owns nothing, and its iterators point into the element's own list.
template <>
inline constexpr bool std::ranges::enable_view<DOMElementChildren> = true;
template <>
inline constexpr bool std::ranges::enable_borrowed_range<DOMElementChildren> = true;
template <>
inline constexpr bool std::ranges::enable_view<ConstDOMElementChildren> = true;
template <>
inline constexpr bool std::ranges::enable_borrowed_range<ConstDOMElementChildren> = true;
/// @endcond
