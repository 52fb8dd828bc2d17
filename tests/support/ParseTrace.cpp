#include "support/ParseTrace.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLParseException.h>
#include <kesplatform/LogicException.h>

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/internal/EndOfEntityException.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/RuntimeException.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <new>
#include <stdexcept>
#include <vector>

namespace {

/// Positions that no document has.
constexpr int c_noLine = -11;
constexpr int c_noColumn = -22;

/// How much of both traces a difference shows in front of the first unit that differs, and behind.
constexpr std::size_t c_shownBefore = 160;
constexpr std::size_t c_shownBehind = 200;

constexpr std::string_view c_digits = "0123456789ABCDEF";

void AppendReadably(std::string& out, std::u16string_view units)
{
    for (const char16_t unit : units) {
        if ((unit >= 0x20 && unit < 0x7F) || unit == u'\n') {
            out += static_cast<char>(unit);
            continue;
        }
        out += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4)
            out += c_digits[unit >> shift & 0xF];
    }
}

template <typename Map>
void TraceAttributes(ParseTrace& trace, const Map& attributes)
{
    trace.Number(static_cast<long long>(attributes.size()));
    for (const auto& [name, value] : attributes)
        trace.Text(name).Text(value);
}

template <typename Messages, typename Records>
void TraceList(ParseTrace& trace, std::string_view what, const Messages& messages,
               const Records& records)
{
    trace.Line(what).Number(static_cast<long long>(messages.size()));
    for (const TString& message : messages)
        trace.Line(" message").Text(message);
    for (const TError::ErrorInfo& record : records) {
        trace.Line(" record")
            .Number(record.GetError().GetCode())
            .Text(record.GetError().GetIdentifier())
            .Number(record.GetErrorSource())
            .Number(record.GetStatusCode());
    }
}

void TraceElement(ParseTrace& trace, const DOMElement& element)
{
    trace.Line("element").Text(element.GetName()).Text(element.GetText());
    trace.Number(element.IsEncoded());
    trace.Number(element.GetStartLine()).Number(element.GetStartColumn());
    trace.Number(element.GetEndLine()).Number(element.GetEndColumn());
    trace.Number(static_cast<long long>(element.GetChildren().size()));
    TraceAttributes(trace, element.GetAttributes());
}

void TraceElement(ParseTrace& trace, const StandaloneDOMElement& element,
                  std::vector<const StandaloneDOMElement*>& open)
{
    trace.Line("element").Text(element.GetName()).Number(element.IsEncoded());
    TraceAttributes(trace, element.GetAttributes());
    const std::size_t first = open.size();
    element.WalkNodes(
        [&](const StandaloneDOMElement& child) {
            trace.Number(1);
            open.push_back(&child);
        },
        [&](const TString& text) { trace.Number(2).Text(text); });
    std::reverse(open.begin() + static_cast<std::ptrdiff_t>(first), open.end());
}

} // namespace

std::string ToReadable(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (value >= 0x20 && value < 0x7F)
            text += byte;
        else
            text += {'\\', 'x', c_digits[value >> 4], c_digits[value & 0xF]};
    }
    return text;
}

// The trace

ParseTrace& ParseTrace::Line(std::string_view what)
{
    m_units += u'\n';
    m_units.append(what.begin(), what.end());
    return *this;
}

ParseTrace& ParseTrace::Number(long long number)
{
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    m_units += u' ';
    m_units.append(digits.data(), end);
    return *this;
}

ParseTrace& ParseTrace::Text(std::u16string_view units)
{
    Number(static_cast<long long>(units.size()));
    m_units += u':';
    m_units += units;
    return *this;
}

ParseTrace& ParseTrace::Text(std::string_view bytes)
{
    Number(static_cast<long long>(bytes.size()));
    m_units += u':';
    for (const char byte : bytes)
        m_units += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return *this;
}

ParseTrace& ParseTrace::Text(const TString& text)
{
    Text(text.view());
    if (text.utf16()[text.view().size()] != 0)
        Line("the text above is not terminated");
    return *this;
}

std::string ParseTrace::Difference(const ParseTrace& other, std::string_view nameOfThis,
                                   std::string_view nameOfOther) const
{
    if (*this == other)
        return {};
    const auto same = static_cast<std::size_t>(
        std::mismatch(m_units.begin(), m_units.end(), other.m_units.begin(), other.m_units.end())
            .first -
        m_units.begin());
    const std::size_t start = same > c_shownBefore ? same - c_shownBefore : 0;
    std::string text = "both: ...";
    AppendReadably(text, std::u16string_view(m_units).substr(start, same - start));
    const auto append = [&](std::string_view name, const std::u16string& units) {
        text += "\n--- " + std::string(name) + ": ";
        AppendReadably(text, std::u16string_view(units).substr(same, c_shownBehind));
    };
    append(nameOfThis, m_units);
    append(nameOfOther, other.m_units);
    return text;
}

// The sink

void TracingSink::StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes)
{
    m_trace.Line("<").Text(name);
    TraceAttributes(m_trace, attributes);
    TString taken = std::move(name);
    taken += u"!";
    auto takenAttributes = std::move(attributes);
    for (auto& attribute : takenAttributes)
        attribute.second += u"!";
    FinishEvent();
}

void TracingSink::EndElement()
{
    m_trace.Line("/");
    FinishEvent();
}

void TracingSink::TextContent(const TString& text)
{
    m_trace.Line("T").Text(text);
    FinishEvent();
}

bool TracingSink::IsDone()
{
    m_trace.Line("done?");
    WhereAreWe();
    if (m_plan.throwsWhenAsked && m_events >= m_plan.throwFrom)
        Throw();
    if (m_events < m_plan.stopFrom || (m_hasStopped && m_plan.stopsOnce))
        return false;
    m_hasStopped = true;
    m_trace.Line("done!");
    return true;
}

void TracingSink::WhereAreWe()
{
    if (m_location != nullptr)
        TracePosition(m_trace, *m_location);
    if (m_parser != nullptr && (m_parser->HasErrors() || m_parser->HasWarnings()))
        TraceMessages(m_trace, *m_parser);
}

void TracingSink::FinishEvent()
{
    WhereAreWe();
    ++m_events;
    if (m_events >= m_plan.throwFrom && !m_plan.throwsWhenAsked)
        Throw();
}

void TracingSink::Throw() const
{
    m_trace.Line("throws");
    ThrowAs(m_plan.thrown);
}

void ThrowAs(SinkPlan::Thrown kind)
{
    using Thrown = SinkPlan::Thrown;

    switch (kind) {
    case Thrown::StandardException:
        throw std::runtime_error("enough");
    case Thrown::ParseException:
        throw XMLParseException(u"enough");
    case Thrown::OutOfMemory:
        throw std::bad_alloc();
    case Thrown::Number:
        break;
    case Thrown::LogicAssertion:
        throw LogicException("enough", 1, u"enough", CorvinaError(1, "enough"));
    case Thrown::XercesOutOfMemory:
        throw xercesc::OutOfMemoryException();
    case Thrown::XercesException:
        throw xercesc::RuntimeException("enough", 1, xercesc::XMLExcepts::Gen_ParseInProgress);
    case Thrown::XercesErrorCode:
        throw xercesc::XMLErrs::ExpectedCommentOrCDATA;
    case Thrown::XercesValidityCode:
        throw xercesc::XMLValid::ElementNotDefined;
    case Thrown::XercesSaxException:
        throw xercesc::SAXException("enough");
    case Thrown::XercesParseException:
        throw xercesc::SAXParseException(u"enough", u"p", u"s", 7, 8);
    case Thrown::XercesEndOfEntity:
        throw xercesc::EndOfEntityException(nullptr, 0);
    }
    throw 1;
}

// What is there after a parse

void TraceDiagnostics(ParseTrace& trace, const std::vector<XMLDiagnostic>& diagnostics)
{
    for (const XMLDiagnostic& diagnostic : diagnostics) {
        trace.Line("diagnostic").Number(static_cast<int>(diagnostic.GetKind()));
        trace.Number(diagnostic.GetLine()).Number(diagnostic.GetColumn());
        trace.Number(diagnostic.IsInvalidUtf8()).Number(diagnostic.IsEntityRefused());
        trace.Text(diagnostic.GetId()).Text(diagnostic.GetText()).Text(diagnostic.GetMessage());
    }
}

void TraceSkipped(ParseTrace& trace, const std::vector<SkippedEntity>& entities)
{
    for (const SkippedEntity& entity : entities) {
        trace.Line("skipped").Text(entity.name);
        trace.Number(static_cast<long long>(entity.references));
        trace.Number(entity.line).Number(entity.column);
    }
}

void TracePosition(ParseTrace& trace, SAXFileLocation& location)
{
    int line = c_noLine;
    int column = c_noColumn;
    location.GetCurrentLocation(line, column);
    trace.Number(line).Number(column);
}

void TraceMessages(ParseTrace& trace, const Parser& parser)
{
    trace.Line("flags").Number(parser.HasFatallyErrored());
    trace.Number(parser.HasErrors()).Number(parser.HasWarnings());
    TraceList(trace, "errors", parser.GetErrors(), parser.GetMetadataForErrors());
    TraceList(trace, "warnings", parser.GetWarnings(), parser.GetMetadataForWarnings());
    TraceDiagnostics(trace, parser.GetErrorDiagnostics());
    TraceDiagnostics(trace, parser.GetWarningDiagnostics());
    TraceSkipped(trace, parser.GetSkippedEntities());
}

void TraceDocument(ParseTrace& trace, const DOM& document)
{
    std::vector<const DOMElement*> open{document.GetRoot()};
    while (!open.empty()) {
        const DOMElement& element = *open.back();
        open.pop_back();
        TraceElement(trace, element);
        const std::size_t first = open.size();
        for (const auto& child : element.GetChildren()) {
            if (child->GetParent() != &element)
                trace.Line("not the parent of its child");
            open.push_back(child.get());
        }
        std::reverse(open.begin() + static_cast<std::ptrdiff_t>(first), open.end());
    }
    trace.Line("flags").Number(document.HasErrors()).Number(document.HasWarnings());
    trace.Number(document.HasUnreportedErrors()).Number(document.HasCancelErrors());
    trace.Number(document.GetDocumentRoot() != nullptr);
    TraceList(trace, "errors", document.GetErrors(), document.GetMetadataForErrors());
    TraceList(trace, "warnings", document.GetWarnings(), document.GetMetadataForWarnings());
    TraceDiagnostics(trace, document.GetErrorDiagnostics());
    TraceDiagnostics(trace, document.GetWarningDiagnostics());
    TraceSkipped(trace, document.GetSkippedEntities());
}

void TraceResult(ParseTrace& trace, const StandaloneParseResult& result)
{
    std::vector<const StandaloneDOMElement*> open{result.root.get()};
    while (!open.empty()) {
        const StandaloneDOMElement& element = *open.back();
        open.pop_back();
        TraceElement(trace, element, open);
    }
    for (const TString& error : result.errors)
        trace.Line("error").Text(error);
    TraceDiagnostics(trace, result.diagnostics);
    TraceSkipped(trace, result.skippedEntities);
}
