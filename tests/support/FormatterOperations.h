#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementChildren.h>
#include <kescorexml/XMLFormatter.h>

#include <map>
#include <vector>

// The operations of a formatter, one of which is replaced by a note of how it was called; and a
// model that says which of them call which others, with what.

enum class Operation
{
    None,
    Indent,
    Undent,
    GetIndent,
    Flush,
    OutputAttributes,
    OutputDOMElement,
    OutputDOMElements,
    OutputContent,
    OutputContentRaw,
    OutputContentTag,
    OutputContentTagEncode,
    OutputComment,
    OutputCloseTag,
    OutputOpenTag,
    OutputTag,
    OutputHeader,
    OutputLine,
    OutputString,
    OutputBinary,
    Count
};

/// The notes of both.
class OperationNotes
{
public:
    using Attributes = XMLFormatter::AttributeMap;

    explicit OperationNotes(Operation replaced) : m_replaced(replaced) {}

    const std::vector<TString>& Get() const noexcept { return m_notes; }

protected:
    bool IsReplaced(Operation operation) const noexcept { return operation == m_replaced; }
    void Note(const TString& note) { m_notes.push_back(note); }

    /// Whether the operation is replaced, which is noted with what it was called with.
    template <typename... Arguments>
    bool Replaces(Operation operation, const Arguments&... arguments)
    {
        if (!IsReplaced(operation))
            return false;
        TString note = TString(u"operation ") + TString::number(static_cast<int>(operation));
        ((note += TString(u" | ") + Show(arguments)), ...);
        Note(note);
        return true;
    }

    static TString Show(const TString& text) { return text; }
    static TString Show(bool value) { return value ? u"true" : u"false"; }
    static TString Show(unsigned int value) { return TString::number(value); }
    static TString Show(const Attributes& attributes)
    {
        TString text;
        for (const auto& [name, value] : std::map(attributes.begin(), attributes.end()))
            text += name + u"=" + value + u";";
        return text;
    }
    static TString Show(const DOMElement& element) { return element.GetName(); }
    static TString Show(const DOMElementChildren& children)
    {
        return TString::number(static_cast<int>(children.size()));
    }

    const TString m_replacedIndent = u"[indentation]";

private:
    Operation m_replaced;
    std::vector<TString> m_notes;
};

/// A formatter with one operation replaced. Pieces are noted as they are.
class ReplacingFormatter : public XMLFormatter, public OperationNotes
{
public:
    ReplacingFormatter(Operation replaced, bool suppressNewlines)
        : XMLFormatter(u"\t", suppressNewlines), OperationNotes(replaced)
    {
    }

    void Indent() override
    {
        if (!Replaces(Operation::Indent))
            XMLFormatter::Indent();
    }
    void Undent() override
    {
        if (!Replaces(Operation::Undent))
            XMLFormatter::Undent();
    }
    const TString& GetIndent() const override
    {
        return IsReplaced(Operation::GetIndent) ? m_replacedIndent : XMLFormatter::GetIndent();
    }
    /// Noted whatever is replaced: nothing calls it.
    void Flush() override { Note(u"Flush"); }
    void OutputAttributes(const AttributeMap& attributes) override
    {
        if (!Replaces(Operation::OutputAttributes, attributes))
            XMLFormatter::OutputAttributes(attributes);
    }
    void OutputDOMElement(const DOMElement& element) override
    {
        if (!Replaces(Operation::OutputDOMElement, element))
            XMLFormatter::OutputDOMElement(element);
    }
    void OutputDOMElements(const DOMElementChildren& children) override
    {
        if (!Replaces(Operation::OutputDOMElements, children))
            XMLFormatter::OutputDOMElements(children);
    }
    void OutputContent(const TString& text) override
    {
        if (!Replaces(Operation::OutputContent, text))
            XMLFormatter::OutputContent(text);
    }
    void OutputContent(const TString& text, bool raw) override
    {
        if (!Replaces(Operation::OutputContentRaw, text, raw))
            XMLFormatter::OutputContent(text, raw);
    }
    void OutputContentTag(const TString& name, const AttributeMap& attributes,
                          const TString& text) override
    {
        if (!Replaces(Operation::OutputContentTag, name, attributes, text))
            XMLFormatter::OutputContentTag(name, attributes, text);
    }
    void OutputContentTag(const TString& name, const AttributeMap& attributes, const TString& text,
                          bool encode) override
    {
        if (!Replaces(Operation::OutputContentTagEncode, name, attributes, text, encode))
            XMLFormatter::OutputContentTag(name, attributes, text, encode);
    }
    void OutputComment(const TString& text) override
    {
        if (!Replaces(Operation::OutputComment, text))
            XMLFormatter::OutputComment(text);
    }
    void OutputCloseTag(const TString& name) override
    {
        if (!Replaces(Operation::OutputCloseTag, name))
            XMLFormatter::OutputCloseTag(name);
    }
    void OutputOpenTag(const TString& name, const AttributeMap& attributes) override
    {
        if (!Replaces(Operation::OutputOpenTag, name, attributes))
            XMLFormatter::OutputOpenTag(name, attributes);
    }
    void OutputTag(const TString& name, const AttributeMap& attributes) override
    {
        if (!Replaces(Operation::OutputTag, name, attributes))
            XMLFormatter::OutputTag(name, attributes);
    }
    void OutputHeader() override
    {
        if (!Replaces(Operation::OutputHeader))
            XMLFormatter::OutputHeader();
    }
    void OutputLine(const TString& text) override
    {
        if (!Replaces(Operation::OutputLine, text))
            XMLFormatter::OutputLine(text);
    }
    void OutputString(const TString& text) override
    {
        if (!Replaces(Operation::OutputString, text))
            Note(text);
    }
    void OutputBinary(const unsigned char* bytes, unsigned int count) override
    {
        if (!Replaces(Operation::OutputBinary, count))
            XMLFormatter::OutputBinary(bytes, count);
    }
};

/// What such a formatter is to note, written down from the table of the calls that each operation
/// makes.
class FormatterModel : public OperationNotes
{
public:
    FormatterModel(Operation replaced, bool suppressNewlines)
        : OperationNotes(replaced), m_newline(suppressNewlines ? TString() : TString(u"\n"))
    {
    }

    void SetFormatMode(FormatMode mode) { m_mode = mode; }

    void Indent()
    {
        if (!Replaces(Operation::Indent))
            m_indent += u"\t";
    }
    void Undent()
    {
        if (!Replaces(Operation::Undent))
            m_indent = m_indent.left(m_indent.length() - 1);
    }
    TString GetIndent() const
    {
        return IsReplaced(Operation::GetIndent) ? m_replacedIndent : m_indent;
    }
    void OutputAttributes(const Attributes& attributes)
    {
        if (Replaces(Operation::OutputAttributes, attributes))
            return;
        for (const auto& [name, value] : std::map(attributes.begin(), attributes.end()))
            OutputString(u" " + name + u"='" + XMLFormatter::EncodeAttributeString(value) + u"'");
    }
    void OutputDOMElement(const DOMElement& element)
    {
        if (Replaces(Operation::OutputDOMElement, element))
            return;
        WriteElement(element, nullptr, [this](const auto& e) { OutputDOMElement(e); });
    }
    void OutputDOMElements(const DOMElementChildren& children)
    {
        if (Replaces(Operation::OutputDOMElements, children))
            return;
        for (const auto& child : children)
            OutputDOMElement(*child);
    }
    void OutputContent(const TString& text)
    {
        if (!Replaces(Operation::OutputContent, text))
            OutputContent(text, false);
    }
    void OutputContent(const TString& text, bool raw)
    {
        if (Replaces(Operation::OutputContentRaw, text, raw))
            return;
        if (!raw) {
            OutputString(m_mode == FormatMode::EscapeAll ? XMLFormatter::EncodeAttributeString(text)
                                                         : XMLFormatter::EncodeContentString(text));
            return;
        }
        if (!m_newline.IsEmpty() && !text.startsWith(m_newline))
            OutputString(m_newline);
        OutputString(text);
        if (!m_newline.IsEmpty() && !text.endsWith(m_newline))
            OutputString(m_newline);
        OutputString(GetIndent());
    }
    void OutputContentTag(const TString& name, const Attributes& attributes, const TString& text)
    {
        if (!Replaces(Operation::OutputContentTag, name, attributes, text))
            OutputContentTag(name, attributes, text, true);
    }
    void OutputContentTag(const TString& name, const Attributes& attributes, const TString& text,
                          bool encode)
    {
        if (Replaces(Operation::OutputContentTagEncode, name, attributes, text, encode))
            return;
        OutputString(GetIndent());
        OutputString(u"<");
        OutputString(name);
        OutputAttributes(attributes);
        OutputString(u">");
        OutputContent(text, !encode);
        OutputString(u"</");
        OutputString(name);
        OutputLine(u">");
    }
    void OutputComment(const TString& text)
    {
        if (Replaces(Operation::OutputComment, text))
            return;
        OutputString(GetIndent());
        OutputString(u"<!--");
        TString body = u" " + text + u" ";
        OutputString(body.replace(u"--", u"-&45;"));
        OutputLine(u"-->");
    }
    void OutputCloseTag(const TString& name)
    {
        if (Replaces(Operation::OutputCloseTag, name))
            return;
        OutputString(m_indent);
        OutputString(u"</");
        OutputString(name);
        OutputLine(u">");
    }
    void OutputOpenTag(const TString& name, const Attributes& attributes)
    {
        if (!Replaces(Operation::OutputOpenTag, name, attributes))
            OutputTagWith(name, attributes, u">");
    }
    void OutputTag(const TString& name, const Attributes& attributes)
    {
        if (!Replaces(Operation::OutputTag, name, attributes))
            OutputTagWith(name, attributes, u" />");
    }
    void OutputHeader()
    {
        if (Replaces(Operation::OutputHeader))
            return;
        OutputLine(u"<?xml version='1.0' encoding='utf-8' ?>");
        OutputLine(TString());
    }
    void OutputLine(const TString& text)
    {
        if (Replaces(Operation::OutputLine, text))
            return;
        OutputString(text);
        if (!m_newline.IsEmpty())
            OutputString(m_newline);
    }
    void OutputString(const TString& text)
    {
        if (!Replaces(Operation::OutputString, text))
            Note(text);
    }
    /// `lines` is the encoding of the bytes.
    void OutputBinary(const std::vector<TString>& lines, unsigned int count)
    {
        if (Replaces(Operation::OutputBinary, count))
            return;
        for (const TString& line : lines) {
            OutputString(m_indent);
            OutputLine(line);
        }
    }
    void FormatDOM(const DOMElement* element, const TString* comment, bool header)
    {
        if (header)
            OutputHeader();
        if (comment != nullptr)
            OutputComment(*comment);
        if (element != nullptr)
            OutputDOMElement(*element);
    }
    /// What XMLDomFormatter::Format calls; `textIndent` is that of the other formatter.
    void Format(const DOMElement& element, const TString& textIndent)
    {
        WriteElement(element, &textIndent, [&](const auto& e) { Format(e, textIndent); });
    }

private:
    /// Without `textIndent` it is the own one, as it is by then.
    template <typename WriteChild>
    void WriteElement(const DOMElement& element, const TString* textIndent, WriteChild writeChild)
    {
        const TString& name = element.GetName();
        const Attributes& attributes = element.GetAttributes();
        const TString& text = element.GetText();
        if (!element.HasChildren() && text.IsEmpty()) {
            OutputTag(name, attributes);
        } else if (!element.HasChildren()) {
            OutputContentTag(name, attributes, text, !element.IsEncoded());
        } else {
            OutputOpenTag(name, attributes);
            Indent();
            for (const auto& child : element.GetChildren())
                writeChild(*child);
            if (!text.IsEmpty()) {
                OutputString(textIndent == nullptr ? GetIndent() : *textIndent);
                OutputContent(text, element.IsEncoded());
            }
            Undent();
            OutputCloseTag(name);
        }
    }
    void OutputTagWith(const TString& name, const Attributes& attributes, const TString& end)
    {
        OutputString(m_indent);
        OutputString(u"<");
        OutputString(name);
        OutputAttributes(attributes);
        OutputLine(end);
    }

    FormatMode m_mode = FormatMode::EscapeAll;
    TString m_indent;
    TString m_newline;
};
