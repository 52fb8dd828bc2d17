#include <kescorexml/XMLDomFormatter.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "tree/DOMElementAccess.h"
#include "tree/TreeWalk.h"
#include "writing/ChildrenInTurn.h"
#include "writing/IndentLimit.h"
#include "writing/IndentUnit.h"
#include "writing/XMLTreeWriter.h"

#include <kescorexml/Base64.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementChildren.h>
#include <kescorexml/XMLStringFormatter.h>

#include <cstddef>
#include <cstdint>
#include <utility>

namespace {

/// Ends the call when there is no element to write to; each operation has an error of its own.
DOMElement& RequireTop(DOMElement* top, int line, CorvinaError (*error)())
{
    if (top == nullptr)
        ThrowAssertion(u"XMLDomFormatter", line, u"m_stack.top() != nullptr", error());
    return *top;
}

std::unique_ptr<DOMElement> MakeElement(const TString& name,
                                        const XMLFormatter::AttributeMap& attributes)
{
    auto element = std::make_unique<DOMElement>(name);
    element->SetAttributes(attributes);
    return element;
}

/// The number of children of an element and of all below it, each before those of its children.
std::vector<std::uint32_t> CountChildren(const DOMElement& element)
{
    std::vector<std::uint32_t> counts;
    TreeWalk<const DOMElement> walk;
    for (const DOMElement* next = &element; next != nullptr; next = walk.Next()) {
        counts.push_back(static_cast<std::uint32_t>(next->GetChildren().size()));
        walk.Enter(*next);
    }
    return counts;
}

/// The elements that Format has opened on its target. Whatever happens, they are closed from the
/// innermost to the outermost. No TreeWalk, whose lists must not change: the target may add
/// children.
class OpenElements
{
public:
    struct Level
    {
        Level(XMLFormatter& target, const DOMElement& openElement, std::size_t childCount)
            : text(openElement.GetText()), isEncoded(openElement.IsEncoded()),
              children(DOMElementAccess::Children(openElement), childCount),
              indenter(target, openElement.GetName(), openElement.GetAttributes())
        {
        }

        TString text;
        bool isEncoded;
        ChildrenInTurn<ElementList> children;
        XMLFormatter::Indenter indenter;
    };

    OpenElements() = default;
    OpenElements(const OpenElements&) = delete;
    OpenElements& operator=(const OpenElements&) = delete;
    ~OpenElements()
    {
        while (!IsEmpty())
            Close();
    }

    bool IsEmpty() const noexcept { return m_levels.empty(); }
    Level& GetInnermost() noexcept { return m_levels.back(); }
    void Open(XMLFormatter& target, const DOMElement& element, std::size_t childCount)
    {
        m_levels.emplace_back(target, element, childCount);
    }
    void Close() noexcept { m_levels.pop_back(); }

private:
    std::deque<Level> m_levels;
};

template <typename Tree>
TString Render(const Tree& tree, TString* comment, bool header)
{
    XMLStringFormatter formatter(c_indentUnit, false);
    formatter.SetFormatMode(FormatMode::Content);
    XMLFormatter::FormatDOM(formatter, tree, comment, header);
    return formatter.GetOutput();
}

} // namespace

// The document

XMLDomFormatter::XMLDomFormatter() : XMLDomFormatter(std::make_unique<DOM>(false)) {}

XMLDomFormatter::XMLDomFormatter(std::unique_ptr<DOM> document)
    : XMLFormatter(c_indentUnit, false), m_document(std::move(document))
{
    m_stack.push_back(GetRoot());
}

XMLDomFormatter::~XMLDomFormatter() = default;

std::unique_ptr<DOM> XMLDomFormatter::TakeDocument() noexcept
{
    return std::move(m_document);
}

DOMElement* XMLDomFormatter::GetRoot() const
{
    return m_document == nullptr ? nullptr : m_document->GetRoot();
}

DOMElement* XMLDomFormatter::GetDocumentRoot() const
{
    return m_document == nullptr ? nullptr : m_document->GetDocumentRoot();
}

DOMElement* XMLDomFormatter::GetElement(const TString& name) const
{
    return m_document == nullptr ? nullptr : m_document->GetElement(name);
}

// Tags and trees

void XMLDomFormatter::OutputOpenTag(const TString& name, const AttributeMap& attributes)
{
    DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0xE04AB21E);
    std::unique_ptr<DOMElement> child = MakeElement(name, attributes);
    m_stack.push_back(child.get());
    try {
        top.AppendChild(std::move(child));
    } catch (...) {
        m_stack.pop_back();
        throw;
    }
}

void XMLDomFormatter::OutputTag(const TString& name, const AttributeMap& attributes)
{
    DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0xE6086904);
    top.AppendChild(MakeElement(name, attributes));
}

void XMLDomFormatter::OutputContentTag(const TString& name, const AttributeMap& attributes,
                                       const TString& text)
{
    DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0x2AF5921A);
    std::unique_ptr<DOMElement> child = MakeElement(name, attributes);
    child->SetText(text);
    top.AppendChild(std::move(child));
}

void XMLDomFormatter::OutputCloseTag(const TString& name)
{
    const DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0x5C6709A4);
    if (top.GetName() != name)
        ThrowAssertion(u"XMLDomFormatter", __LINE__, u"e->GetName() == tag",
                       KesErrorsError::LogicAssert_0x956FC18E());
    m_stack.pop_back();
}

void XMLDomFormatter::OutputAttributes(const AttributeMap& attributes)
{
    DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0x5619328D);
    top.SetAttributes(attributes);
}

void XMLDomFormatter::OutputDOMElement(const DOMElement& element)
{
    DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0xD26E62DD);
    if (element.GetDOMManager() == top.GetDOMManager()) {
        // The element may hold the current one, so it is copied before anything changes. Room comes
        // first: a copy that could not be appended would take the document's diagnostics along.
        DOMElementAccess::Children(top).ReserveMore(1);
        top.AppendChild(std::make_unique<DOMElement>(element));
        return;
    }
    // A copy made first would belong to the document of what it is a copy of, whose diagnostics it
    // would take along if it could not be appended.
    DOMElement* child = top.AddNewChild(TString());
    try {
        *child = element;
    } catch (...) {
        DOMElementAccess::Children(top).PopBack();
        throw;
    }
}

// Text

void XMLDomFormatter::OutputContent(const TString& text, bool raw)
{
    DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0xCE4F4D17);
    top.SetText(text, raw);
}

void XMLDomFormatter::OutputString(const TString& text)
{
    DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0x32368D81);
    top.AppendText(text);
}

void XMLDomFormatter::OutputLine(const TString& text)
{
    DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0x0F7E4CE7);
    top.AppendText(text + u"\n");
}

void XMLDomFormatter::OutputBinary(const unsigned char* bytes, unsigned int count)
{
    DOMElement& top = RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0xE813A351);
    if (top.HasText())
        ThrowAssertion(u"XMLDomFormatter", __LINE__, u"!e->HasText()",
                       KesErrorsError::LogicAssert_0x9C70B807());
    std::vector<TString> lines;
    Base64Encode(bytes, count, lines, true);
    TString text;
    for (const TString& line : lines) {
        const TString indent = GetIndent();
        RequireIndentLength(indent.length());
        text.append(indent).append(line).append(u'\n');
    }
    top.SetText(text, true);
}

void XMLDomFormatter::OutputComment(const TString& text)
{
    RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0xBA49C527);
    m_comments.push_back(text);
}

void XMLDomFormatter::OutputHeader()
{
    RequireTop(GetTop(), __LINE__, KesErrorsError::LogicAssert_0x968B6274);
    m_hasHeader = true;
}

// Text from the tree

void XMLDomFormatter::Format(XMLFormatter& target, const DOMElement& element)
{
    // As they are now: `target` may build on this very tree.
    const std::vector<std::uint32_t> counts = CountChildren(element);
    auto nextCount = counts.begin();
    OpenElements open;
    const auto write = [&](const DOMElement& next) {
        if (const std::size_t childCount = *nextCount++; childCount > 0)
            open.Open(target, next, childCount);
        else if (const TString text = next.GetText(); !text.IsEmpty())
            target.OutputContentTag(next.GetName(), next.GetAttributes(), text, !next.IsEncoded());
        else
            target.OutputTag(next.GetName(), next.GetAttributes());
    };
    write(element);
    while (!open.IsEmpty()) {
        OpenElements::Level& level = open.GetInnermost();
        if (const DOMElement* child = level.children.Next()) {
            write(*child);
            continue;
        }
        if (!level.text.IsEmpty()) {
            target.OutputString(GetIndent());
            target.OutputContent(level.text, level.isEncoded);
        }
        open.Close();
    }
}

TString XMLDomFormatter::GetOutput(FormatMode mode)
{
    XMLStringFormatter prolog(c_indentUnit, false);
    if (m_hasHeader)
        prolog.OutputHeader();
    for (const TString& comment : m_comments)
        prolog.OutputComment(comment);
    TString output = prolog.GetOutput();
    // What Format has a string formatter write.
    if (const DOMElement* first = GetDocumentRoot()) {
        const XMLTreeWriter::Style style{mode, {}, c_indentUnit, u"\n", this};
        XMLTreeWriter(output, style).Write(*first);
    }
    return output;
}

TString XMLDomFormatter::RenderAsXMLString(const DOM& document, TString* comment, bool header)
{
    return Render(document, comment, header);
}

TString XMLDomFormatter::RenderAsXMLString(const DOMElement& element, TString* comment, bool header)
{
    return Render(element, comment, header);
}
