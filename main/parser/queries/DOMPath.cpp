#include <kescorexml/DOMPath.h>

#include "tree/DOMElementAccess.h"
#include "tree/PrefetchElements.h"

#include <kescorexml/DOM.h>

#include <bit>
#include <stdexcept>
#include <utility>

namespace DOMPath {

namespace {

constexpr std::size_t c_initialDepth = 32;
constexpr std::size_t c_bits = 64;

bool IsAny(const TString& token)
{
    return token.view() == u"*";
}

/// The element at which a walk along `path` begins, or null.
template <typename T>
T* FindStart(T& start, const TString& path)
{
    if (!path.startsWith(u"/") || path.startsWith(u"//"))
        return &start;
    auto* dom = start.GetDOMManager();
    return dom == nullptr ? nullptr : dom->GetDocumentRoot();
}

// No TreeWalk, whose lists must not change: a walk along a path stands still between two matches,
// and goes on by positions.

/// False when there is no further sibling.
template <typename T>
inline bool StepToSibling(PathNode<T>& node)
{
    if (node.parent == nullptr)
        return false;
    const ElementList& siblings = DOMElementAccess::Children(std::as_const(*node.parent));
    const auto next = static_cast<std::size_t>(++node.childIndex);
    if (next < siblings.size()) {
        PrefetchNext(siblings, next);
        node.element = siblings[next].get();
        return true;
    }
    // Fewer than were passed already: somebody removed children during the walk.
    if (next > siblings.size())
        throw std::out_of_range("DOMPath: the children of an element on the way were removed");
    return false;
}

} // namespace

template <typename T>
Generator<T>::Generator(T& start, const TString& path) : m_tokens(path.split(u'/'))
{
    if (m_tokens.back().IsEmpty())
        return;
    T* first = FindStart(start, path);
    if (first == nullptr)
        return;
    m_kinds.resize(m_tokens.size() / c_bits + 1);
    for (std::size_t i = 0; i < m_tokens.size(); ++i) {
        Tokens& kinds = m_kinds[i / c_bits];
        std::uint64_t& kind = m_tokens[i].IsEmpty() ? kinds.empty
                              : IsAny(m_tokens[i])  ? kinds.any
                                                    : kinds.names;
        kind |= std::uint64_t{1} << i % c_bits;
    }
    m_end = {static_cast<std::uint32_t>(m_tokens.size() / c_bits),
             std::uint64_t{1} << m_tokens.size() % c_bits};
    m_stack.reserve(c_initialDepth);
    m_stack.push_back({first, nullptr, 0, 0, m_tokens.front().IsEmpty() ? 2U : 1U, 0});
}

template <typename T>
Generator<T>::Generator(const Generator& other) : m_stack(other.m_stack)
{
}

template <typename T>
Generator<T>::~Generator() = default;

template <typename T>
T* Generator<T>::Next()
{
    if (m_stack.empty())
        return nullptr;
    // Only a copy has no tokens; at() says so as for any other position.
    if (m_tokens.empty())
        static_cast<void>(m_tokens.at(0));
    do {
        PathNode<T>& node = m_stack.back();
        T* element = node.element;
        Overflow overflow;
        Positions carried{node.word, 0};
        carried.bits = Visit(*element, node.word, node.indices, overflow);
        bool isMatch = TakeEnd(carried);
        std::size_t levelEnd = m_others.size();
        if (levelEnd != node.others || (overflow.expanding | overflow.advancing) != 0) [[unlikely]]
            isMatch = VisitOthers(overflow, carried, levelEnd) || isMatch;
        if (carried.bits != 0 && element->HasChildren()) {
            StepIntoCurrentNode(carried, levelEnd);
        } else {
            if (m_others.size() != levelEnd) [[unlikely]]
                m_others.resize(levelEnd);
            StepOverCurrentNode();
        }
        if (isMatch)
            return element;
    } while (!m_stack.empty());
    return nullptr;
}

/// Looks at an element with 64 positions, of which `live` are. Behind each empty token that is
/// live, the next one is, too; those added are not expanded. Returns what is live below the
/// element.
template <typename T>
inline std::uint64_t Generator<T>::Visit(const DOMElement& element, std::uint32_t word,
                                         std::uint64_t& live, Overflow& overflow)
{
    Tokens& kinds = m_kinds[word];
    const std::uint64_t expanding = live & kinds.empty;
    live |= expanding << 1 | overflow.expanding;
    std::uint64_t advancing = live & kinds.any;
    for (std::uint64_t names = live & kinds.names; names != 0; names &= names - 1) {
        const auto offset = static_cast<std::size_t>(std::countr_zero(names));
        const std::uint64_t bit = std::uint64_t{1} << offset;
        if (IsNamed(element, word * c_bits + offset, kinds, bit))
            advancing |= bit;
    }
    const std::uint64_t carried = (live & kinds.empty) | advancing << 1 | overflow.advancing;
    overflow = {expanding >> (c_bits - 1), advancing >> (c_bits - 1)};
    return carried;
}

/// Goes on behind the positions that the node itself holds. `carried`, what is live below the
/// element so far, becomes the first of what is; more of it stands from `levelEnd` on. True when
/// the path ends at the element.
template <typename T>
bool Generator<T>::VisitOthers(Overflow overflow, Positions& carried, std::size_t& levelEnd)
{
    const PathNode<T>& node = m_stack.back();
    bool isMatch = false;
    std::uint32_t word = node.word;
    std::size_t i = node.others;
    for (;;) {
        const bool overflows = (overflow.expanding | overflow.advancing) != 0;
        if (i == levelEnd && !overflows)
            return isMatch;
        word = overflows ? word + 1 : m_others[i].word;
        const bool isListed = i != levelEnd && m_others[i].word == word;
        std::uint64_t live = isListed ? m_others[i].bits : 0;
        Positions next{word, Visit(*node.element, word, live, overflow)};
        if (isListed) {
            m_others[i++].bits = live;
        } else if (live != 0) {
            m_others.insert(m_others.begin() + static_cast<std::ptrdiff_t>(i++), {word, live});
            ++levelEnd;
        }
        isMatch = TakeEnd(next) || isMatch;
        if (carried.bits == 0)
            carried = next;
        else if (next.bits != 0)
            m_others.push_back(next);
    }
}

template <typename T>
inline bool Generator<T>::TakeEnd(Positions& carried) const noexcept
{
    if (carried.word != m_end.word || (carried.bits & m_end.bits) == 0)
        return false;
    carried.bits ^= m_end.bits;
    return true;
}

template <typename T>
bool Generator<T>::IsNamed(const DOMElement& element, std::size_t position, Tokens& kinds,
                           std::uint64_t bit)
{
    TString& token = m_tokens[position];
    const TString& name = element.GetName();
    if (token != name)
        return false;
    // The elements of a parsed document share the texts of their names. Once the token shares that
    // text, too, equal names are the same address.
    if ((kinds.shared & bit) == 0) {
        kinds.shared |= bit;
        token = name;
    }
    return true;
}

template <typename T>
void Generator<T>::StepIntoCurrentNode(const Positions& carried, std::size_t others)
{
    T* element = m_stack.back().element;
    const ElementList& children = DOMElementAccess::Children(std::as_const(*element));
    PrefetchFirst(children);
    m_stack.push_back({children[0].get(), element, 0, carried.word, carried.bits, others});
}

template <typename T>
void Generator<T>::StepOverCurrentNode()
{
    while (!StepToSibling(m_stack.back())) {
        const PathNode<T>& left = m_stack.back();
        const bool isOver = left.parent == nullptr;
        if (m_others.size() != left.others) [[unlikely]]
            m_others.resize(left.others);
        m_stack.pop_back();
        if (isOver)
            return;
    }
}

template <typename T>
IteratorTemplate<T>::IteratorTemplate() noexcept = default;

template <typename T>
IteratorTemplate<T>::IteratorTemplate(T& start, const TString& path)
    : m_generator(std::make_unique<Generator<T>>(start, path))
{
    Advance();
}

template <typename T>
IteratorTemplate<T>::IteratorTemplate(const IteratorTemplate& other)
    : m_generator(other.m_generator ? std::make_unique<Generator<T>>(*other.m_generator) : nullptr),
      m_current(other.m_current)
{
}

template <typename T>
IteratorTemplate<T>::IteratorTemplate(IteratorTemplate&& other) noexcept = default;

template <typename T>
IteratorTemplate<T>& IteratorTemplate<T>::operator=(const IteratorTemplate& other)
{
    if (this != &other)
        *this = IteratorTemplate(other);
    return *this;
}

template <typename T>
IteratorTemplate<T>& IteratorTemplate<T>::operator=(IteratorTemplate&& other) noexcept = default;

template <typename T>
IteratorTemplate<T>::~IteratorTemplate() = default;

template <typename T>
void IteratorTemplate<T>::Advance()
{
    m_current = m_generator->Next();
    if (m_current == nullptr)
        m_generator.reset();
}

template <typename T>
IteratorTemplate<T>& IteratorTemplate<T>::operator++()
{
    if (m_generator != nullptr)
        Advance();
    return *this;
}

template <typename T>
IteratorTemplate<T> IteratorTemplate<T>::operator++(int)
{
    IteratorTemplate copy(*this);
    ++*this;
    return copy;
}

template <typename T>
T* GetFirst(T& start, const TString& path)
{
    return Generator<T>(start, path).Next();
}

template <typename T>
std::vector<T*> GetAll(T& start, const TString& path)
{
    std::vector<T*> matches;
    Generator<T> generator(start, path);
    while (T* match = generator.Next())
        matches.push_back(match);
    return matches;
}

void Foreach(const DOMElement& start, TString path,
             const std::function<void(const DOMElement&)>& fn)
{
    for (const DOMElement* match : GetAll(start, path))
        fn(*match);
}

void Foreach(DOMElement& start, TString path, const std::function<void(DOMElement&)>& fn)
{
    for (DOMElement* match : GetAll(start, path))
        fn(*match);
}

template class Generator<DOMElement>;
template class Generator<DOMElement const>;
template class IteratorTemplate<DOMElement>;
template class IteratorTemplate<DOMElement const>;
template class IterableTemplate<DOMElement>;
template class IterableTemplate<DOMElement const>;
template DOMElement* GetFirst(DOMElement&, const TString&);
template DOMElement const* GetFirst(DOMElement const&, const TString&);
template std::vector<DOMElement*> GetAll(DOMElement&, const TString&);
template std::vector<DOMElement const*> GetAll(DOMElement const&, const TString&);

} // namespace DOMPath
