#include <kescorexml/DOMElementChildren.h>

#include <kescorexml/DOMElement.h>

#include <stdexcept>

std::size_t DOMElementChildren::size() const noexcept
{
    return m_element->m_children.size();
}

DOMElement& DOMElementChildren::at(std::size_t index)
{
    if (index >= size())
        throw std::out_of_range("DOMElementChildren::at");
    return *m_element->m_children[index];
}

const DOMElement& DOMElementChildren::at(std::size_t index) const
{
    return const_cast<DOMElementChildren*>(this)->at(index);
}

DOMElement& DOMElementChildren::operator[](std::size_t index) noexcept
{
    return *m_element->m_children[index];
}

const DOMElement& DOMElementChildren::operator[](std::size_t index) const noexcept
{
    return *m_element->m_children[index];
}

DOMElementChildren::iterator DOMElementChildren::begin() noexcept
{
    return m_element->m_children.begin();
}

DOMElementChildren::iterator DOMElementChildren::end() noexcept
{
    return m_element->m_children.end();
}

DOMElementChildren::const_iterator DOMElementChildren::begin() const noexcept
{
    return m_element->m_children.begin();
}

DOMElementChildren::const_iterator DOMElementChildren::end() const noexcept
{
    return m_element->m_children.end();
}
