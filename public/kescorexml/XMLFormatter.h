#pragma once

#include <kescorexml/Export.h>

#include <kesplatform/TString.h>

#include <cstdint>
#include <unordered_map>

class DOM;
class DOMElement;
class DOMElementChildren;
class DataValue;
class QualifiedName;

/// How XMLFormatter::OutputContent escapes content that is not raw.
enum class FormatMode : std::int32_t
{
    /// Every content is escaped like an attribute value, line breaks and tabs included.
    EscapeAll = 0,
    /// Content is escaped by XMLFormatter::EncodeContentString.
    Content = 1,
};

/// Turns tags, attributes, text, comments, bytes and whole element trees into XML text and hands
/// every piece, in order, to one operation: OutputString.
///
/// Names are written as given, neither escaped nor checked. Callers keep open and close tags and
/// Indent and Undent balanced, normally with an Indenter. What OutputString throws leaves every
/// call.
///
/// Each element is written as it is when its own turn comes. OutputString, or another operation
/// that a subclass replaces, may add children to an element that is being written: they are left
/// out. It is a logic assertion when the children of such an element change otherwise. What is
/// being written must not be destroyed.
///
/// Different objects may be used from different threads.
class KESCOREXML_EXPORT XMLFormatter
{
public:
    /// Attribute values by name; always written in the order of the names.
    using AttributeMap = std::unordered_map<TString, TString>;

    // These live as long as the library.

    /// What an open tag begins with: "<".
    static const TString& prefixOpen;
    /// What a close tag begins with: "</".
    static const TString& prefixClose;
    /// What both end with: ">".
    static const TString& suffixOpenClose;
    /// What the tag of an element without content ends with: " />".
    static const TString& suffixEmpty;
    /// What a comment begins with: "<!--".
    static const TString& commentOpen;
    /// What a comment ends with: "-->".
    static const TString& commentClose;

    /// The longest indentation, in UTF-16 code units, that is written into a text which is kept:
    /// 16,384 levels of two blanks. The text of a chain of elements grows with the square of its
    /// depth; at this depth it is about 1 GB.
    static constexpr TString::size_type c_maxIndentLength = 32768;

    /// Opens an element for as long as the object lives: writes the open tag and indents; in the
    /// end undents and writes the close tag. The end never throws: an error of Undent drops the
    /// close tag, an error of the close tag is dropped. Refers to the formatter until then.
    class KESCOREXML_EXPORT Indenter
    {
    public:
        /// An element without attributes.
        Indenter(XMLFormatter& formatter, const TString& name);
        /// When Indent throws, the tag stays open.
        Indenter(XMLFormatter& formatter, const TString& name, const AttributeMap& attributes);
        Indenter(const Indenter&) = delete;
        Indenter& operator=(const Indenter&) = delete;
        ~Indenter();

    private:
        XMLFormatter& m_formatter;
        TString m_name;
    };

    /// `indentUnit` is written once for each level; `suppressNewlines` leaves out the line feed
    /// that otherwise ends every line. Starts in the mode EscapeAll, without indentation.
    XMLFormatter(const TString& indentUnit, bool suppressNewlines);
    XMLFormatter(const XMLFormatter&) = delete;
    XMLFormatter& operator=(const XMLFormatter&) = delete;
    virtual ~XMLFormatter();

    /// One level deeper.
    virtual void Indent();
    /// One level back.
    virtual void Undent();
    /// What stands before each line at present. The reference is valid as long as this formatter.
    [[nodiscard]] virtual const TString& GetIndent() const;
    /// For subclasses that buffer; does nothing here.
    virtual void Flush();

    /// One piece a pair: a blank, the name, "=" and the escaped value in single quotes.
    virtual void OutputAttributes(const AttributeMap& attributes);
    /// Writes the element with all below it, each child by a call of this operation; an element's
    /// own text follows its children. std::length_error when the tree is so deep that the thread's
    /// stack would not hold it; every tag that is open by then is closed.
    virtual void OutputDOMElement(const DOMElement& element);
    /// Writes each of the children with OutputDOMElement.
    virtual void OutputDOMElements(const DOMElementChildren& children);
    /// The same as OutputContent(text, false).
    virtual void OutputContent(const TString& text);
    /// `raw` text is XML already: it is written as it stands, on lines of its own. Other text is
    /// escaped as the format mode says.
    virtual void OutputContent(const TString& text, bool raw);
    /// The same as OutputContentTag(name, attributes, text, true).
    virtual void OutputContentTag(const TString& name, const AttributeMap& attributes,
                                  const TString& text);
    /// An element with content; `encode` false says that the text is XML already.
    virtual void OutputContentTag(const TString& name, const AttributeMap& attributes,
                                  const TString& text, bool encode);
    /// Two hyphens in a row cannot stand in a comment and are written "-&45;".
    virtual void OutputComment(const TString& text);
    /// A close tag on a line.
    virtual void OutputCloseTag(const TString& name);
    /// An open tag on a line.
    virtual void OutputOpenTag(const TString& name, const AttributeMap& attributes);
    /// An element without content.
    virtual void OutputTag(const TString& name, const AttributeMap& attributes);
    /// The XML declaration and an empty line.
    virtual void OutputHeader();
    /// A piece and the end of the line.
    virtual void OutputLine(const TString& text);
    /// Receives every piece.
    virtual void OutputString(const TString& text) = 0;
    /// Base64 in indented lines of 72 characters. `bytes` may be null when `count` is 0.
    virtual void OutputBinary(const unsigned char* bytes, unsigned int count);

    /// Applies to later calls of OutputContent.
    void SetFormatMode(FormatMode mode) noexcept { m_formatMode = mode; }

    /// The text with the five markup characters, tab, line feed and carriage return as references
    /// and every other unit that XML does not allow as "\xH;" (H hexadecimal). A text that needs
    /// no change is returned as it is, without a copy. Safe to use from several threads.
    [[nodiscard]] static TString EncodeAttributeString(const TString& text);
    /// Fewer than 32 units: the same as EncodeAttributeString. Longer text is one CDATA section
    /// when it contains "<" (double quotes around it are kept outside); otherwise it is escaped
    /// too, but keeps its tabs and line feeds. Safe to use from several threads.
    [[nodiscard]] static TString EncodeContentString(const TString& text);

    /// Attribute values. Safe to use from several threads.
    [[nodiscard]] static TString FormatBooleanAttribute(bool value);
    /// A number in decimal digits.
    [[nodiscard]] static TString FormatIntegerAttribute(int value);
    /// A number in decimal digits.
    [[nodiscard]] static TString FormatInt64Attribute(long long value);
    /// A number in decimal digits.
    [[nodiscard]] static TString FormatUInt32Attribute(unsigned int value);
    /// 17 significant digits, as by the printf conversion %g: reads back as the same value.
    [[nodiscard]] static TString FormatDoubleAttribute(double value);
    /// 6 significant digits, as by %g.
    [[nodiscard]] static TString FormatFloatAttribute(float value);
    /// The canonical text of a value, free of any locale.
    [[nodiscard]] static TString FormatDataValueAttribute(const DataValue& value);
    /// The written form of a name.
    [[nodiscard]] static TString FormatQualifiedNameAttribute(const QualifiedName& name);

    /// Writes a document: the header if wanted, the comment if not null, the document element if
    /// there is one.
    static void FormatDOM(XMLFormatter& formatter, const DOM& dom, TString* comment, bool header);
    /// The same for an element and all below it.
    static void FormatDOM(XMLFormatter& formatter, const DOMElement& element, TString* comment,
                          bool header);

protected:
    /// Whether a piece that reaches OutputString is the indentation, and no other text that is the
    /// same.
    bool IsIndent(const TString& piece) const noexcept { return &piece == &m_indent; }

private:
    static void FormatProlog(XMLFormatter& formatter, const TString* comment, bool header);

    TString m_indent;
    FormatMode m_formatMode;
    TString m_indentUnit;
    TString m_newline;
};
