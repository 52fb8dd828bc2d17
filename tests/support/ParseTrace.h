#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/Parser.h>
#include <kescorexml/SAXFileLocation.h>
#include <kescorexml/SAXInterface.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

/// What a caller of the library saw, in the order seen. Texts stand in it unit by unit with their
/// length in front, so that two traces are equal only if all that was seen is.
class ParseTrace
{
public:
    /// Begins a new line.
    ParseTrace& Line(std::string_view what);
    ParseTrace& Text(std::u16string_view units);
    ParseTrace& Text(std::string_view bytes);
    ParseTrace& Number(long long number);
    /// Also tells of a text that is not terminated.
    ParseTrace& Text(const TString& text);

    bool operator==(const ParseTrace&) const = default;
    /// What both have in common just before the first difference, and how each goes on; empty when
    /// they are equal.
    std::string Difference(const ParseTrace& other, std::string_view nameOfThis,
                           std::string_view nameOfOther) const;

private:
    std::u16string m_units;
};

/// Bytes as people read them: what is not printable as "\xNN".
std::string ToReadable(std::string_view bytes);

/// How a TracingSink behaves. Events are counted from 1: start tags, end tags and texts.
struct SinkPlan
{
    static constexpr std::size_t c_never = std::numeric_limits<std::size_t>::max();

    enum class Thrown
    {
        StandardException,
        ParseException,
        OutOfMemory,
        Number,
        LogicAssertion,
        // What Xerces throws itself, in part to tell its own scanner of something.

        XercesOutOfMemory,
        XercesException,
        XercesErrorCode,
        XercesValidityCode,
        XercesSaxException,
        XercesParseException,
        XercesEndOfEntity
    };
    static constexpr std::size_t c_kindsThrown = 12;

    /// Done when it is asked after this event, or a later one.
    std::size_t stopFrom = c_never;
    /// Done only the first time that it is asked then.
    bool stopsOnce = false;
    /// Throws in this event and in all later ones.
    std::size_t throwFrom = c_never;
    /// Throws instead when it is asked, after that event or a later one, whether it is done.
    bool throwsWhenAsked = false;
    Thrown thrown = Thrown::StandardException;
};

/// Throws something of that kind.
[[noreturn]] void ThrowAs(SinkPlan::Thrown kind);

/// Writes down all that a sink is told, and at each call where the parser says that it stands and
/// what it has recorded so far. It takes names and attributes for its own and changes them.
class TracingSink : public SAXInterface
{
public:
    TracingSink(ParseTrace& trace, const SinkPlan& plan) : m_trace(trace), m_plan(plan) {}

    /// Whose positions and messages are written down; must outlive the events.
    template <typename Listened>
    void Listen(Listened& parser)
    {
        m_parser = &parser;
        m_location = &parser;
    }

    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override;
    void EndElement() override;
    void TextContent(const TString& text) override;
    bool IsDone() override;

    std::size_t CountEvents() const { return m_events; }

private:
    void WhereAreWe();
    void FinishEvent();
    void Throw() const;

    ParseTrace& m_trace;
    const SinkPlan m_plan;
    const Parser* m_parser = nullptr;
    SAXFileLocation* m_location = nullptr;
    std::size_t m_events = 0;
    bool m_hasStopped = false;
};

/// Where the parser says that it stands; made-up numbers stay where it does not say.
void TracePosition(ParseTrace& trace, SAXFileLocation& location);
/// Lists, records and flags.
void TraceMessages(ParseTrace& trace, const Parser& parser);
/// The tree, with positions, encoded flags and the order in which attributes are walked over, and
/// all diagnostics. Depth does not matter.
void TraceDocument(ParseTrace& trace, const DOM& document);
/// The tree and the messages. Depth does not matter.
void TraceResult(ParseTrace& trace, const StandaloneParseResult& result);
