#pragma once

#include <kescorexml/Export.h>

#include <kesplatform/TString.h>

#include <utility>

/// One message about a document, taken apart: what GetErrors and GetWarnings of a parser or of a
/// document put into one text. A plain value of a few pointers, whose copies share their texts.
///
/// @code
/// const auto document = DOMParser().ParseXmlString("<a>\n<b>tea</a>", "a.xml");
/// for (const XMLDiagnostic& error : document->GetErrorDiagnostics())
///     std::cout << error.GetLine() << ' ' << error.GetText() << '\n'; // 2 expected end of tag 'b'
/// @endcode
class KESCOREXML_EXPORT XMLDiagnostic
{
public:
    /// How bad it is. A parse ends with a fatal error and goes on after the others.
    enum class Kind : unsigned char
    {
        Warning,
        Error,
        FatalError
    };

    /// What a program has to say: its message is the text, and it has no identifier or position.
    XMLDiagnostic(Kind kind, TString message) noexcept : m_text(std::move(message))
    {
        m_source.kind = kind;
    }
    /// What a scanner has to say of a place in the document or schema `id`. The message names it:
    /// "Fatal Error(2,9): expected end of tag 'b' (id: a.xml)", without the position when line and
    /// column are 0.
    XMLDiagnostic(Kind kind, TString text, TString id, unsigned long long line,
                  unsigned long long column);

    /// The same with another message.
    [[nodiscard]] XMLDiagnostic WithMessage(TString message) &&
    {
        m_source.form = Form::Own;
        m_source.message = std::move(message);
        return std::move(*this);
    }
    /// The same as IsInvalidUtf8.
    [[nodiscard]] XMLDiagnostic AsInvalidUtf8() &&
    {
        m_source.isInvalidUtf8 = true;
        return std::move(*this);
    }

    /// The same as IsEntityRefused.
    [[nodiscard]] XMLDiagnostic AsEntityRefused() &&
    {
        m_source.isEntityRefused = true;
        return std::move(*this);
    }

    /// The same about an attribute, which is not to have an empty name.
    [[nodiscard]] XMLDiagnostic AboutAttribute(TString name, TString value) &&
    {
        m_source.attribute = std::move(name);
        m_source.value = std::move(value);
        return std::move(*this);
    }

    /// How bad it is. Errors that a program attached to an element are no fatal ones.
    [[nodiscard]] Kind GetKind() const noexcept { return m_source.kind; }
    /// From 1, as elements count them; 0 where no position is known, as for messages of programs.
    [[nodiscard]] int GetLine() const noexcept { return m_source.line; }
    /// From 1, in UTF-16 units of the line; 0 where none is known.
    [[nodiscard]] int GetColumn() const noexcept { return m_source.column; }
    /// The identifier of the document or schema; empty where none is known.
    [[nodiscard]] const TString& GetId() const noexcept { return m_source.id; }
    /// What is wrong, in words: the message without kind, position and identifier.
    [[nodiscard]] const TString& GetText() const noexcept { return m_text; }
    /// The message, as it is listed elsewhere. Put together at each call.
    [[nodiscard]] TString GetMessage() const;
    /// Whether bytes there are not UTF-8, which does not mean a character that the end cuts off.
    /// Scanners decode ahead of what they read: elements that stand before them may be missing.
    [[nodiscard]] bool IsInvalidUtf8() const noexcept { return m_source.isInvalidUtf8; }
    /// Whether there is a reference to an entity that the document declares, and whoever parses has
    /// not allowed its expansion.
    [[nodiscard]] bool IsEntityRefused() const noexcept { return m_source.isEntityRefused; }
    /// The attribute that a schema finds wrong, with its prefix; empty where none is known, and
    /// wherever the sink of the parse did not ask for it: see SAXAttributeErrors.
    [[nodiscard]] const TString& GetAttribute() const noexcept { return m_source.attribute; }
    /// The value of that attribute as the sink is told of it.
    [[nodiscard]] const TString& GetValue() const noexcept { return m_source.value; }

private:
    // In a document the text is a member of its public DOMErrorMessage, and nothing is kept twice.
    friend class DOM;

    /// What the message is made of.
    enum class Form : unsigned char
    {
        Text,
        Parts,
        Own
    };

    struct KESCOREXML_NO_EXPORT Source
    {
        TString MakeMessage(const TString& text) const;

        TString id;
        /// Only when it has one of its own.
        TString message;
        TString attribute;
        TString value;
        int line = 0;
        int column = 0;
        Kind kind = Kind::Error;
        Form form = Form::Text;
        bool isInvalidUtf8 = false;
        bool isEntityRefused = false;
    };

    XMLDiagnostic(TString text, Source source) noexcept
        : m_text(std::move(text)), m_source(std::move(source))
    {
    }

    TString m_text;
    Source m_source;
};
