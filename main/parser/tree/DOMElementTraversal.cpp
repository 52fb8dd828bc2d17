#include <kescorexml/DOMElementTraversal.h>

#include "tree/DOMElementAccess.h"
#include "tree/PrefetchElements.h"

#include <utility>

namespace DOMElementTraversal {

template <typename T>
PreorderGeneratorTemplate<T>::PreorderGeneratorTemplate(T& start)
{
    m_stack.reserve(128);
    m_stack.push_back(&start);
}

template <typename T>
T* PreorderGeneratorTemplate<T>::Next()
{
    if (m_stack.empty())
        return nullptr;
    T* element = m_stack.back();
    m_stack.pop_back();
    if (m_stack.size() >= c_prefetchDistance)
        PrefetchElement(*m_stack[m_stack.size() - c_prefetchDistance]);
    // No TreeWalk, which takes children from the first to the last.
    const ElementList& children = DOMElementAccess::Children(std::as_const(*element));
    for (const auto& child : children)
        m_stack.push_back(child.get());
    return element;
}

template <typename T>
PreorderIteratorTemplate<T>::PreorderIteratorTemplate(T& start)
    : m_generator(std::make_unique<PreorderGeneratorTemplate<T>>(start)),
      m_current(m_generator->Next())
{
}

template <typename T>
PreorderIteratorTemplate<T>::PreorderIteratorTemplate(const PreorderIteratorTemplate& other)
    : m_generator(other.m_generator == nullptr
                      ? nullptr
                      : std::make_unique<PreorderGeneratorTemplate<T>>(*other.m_generator)),
      m_current(other.m_current)
{
}

template <typename T>
PreorderIteratorTemplate<T>&
PreorderIteratorTemplate<T>::operator=(const PreorderIteratorTemplate& other)
{
    if (this != &other)
        *this = PreorderIteratorTemplate(other);
    return *this;
}

template <typename T>
PreorderIteratorTemplate<T>& PreorderIteratorTemplate<T>::operator++()
{
    if (m_generator != nullptr) {
        m_current = m_generator->Next();
        if (m_current == nullptr)
            m_generator.reset();
    }
    return *this;
}

template <typename T>
PreorderIteratorTemplate<T> PreorderIteratorTemplate<T>::operator++(int)
{
    PreorderIteratorTemplate before(*this);
    ++*this;
    return before;
}

template class PreorderGeneratorTemplate<DOMElement>;
template class PreorderGeneratorTemplate<const DOMElement>;
template class PreorderIteratorTemplate<DOMElement>;
template class PreorderIteratorTemplate<const DOMElement>;
template class PreorderTraversalTemplate<DOMElement>;
template class PreorderTraversalTemplate<const DOMElement>;

} // namespace DOMElementTraversal
