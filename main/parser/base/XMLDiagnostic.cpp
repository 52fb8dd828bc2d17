#include <kescorexml/XMLDiagnostic.h>

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <string_view>

namespace {

const char16_t* GetName(XMLDiagnostic::Kind kind) noexcept
{
    switch (kind) {
    case XMLDiagnostic::Kind::Warning:
        return u"Warning";
    case XMLDiagnostic::Kind::Error:
        return u"Error";
    case XMLDiagnostic::Kind::FatalError:
        break;
    }
    return u"Fatal Error";
}

/// A text that takes no more room than it needs: there may be many that are kept.
TString Join(std::initializer_list<std::u16string_view> parts)
{
    TString::size_type length = 0;
    for (const std::u16string_view part : parts)
        length += static_cast<TString::size_type>(part.size());
    TString text;
    char16_t* end = text.resizeForOverwrite(length);
    for (const std::u16string_view part : parts)
        end = std::copy(part.begin(), part.end(), end);
    return text;
}

TString MakeMessage(XMLDiagnostic::Kind kind, const TString& text, const TString& id,
                    unsigned long long line, unsigned long long column)
{
    TString position;
    if (line != 0 || column != 0)
        position = Join({u"(", TString::number(line), u",", TString::number(column), u")"});
    return Join({GetName(kind), position, u": ", text, u" (id: ", id, u")"});
}

} // namespace

XMLDiagnostic::XMLDiagnostic(Kind kind, TString text, TString id, unsigned long long line,
                             unsigned long long column)
    : m_text(std::move(text))
{
    constexpr unsigned long long c_maximum = std::numeric_limits<int>::max();
    m_source.kind = kind;
    m_source.id = std::move(id);
    m_source.line = static_cast<int>(std::min(line, c_maximum));
    m_source.column = static_cast<int>(std::min(column, c_maximum));
    m_source.form = Form::Parts;
    // The message has the very number.
    if (line > c_maximum || column > c_maximum) {
        m_source.message = ::MakeMessage(kind, m_text, m_source.id, line, column);
        m_source.form = Form::Own;
    }
}

TString XMLDiagnostic::GetMessage() const
{
    return m_source.MakeMessage(m_text);
}

TString XMLDiagnostic::Source::MakeMessage(const TString& text) const
{
    switch (form) {
    case Form::Text:
        return text;
    case Form::Own:
        return message;
    case Form::Parts:
        break;
    }
    return ::MakeMessage(kind, text, id, static_cast<unsigned long long>(line),
                         static_cast<unsigned long long>(column));
}
