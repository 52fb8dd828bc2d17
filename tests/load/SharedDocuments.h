#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

#include <array>
#include <cstddef>
#include <memory>

/// What all threads use at once: a tree that they read, and documents whose trees stay as they are
/// while diagnostics go from one to the other.
class SharedDocuments
{
public:
    explicit SharedDocuments(std::size_t threads)
        : m_tree(DOMParser().ParseXmlString(
              "<a x='1'><b x='2'>text &amp; more</b><c><b y='3'/><d><b/></d></c></a>", u"shared")),
          m_written(XMLDomFormatter::RenderAsXMLString(*m_tree, nullptr, true))
    {
        for (DOM& document : m_exchanging) {
            DOMElement& top = *document.GetRoot()->AddNewChild(u"top");
            for (std::size_t i = 0; i < threads; ++i)
                top.AddNewChild(u"own");
        }
    }

    const DOM& GetTree() const { return *m_tree; }
    /// The tree as text.
    const TString& GetWritten() const { return m_written; }

    DOM& Get(std::size_t document) { return m_exchanging[document % m_exchanging.size()]; }
    /// The element of one document that only one thread records on.
    DOMElement& GetOwn(std::size_t document, std::size_t thread)
    {
        return Get(document).GetDocumentRoot()->GetChildren()[thread];
    }

private:
    std::unique_ptr<const DOM> m_tree;
    TString m_written;
    std::array<DOM, 3> m_exchanging;
};
