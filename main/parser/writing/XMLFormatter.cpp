#include <kescorexml/XMLFormatter.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "base/StackGuard.h"
#include "tree/DOMElementAccess.h"
#include "writing/ChildrenInTurn.h"
#include "writing/KeptText.h"
#include "writing/XMLEscaping.h"
#include "writing/XMLFormatterAssertions.h"
#include "writing/XMLTreeWriter.h"

#include <kescorexml/Base64.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementChildren.h>

#include <kesplatform/DataValue.h>
#include <kesplatform/QualifiedName.h>
#include <kesplatform/TFormatString.h>
#include <kesplatform/TLog.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

/// A text that is never destroyed: destructors of other static objects may still write.
const TString& MakeImmortal(const char16_t* text)
{
    return *new TString(text);
}

} // namespace

const TString& XMLFormatter::prefixOpen = MakeImmortal(u"<");
const TString& XMLFormatter::prefixClose = MakeImmortal(u"</");
const TString& XMLFormatter::suffixOpenClose = MakeImmortal(u">");
const TString& XMLFormatter::suffixEmpty = MakeImmortal(u" />");
const TString& XMLFormatter::commentOpen = MakeImmortal(u"<!--");
const TString& XMLFormatter::commentClose = MakeImmortal(u"-->");

// Construction and indentation

XMLFormatter::XMLFormatter(const TString& indentUnit, bool suppressNewlines)
    : m_formatMode(FormatMode::EscapeAll), m_indentUnit(indentUnit),
      m_newline(suppressNewlines ? TString() : TString(u"\n"))
{
}

XMLFormatter::~XMLFormatter() = default;

void XMLFormatter::Indent()
{
    m_indent += m_indentUnit;
}

void XMLFormatter::Undent()
{
    // In place: a chain of open tags is as often undone as it is deep.
    const TString::size_type length = m_indent.length() - m_indentUnit.length();
    if (length >= 0)
        m_indent.resize(length);
}

const TString& XMLFormatter::GetIndent() const
{
    return m_indent;
}

void XMLFormatter::Flush() {}

// Pieces

void XMLFormatter::OutputLine(const TString& text)
{
    OutputString(text);
    if (!m_newline.IsEmpty())
        OutputString(m_newline);
}

void XMLFormatter::OutputHeader()
{
    OutputLine(u"<?xml version='1.0' encoding='utf-8' ?>");
    OutputLine(TString());
}

void XMLFormatter::OutputTag(const TString& name, const AttributeMap& attributes)
{
    OutputString(m_indent);
    OutputString(prefixOpen);
    OutputString(name);
    OutputAttributes(attributes);
    OutputLine(suffixEmpty);
}

void XMLFormatter::OutputOpenTag(const TString& name, const AttributeMap& attributes)
{
    OutputString(m_indent);
    OutputString(prefixOpen);
    OutputString(name);
    OutputAttributes(attributes);
    OutputLine(suffixOpenClose);
}

void XMLFormatter::OutputCloseTag(const TString& name)
{
    OutputString(m_indent);
    OutputString(prefixClose);
    OutputString(name);
    OutputLine(suffixOpenClose);
}

void XMLFormatter::OutputContentTag(const TString& name, const AttributeMap& attributes,
                                    const TString& text)
{
    OutputContentTag(name, attributes, text, true);
}

void XMLFormatter::OutputContentTag(const TString& name, const AttributeMap& attributes,
                                    const TString& text, bool encode)
{
    OutputString(GetIndent());
    OutputString(prefixOpen);
    OutputString(name);
    OutputAttributes(attributes);
    OutputString(suffixOpenClose);
    OutputContent(text, !encode);
    OutputString(prefixClose);
    OutputString(name);
    OutputLine(suffixOpenClose);
}

void XMLFormatter::OutputContent(const TString& text)
{
    OutputContent(text, false);
}

void XMLFormatter::OutputContent(const TString& text, bool raw)
{
    if (!raw) {
        OutputString(m_formatMode == FormatMode::EscapeAll ? EncodeAttributeString(text)
                                                           : EncodeContentString(text));
        return;
    }
    if (!m_newline.IsEmpty() && !text.startsWith(m_newline))
        OutputString(m_newline);
    OutputString(text);
    if (!m_newline.IsEmpty() && !text.endsWith(m_newline))
        OutputString(m_newline);
    OutputString(GetIndent());
}

void XMLFormatter::OutputComment(const TString& text)
{
    OutputString(GetIndent());
    OutputString(commentOpen);
    TString body(u" ");
    body.append(text).append(u' ').replace(u"--", u"-&45;");
    OutputString(body);
    OutputLine(commentClose);
}

void XMLFormatter::OutputAttributes(const AttributeMap& attributes)
{
    if (attributes.empty())
        return;
    std::vector<std::pair<TString, TString>> sorted(attributes.begin(), attributes.end());
    std::sort(sorted.begin(), sorted.end());
    for (const auto& [name, value] : sorted) {
        TString piece(u" ");
        piece += name;
        piece += u"='";
        piece += EncodeAttributeString(value);
        piece += u'\'';
        OutputString(piece);
    }
}

void XMLFormatter::OutputBinary(const unsigned char* bytes, unsigned int count)
{
    std::vector<TString> lines;
    Base64Encode(bytes, count, lines, true);
    for (const TString& line : lines) {
        OutputString(m_indent);
        OutputLine(line);
    }
}

// Trees

void XMLFormatter::OutputDOMElements(const DOMElementChildren& children)
{
    ChildrenInTurn inTurn(children);
    while (const DOMElement* child = inTurn.Next())
        OutputDOMElement(*child);
}

void XMLFormatter::OutputDOMElement(const DOMElement& element)
{
    // Where nobody can tell by which calls a text came about, it is made by none. Elsewhere the
    // calls below are the contract, recursion included.
    if (TString* kept = KeptText::Of(*this)) {
        XMLTreeWriter(*kept, {m_formatMode, m_indent, m_indentUnit, m_newline, nullptr})
            .Write(element);
        return;
    }
    StackGuard::RequireRoom("XMLFormatter: the tree is too deep for this thread's stack");

    // As they are now, whatever the calls do to the element.
    const TString name = element.GetName();
    const AttributeMap& attributes = element.GetAttributes();
    const TString text = element.GetText();
    const bool isEncoded = element.IsEncoded();
    if (!element.HasChildren()) {
        if (text.IsEmpty())
            OutputTag(name, attributes);
        else
            OutputContentTag(name, attributes, text, !isEncoded);
        return;
    }
    ChildrenInTurn children(DOMElementAccess::Children(element));
    const Indenter indenter(*this, name, attributes);
    while (const DOMElement* child = children.Next())
        OutputDOMElement(*child);
    if (!text.IsEmpty()) {
        OutputString(GetIndent());
        OutputContent(text, isEncoded);
    }
}

void XMLFormatter::FormatProlog(XMLFormatter& formatter, const TString* comment, bool header)
{
    if (header)
        formatter.OutputHeader();
    if (comment != nullptr)
        formatter.OutputComment(*comment);
}

void XMLFormatter::FormatDOM(XMLFormatter& formatter, const DOM& dom, TString* comment, bool header)
{
    FormatProlog(formatter, comment, header);
    if (const DOMElement* root = dom.GetDocumentRoot())
        formatter.OutputDOMElement(*root);
}

void XMLFormatter::FormatDOM(XMLFormatter& formatter, const DOMElement& element, TString* comment,
                             bool header)
{
    FormatProlog(formatter, comment, header);
    formatter.OutputDOMElement(element);
}

// Escaping and attribute values

TString XMLFormatter::EncodeAttributeString(const TString& text)
{
    return XMLEscaping::EncodeStringWithTable(text, MappingTableType::Attribute);
}

TString XMLFormatter::EncodeContentString(const TString& text)
{
    if (!XMLEscaping::IsLongContent(text))
        return XMLEscaping::EncodeStringWithTable(text, MappingTableType::Attribute);
    if (text.contains(u'<'))
        return XMLEscaping::EncodeCData(text);
    return XMLEscaping::EncodeStringWithTable(text, MappingTableType::LongContent);
}

TString XMLFormatter::FormatBooleanAttribute(bool value)
{
    static const TString& s_true = MakeImmortal(u"true");
    static const TString& s_false = MakeImmortal(u"false");
    return value ? s_true : s_false;
}

TString XMLFormatter::FormatIntegerAttribute(int value)
{
    return TString::number(value);
}

TString XMLFormatter::FormatInt64Attribute(long long value)
{
    return TString::number(value);
}

TString XMLFormatter::FormatUInt32Attribute(unsigned int value)
{
    return TString::number(value);
}

TString XMLFormatter::FormatDoubleAttribute(double value)
{
    return TString::number(value, 'g', 17);
}

TString XMLFormatter::FormatFloatAttribute(float value)
{
    return TString::number(static_cast<double>(value), 'g', 6);
}

TString XMLFormatter::FormatDataValueAttribute(const DataValue& value)
{
    DataValueFormatter::FormatOptions options;
    options.canonical = true;
    return DataValueFormatter::Format(value, options);
}

TString XMLFormatter::FormatQualifiedNameAttribute(const QualifiedName& name)
{
    return name.GetFullValue();
}

// Indenter

XMLFormatter::Indenter::Indenter(XMLFormatter& formatter, const TString& name)
    : Indenter(formatter, name, AttributeMap())
{
}

XMLFormatter::Indenter::Indenter(XMLFormatter& formatter, const TString& name,
                                 const AttributeMap& attributes)
    : m_formatter(formatter), m_name(name)
{
    m_formatter.OutputOpenTag(m_name, attributes);
    m_formatter.Indent();
}

XMLFormatter::Indenter::~Indenter()
{
    try {
        m_formatter.Undent();
        m_formatter.OutputCloseTag(m_name);
    } catch (...) {
        // Whoever needs to know hears of a broken OutputString from its own next call.
    }
}

// Assertions

void ThrowLengthMismatch(const TString& text, const TString& encoded, std::size_t written)
{
    LogMessage(TLog::Info,
               TFormatString(u"Encoded string length doesn't match the total encoded character "
                             u"count. Input string is \"%1\". Encoded string is \"%2\". Encoded "
                             u"string length is %3. Character count after encoding is %4.")
                   .Format(text, encoded, encoded.length(), written));
    ThrowAssertion(u"XMLFormatter", __LINE__,
                   u"Encoded string length doesn't match the total encoded character count.",
                   KesErrorsError::LogicAssert_0xF6B4AF4C());
}

void ThrowUnknownMappingTableType()
{
    ThrowAssertion(u"XMLFormatter", __LINE__, u"Unknown type passed to InitMappingTableType",
                   KesErrorsError::LogicAssert_0xF6AD402C());
}

void ThrowChildrenChanged()
{
    ThrowAssertion(u"XMLFormatter", __LINE__,
                   u"The children of an element changed while they were written.",
                   KesErrorsError::LogicAssert_0x3B9E52D7());
}
