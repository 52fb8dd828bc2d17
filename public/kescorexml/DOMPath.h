#pragma once

#include <kescorexml/DOMElement.h>
#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <ranges>
#include <type_traits>
#include <utility>
#include <vector>

/// Path queries over a tree. A path is a list of steps separated by "/". A step is a name, "*" for
/// any one element, or empty for any number of levels; steps match elements by exact name along a
/// way down that begins with the starting element itself. So "a/b" gives, from an element named
/// "a", its children named "b", and from any other element nothing.
///
/// A path that begins with one "/" starts at the document root of the starting element instead
/// (nothing when it is detached or its document is empty); "//b" gives every element named "b" in
/// the subtree of the starting element. A path that ends in "/", and the empty path, give nothing.
/// Of three and more separators in a row each further one costs a visit: "a///b" passes over the
/// first child of "a" and then sees its later children.
///
/// Elements come in document order, each at most once. A subtree in which the path cannot match is
/// not entered. Nothing recurses, and visiting an element takes no allocation of its own. A visit
/// compares the element with each step that may come next there, so the time is at most
/// proportional to the elements visited times the steps of the path. For each level that it is in,
/// a walk takes 40 bytes, and for the steps that may come next there, 16 bytes for up to 64
/// neighbours among them.
///
/// T is DOMElement or DOMElement const. Different objects may be used from different threads.
///
/// @code
/// const auto document = DOMParser().ParseXmlString("<a><b>1</b><c><b>2</b></c></a>", "a");
/// DOMElement& root = *document->GetDocumentRoot();
/// for (const DOMElement* b : DOMPath::GetAll<DOMElement>(root, u"//b"))
///     std::cout << b->GetText();
/// std::cout << '\n'; // 12
/// std::cout << DOMPath::GetFirst<DOMElement>(root, u"/a/c/b")->GetText() << '\n'; // 2
/// @endcode
namespace DOMPath {

/// A level of a walk: the element visited there, its parent (null for the starting element), its
/// position among the parent's children, and the path positions that are live at this level, which
/// all children visited at it share.
template <typename T>
struct PathNode
{
    /// The element visited.
    T* element;
    /// Null for the starting element.
    T* parent;
    /// The position among the parent's children.
    std::int32_t childIndex;
    /// Which 64 path positions `indices` tells of: the first of them, divided by 64.
    std::uint32_t word;
    /// One bit for each of these positions that is live.
    std::uint64_t indices;
    /// Where in the walk's store those that are live behind them begin.
    std::size_t others;
};

/// A walk that stands still between two matches.
///
/// A copy stands where the original does but does not know the path: its Next() is
/// std::out_of_range unless the walk is over. The tree may change between two calls of Next() as
/// long as the elements that the walk stands at (those above the next one to visit, and that one)
/// stay. The walk has then left the last match already: it stands at the match's first child or,
/// where there is nothing to look for or no child, at the next element beside or above. It goes by
/// positions, so removing an earlier sibling passes over a later one, and removing more of them
/// than there are later ones is std::out_of_range.
template <typename T>
class KESCOREXML_EXPORT Generator
{
public:
    /// Finds nothing yet. `start` must outlive the walk.
    Generator(T& start, const TString& path);
    /// Stands where `other` does.
    Generator(const Generator& other);
    Generator& operator=(const Generator& other) = delete;
    ~Generator();

    /// The next match, or null when the walk is over.
    T* Next();

private:
    /// Of 64 path positions in a row those that are live, one bit each.
    struct Positions
    {
        /// The first position, divided by 64.
        std::uint32_t word;
        std::uint64_t bits;
    };

    /// What passes from 64 positions to the first one behind them.
    struct Overflow
    {
        std::uint64_t expanding = 0;
        std::uint64_t advancing = 0;
    };

    /// What 64 tokens in a row are.
    struct Tokens
    {
        std::uint64_t empty = 0;
        /// "*".
        std::uint64_t any = 0;
        std::uint64_t names = 0;
        /// Names that share their text with an element.
        std::uint64_t shared = 0;
    };

    KESCOREXML_NO_EXPORT std::uint64_t Visit(const DOMElement& element, std::uint32_t word,
                                             std::uint64_t& live, Overflow& overflow);
    KESCOREXML_NO_EXPORT bool VisitOthers(Overflow overflow, Positions& carried,
                                          std::size_t& levelEnd);
    KESCOREXML_NO_EXPORT bool TakeEnd(Positions& carried) const noexcept;
    KESCOREXML_NO_EXPORT bool IsNamed(const DOMElement& element, std::size_t position,
                                      Tokens& kinds, std::uint64_t bit);
    KESCOREXML_NO_EXPORT void StepIntoCurrentNode(const Positions& carried, std::size_t others);
    KESCOREXML_NO_EXPORT void StepOverCurrentNode();

    std::vector<PathNode<T>> m_stack;
    std::vector<TString> m_tokens;
    std::vector<Tokens> m_kinds;
    /// The position behind the last token: whatever gets there has matched the path.
    Positions m_end{};
    /// Of all levels, what their nodes have no room for, level by level, each in ascending order.
    std::vector<Positions> m_others;
};

extern template class KESCOREXML_EXPORT Generator<DOMElement>;
extern template class KESCOREXML_EXPORT Generator<DOMElement const>;

/// Stands at a match. A copy can be dereferenced and compared but not advanced (see Generator);
/// an iterator at its end may be copied, and advancing it does nothing. An input iterator for
/// std::ranges, whose algorithms and adaptors move it; some of the algorithms of std copy it.
template <typename T>
class KESCOREXML_EXPORT IteratorTemplate
{
public:
    /// What generic code asks of an iterator.
    using iterator_category = std::input_iterator_tag;
    using value_type = std::remove_cv_t<T>;
    using difference_type = std::ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    /// The end.
    IteratorTemplate() noexcept;
    /// Finds the first match.
    IteratorTemplate(T& start, const TString& path);
    /// Stands where `other` does.
    IteratorTemplate(const IteratorTemplate& other);
    IteratorTemplate(IteratorTemplate&& other) noexcept;
    /// Stands where `other` does.
    IteratorTemplate& operator=(const IteratorTemplate& other);
    IteratorTemplate& operator=(IteratorTemplate&& other) noexcept;
    ~IteratorTemplate();

    /// The match. REQUIRES: not the end.
    T& operator*() const noexcept { return *m_current; }
    T* operator->() const noexcept { return m_current; }
    /// Finds the next match.
    IteratorTemplate& operator++();
    /// Returns a copy, with the limits of one.
    IteratorTemplate operator++(int);

    /// Two iterators are equal only when both are at the end.
    bool operator==(const IteratorTemplate& other) const noexcept
    {
        return m_generator == other.m_generator && m_current == other.m_current;
    }
    bool operator!=(const IteratorTemplate& other) const noexcept { return !(*this == other); }

private:
    void Advance();

    std::unique_ptr<Generator<T>> m_generator;
    T* m_current = nullptr;
};

extern template class KESCOREXML_EXPORT IteratorTemplate<DOMElement>;
extern template class KESCOREXML_EXPORT IteratorTemplate<DOMElement const>;

/// The matches as a range; each begin() starts a walk of its own. The element must outlive the
/// range, and so must the path unless the range was made from a temporary. A borrowed view for
/// std::ranges: it is cheap to copy, and iterators outlive it.
template <typename T>
class KESCOREXML_EXPORT IterableTemplate
{
public:
    /// Finds nothing yet. The first keeps a reference to the path, the second the path.
    IterableTemplate(T& start, const TString& path) noexcept : m_start(&start), m_path(&path) {}
    IterableTemplate(T& start, TString&& path) noexcept
        : m_start(&start), m_ownPath(std::move(path))
    {
    }

    /// Begins a walk.
    [[nodiscard]] IteratorTemplate<T> begin() { return IteratorTemplate<T>(*m_start, Path()); }
    [[nodiscard]] IteratorTemplate<DOMElement const> begin() const { return cbegin(); }
    [[nodiscard]] IteratorTemplate<DOMElement const> cbegin() const
    {
        return IteratorTemplate<DOMElement const>(*m_start, Path());
    }
    /// The end of every walk.
    [[nodiscard]] IteratorTemplate<T> end() noexcept { return {}; }
    [[nodiscard]] IteratorTemplate<DOMElement const> end() const noexcept { return {}; }
    [[nodiscard]] IteratorTemplate<DOMElement const> cend() const noexcept { return {}; }

private:
    const TString& Path() const noexcept { return m_path == nullptr ? m_ownPath : *m_path; }

    T* m_start;
    /// Null when the path is the range's own.
    const TString* m_path = nullptr;
    TString m_ownPath;
};

extern template class KESCOREXML_EXPORT IterableTemplate<DOMElement>;
extern template class KESCOREXML_EXPORT IterableTemplate<DOMElement const>;

/// The first match, or null. What lies behind it in document order is not visited.
template <typename T>
[[nodiscard]] KESCOREXML_EXPORT T* GetFirst(T& start, const TString& path);

/// All matches.
template <typename T>
[[nodiscard]] KESCOREXML_EXPORT std::vector<T*> GetAll(T& start, const TString& path);

/// The matches one by one, for loops. See Generator for what may change meanwhile.
template <typename T>
[[nodiscard]] IterableTemplate<T> Walk(T& start, const TString& path)
{
    return {start, path};
}
template <typename T>
[[nodiscard]] IterableTemplate<T> Walk(T& start, TString&& path)
{
    return {start, std::move(path)};
}

/// Collects all matches and then calls `fn` for each, so that `fn` may change the tree; it must not
/// destroy a match that is still to come. An empty `fn` is std::bad_function_call if there is a
/// match.
KESCOREXML_EXPORT void Foreach(const DOMElement& start, TString path,
                               const std::function<void(const DOMElement&)>& fn);
KESCOREXML_EXPORT void Foreach(DOMElement& start, TString path,
                               const std::function<void(DOMElement&)>& fn);

extern template KESCOREXML_EXPORT DOMElement* GetFirst(DOMElement&, const TString&);
extern template KESCOREXML_EXPORT DOMElement const* GetFirst(DOMElement const&, const TString&);
extern template KESCOREXML_EXPORT std::vector<DOMElement*> GetAll(DOMElement&, const TString&);
extern template KESCOREXML_EXPORT std::vector<DOMElement const*> GetAll(DOMElement const&,
                                                                        const TString&);

} // namespace DOMPath

/// @cond
// It refers to its element and shares or refers to its path; iterators have a copy of the path.
template <typename T>
inline constexpr bool std::ranges::enable_view<DOMPath::IterableTemplate<T>> = true;
template <typename T>
inline constexpr bool std::ranges::enable_borrowed_range<DOMPath::IterableTemplate<T>> = true;
/// @endcond
