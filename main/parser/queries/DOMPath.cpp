#include <kescorexml/DOMPath.h>

#include "tree/DOMElementAccess.h"
#include "tree/PrefetchSiblings.h"

#include <kescorexml/DOM.h>

#include <bit>
#include <stdexcept>
#include <utility>

namespace DOMPath {

namespace {

constexpr std::size_t c_initialDepth = 32;

bool IsAny(const TString& token)
{
    return token.view() == u"*";
}

/// Adds to an ascending list, of which the part from `from` on counts, unless it is there already.
void AddPosition(std::vector<std::int32_t>& positions, std::size_t from, std::int32_t position)
{
    if (positions.size() == from || positions.back() != position)
        positions.push_back(position);
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
    const std::int32_t startPosition = m_tokens.front().IsEmpty() ? 1 : 0;
    m_stack.reserve(c_initialDepth);
    if (IsShort()) {
        for (std::size_t i = 0; i < m_tokens.size(); ++i) {
            m_emptyTokens |= std::uint64_t{m_tokens[i].IsEmpty()} << i;
            m_anyTokens |= std::uint64_t{IsAny(m_tokens[i])} << i;
        }
        m_nameTokens = ~(m_emptyTokens | m_anyTokens);
        m_stack.push_back({first, nullptr, 0, std::uint64_t{1} << startPosition});
    } else {
        m_positions.push_back(startPosition);
        m_stack.push_back({first, nullptr, 0, 0});
    }
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
    return IsShort() ? NextShort() : NextLong();
}

template <typename T>
T* Generator<T>::NextShort()
{
    const std::uint64_t end = std::uint64_t{1} << m_tokens.size();
    do {
        PathNode<T>& node = m_stack.back();
        T* element = node.element;
        node.indices |= (node.indices & m_emptyTokens) << 1;
        const std::uint64_t live = node.indices;
        std::uint64_t advancing = live & m_anyTokens;
        for (std::uint64_t names = live & m_nameTokens; names != 0; names &= names - 1) {
            const auto position = static_cast<std::size_t>(std::countr_zero(names));
            if (IsNamed(*element, position))
                advancing |= std::uint64_t{1} << position;
        }
        const std::uint64_t carried = (live & m_emptyTokens) | (advancing << 1);
        if ((carried & ~end) != 0 && element->HasChildren())
            StepIntoCurrentNode(carried & ~end);
        else
            StepOverCurrentNode();
        if ((carried & end) != 0)
            return element;
    } while (!m_stack.empty());
    return nullptr;
}

template <typename T>
T* Generator<T>::NextLong()
{
    do {
        T* element = m_stack.back().element;
        const std::size_t carried = ExpandPositions();
        const bool isMatch = CarryPositions(*element);
        if (m_positions.size() > carried && element->HasChildren()) {
            StepIntoCurrentNode(carried);
        } else {
            m_positions.resize(carried);
            StepOverCurrentNode();
        }
        if (isMatch)
            return element;
    } while (!m_stack.empty());
    return nullptr;
}

template <typename T>
bool Generator<T>::IsNamed(const DOMElement& element, std::size_t position)
{
    TString& token = m_tokens[position];
    const TString& name = element.GetName();
    if (token != name)
        return false;
    // The elements of a parsed document share the texts of their names. Once the token shares that
    // text, too, equal names are the same address.
    const std::uint64_t bit = std::uint64_t{1} << position;
    if ((m_sharedTokens & bit) == 0) {
        m_sharedTokens |= bit;
        token = name;
    }
    return true;
}

template <typename T>
std::size_t Generator<T>::ExpandPositions()
{
    const auto first = static_cast<std::size_t>(m_stack.back().indices);
    m_expanded.clear();
    for (std::size_t i = first; i < m_positions.size(); ++i) {
        const std::int32_t position = m_positions[i];
        AddPosition(m_expanded, 0, position);
        if (m_tokens[static_cast<std::size_t>(position)].IsEmpty())
            AddPosition(m_expanded, 0, position + 1);
    }
    m_positions.resize(first);
    m_positions.insert(m_positions.end(), m_expanded.begin(), m_expanded.end());
    return m_positions.size();
}

template <typename T>
bool Generator<T>::CarryPositions(const DOMElement& element)
{
    const std::size_t carried = m_positions.size();
    const TString& name = element.GetName();
    for (const std::int32_t position : m_expanded) {
        const TString& token = m_tokens[static_cast<std::size_t>(position)];
        if (token.IsEmpty())
            AddPosition(m_positions, carried, position);
        else if (IsAny(token) || token == name)
            AddPosition(m_positions, carried, position + 1);
    }
    const bool isMatch = m_positions.size() > carried &&
                         m_positions.back() == static_cast<std::int32_t>(m_tokens.size());
    if (isMatch)
        m_positions.pop_back();
    return isMatch;
}

template <typename T>
void Generator<T>::StepIntoCurrentNode(std::uint64_t carried)
{
    T* element = m_stack.back().element;
    const ElementList& children = DOMElementAccess::Children(std::as_const(*element));
    PrefetchFirst(children);
    m_stack.push_back({children[0].get(), element, 0, carried});
}

template <typename T>
void Generator<T>::StepOverCurrentNode()
{
    while (!StepToSibling(m_stack.back())) {
        const bool isOver = m_stack.back().parent == nullptr;
        if (!IsShort())
            m_positions.resize(static_cast<std::size_t>(m_stack.back().indices));
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
