#pragma once

#include <kescorexml/XMLFormatter.h>

#include <deque>
#include <memory>
#include <vector>

/// Turns the calls of a formatter into a new document instead of text. Open tags push elements on
/// a stack, close tags pop them, and all else lands in the element on top; at first that is the
/// document's synthetic root, so the first element becomes the document element. Comments are kept
/// beside the tree.
///
/// Every output operation raises a logic assertion, and changes nothing, when no element is left
/// on the stack. Operations that change the tree happen whole or not at all.
///
/// Different objects may be used from different threads.
///
/// @code
/// XMLDomFormatter formatter;
/// formatter.OutputOpenTag(u"list", {});
/// formatter.OutputContentTag(u"item", {}, u"tea");
/// formatter.OutputCloseTag(u"list");
/// const auto document = formatter.TakeDocument();
/// std::cout << document->GetDocumentRoot()->GetChildren().size() << '\n'; // 1
/// @endcode
class KESCOREXML_EXPORT XMLDomFormatter : public XMLFormatter
{
public:
    /// Builds a new document that does not restrict external paths.
    XMLDomFormatter();
    /// Builds on `document`, below its root. Without a document there is no element to write to.
    explicit XMLDomFormatter(std::unique_ptr<DOM> document);
    ~XMLDomFormatter() override;

    using XMLFormatter::OutputContent;
    /// The four-argument form writes its tag as text into the current element, whose attributes
    /// and text it replaces on the way; for a child element use the three-argument form.
    using XMLFormatter::OutputContentTag;

    void OutputAttributes(const AttributeMap& attributes) override;
    /// Appends a copy of the element and all below it, as they were before the call: the current
    /// element and those around it may be copied, too.
    void OutputDOMElement(const DOMElement& element) override;
    /// Replaces the text of the current element; `raw` marks it as encoded.
    void OutputContent(const TString& text, bool raw) override;
    void OutputContentTag(const TString& name, const AttributeMap& attributes,
                          const TString& text) override;
    void OutputComment(const TString& text) override;
    /// The current element must bear this name.
    void OutputCloseTag(const TString& name) override;
    /// The new element becomes the current one.
    void OutputOpenTag(const TString& name, const AttributeMap& attributes) override;
    void OutputTag(const TString& name, const AttributeMap& attributes) override;
    /// GetOutput will begin with the XML declaration.
    void OutputHeader() override;
    /// Appends the text and a line feed to the text of the current element.
    void OutputLine(const TString& text) override;
    void OutputString(const TString& text) override;
    /// The current element must not have text yet; it gets Base64 lines and counts as encoded.
    void OutputBinary(const unsigned char* bytes, unsigned int count) override;

    /// Hands the document over; after this only comments may be read back through GetOutput, and
    /// nothing may be written.
    [[nodiscard]] std::unique_ptr<DOM> TakeDocument() noexcept;
    /// The document and its parts are owned by this object. Null after TakeDocument.
    [[nodiscard]] DOM* GetDocument() const noexcept { return m_document.get(); }
    /// DOM::GetRoot of the document.
    [[nodiscard]] DOMElement* GetRoot() const;
    /// DOM::GetDocumentRoot of the document.
    [[nodiscard]] DOMElement* GetDocumentRoot() const;
    /// DOM::GetElement of the document.
    [[nodiscard]] DOMElement* GetElement(const TString& name) const;

    /// The text of what was built: the header if it was asked for, the comments in the order of
    /// their arrival, then the first child of the root. Changes nothing of what was built.
    /// std::length_error for a tree deeper than XMLFormatter::c_maxIndentLength allows. A GetIndent
    /// of a subclass must not change the tree.
    [[nodiscard]] TString GetOutput(FormatMode mode);
    /// Writes an element and all below it to `target`, without recursion. The text of an element
    /// that has children is indented as this formatter stands, not as `target` does. What `target`
    /// throws leaves the call; every tag that is open by then is closed, but one whose Indent
    /// threw. `target` may build on the tree that is written, as this very formatter does: children
    /// that were not there when the call began are left out. It is a logic assertion when children
    /// of an element that is being written change otherwise.
    void Format(XMLFormatter& target, const DOMElement& element);

    /// The text of a document or of an element and all below it, indented by two blanks a level,
    /// long content in CDATA sections where that helps. `comment` may be null. Unless told
    /// otherwise, a document begins with the XML declaration and an element does not. XMLOutput.h
    /// saves the same text in a file. std::length_error for a tree deeper than
    /// XMLFormatter::c_maxIndentLength allows. Safe to use from several threads.
    [[nodiscard]] static TString RenderAsXMLString(const DOM& document, TString* comment = nullptr,
                                                   bool header = true);
    [[nodiscard]] static TString RenderAsXMLString(const DOMElement& element,
                                                   TString* comment = nullptr, bool header = false);

private:
    /// Null when there is no element to write to.
    DOMElement* GetTop() const noexcept { return m_stack.empty() ? nullptr : m_stack.back(); }

    std::deque<DOMElement*> m_stack;
    std::unique_ptr<DOM> m_document;
    std::vector<TString> m_comments;
    bool m_hasHeader = false;
};
