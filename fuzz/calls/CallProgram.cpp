#include "calls/CallProgram.h"

#include "bytes/XercesInputSource.h"
#include "support/ParserInputs.h"
#include "support/Require.h"

namespace {

/// How deep calls may be made within calls.
constexpr int c_maximumDepth = 3;

} // namespace

class CallProgram::Sink : public SAXInterfaceExtension
{
public:
    explicit Sink(CallProgram& program) : m_program(program) {}
    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override
    {
        m_program.m_trace.Line("<").Text(name);
        for (const auto& [key, value] : attributes)
            m_program.m_trace.Text(key).Text(value);
        const TString taken = std::move(name);
        m_program.MeetEvent();
    }
    void EndElement() override
    {
        m_program.m_trace.Line("/");
        m_program.MeetEvent();
    }
    void TextContent(const TString& text) override
    {
        m_program.m_trace.Line("T").Text(text);
        m_program.MeetEvent();
    }
    bool IsDone() override { return m_program.IsDone(); }
    TString ResolveSchemaLocation(const TString&, const TString& location) override
    {
        m_program.m_trace.Line("resolve").Text(location);
        return m_program.ResolveSchema();
    }
    TString FilterSchemaText(const TString& text, const TString&) override
    {
        m_program.StepInside();
        return text;
    }

private:
    CallProgram& m_program;
};

/// Asks which attributes are wrong.
class CallProgram::AskingSink : public Sink, public SAXAttributeErrors
{
    using Sink::Sink;
};

/// Calls, too, when it is read.
class CallProgram::Source : public Utf8InputSource
{
public:
    Source(CallProgram& program, const std::string& bytes)
        : Utf8InputSource(bytes, u"calling", false), m_program(program)
    {
    }
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
    {
        m_program.MeetSource();
        return Utf8InputSource::GetXercesInputSource(mode);
    }
    void ResetToStart() override
    {
        m_program.MeetSource();
        Utf8InputSource::ResetToStart();
    }

private:
    CallProgram& m_program;
};

void CallProgram::Run()
{
    while (!m_reader.IsAtEnd())
        Step();
    CheckParserIsUsable();
    CheckTreeParsersAreUsable();
    Require(m_broken.empty(), m_broken);
}

void CallProgram::Step()
{
    switch (m_reader.Below(4)) {
    case 2:
        return CallDom();
    case 3:
        return CallStandalone();
    default:
        CallParser();
        Look();
    }
}

void CallProgram::StepInside()
{
    if (m_depth >= c_maximumDepth)
        return;
    const Depth depth(m_depth);
    switch (m_reader.Below(16)) {
    case 9:
        return Look();
    case 10:
    case 11:
        return Step();
    case 12:
        m_isDone = true;
        return;
    case 13:
        m_isDoneOnce = true;
        return;
    case 14:
        // What is thrown in calls within calls goes through them all.
        return m_depth < c_maximumDepth ? Step() : void();
    case 15:
        m_trace.Line("throws");
        ThrowAs(static_cast<SinkPlan::Thrown>(m_reader.Below(SinkPlan::c_kindsThrown)));
    default:
        return;
    }
}

// What parsers call

void CallProgram::MeetEvent()
{
    const Location location = Ask();
    Expect(location.first >= 1 && location.second >= 1, "an event has a position");
    if (m_hasEventInParse)
        Expect(location >= m_lastEvent, "events come in the order of the document");
    m_hasEventInParse = true;
    m_lastEvent = location;
    StepInside();
}

bool CallProgram::IsDone()
{
    return m_isDone || std::exchange(m_isDoneOnce, false);
}

TString CallProgram::ResolveSchema()
{
    Expect(Ask() == m_lastEvent, "a schema that loads leaves the position of the last event");
    StepInside();
    return m_reader.Below(2) == 0 ? ParserInputs::GetFiles().GetSchema() : TString();
}

void CallProgram::MeetSource()
{
    m_trace.Line("source");
    StepInside();
}

void CallProgram::MeetStatistics(const DOMParserStatistics& statistics)
{
    m_trace.Line("statistics").Number(static_cast<long long>(statistics.sourceSize));
    m_trace.Text(statistics.sourceId);
    StepInside();
}

// What parsers are given

std::shared_ptr<SAXInterface> CallProgram::MakeSink()
{
    m_asks = !m_asks;
    if (m_asks)
        return std::make_shared<AskingSink>(*this);
    return std::make_shared<Sink>(*this);
}

std::unique_ptr<InputSource> CallProgram::MakeOwnSource(const std::string& bytes)
{
    if (m_reader.Below(4) == 3)
        return std::make_unique<Source>(*this, bytes);
    return ParserInputs::ReadSource(m_reader, bytes);
}

InputSource& CallProgram::MakeSource(const std::string& bytes)
{
    return *m_sources.emplace_back(MakeOwnSource(bytes));
}
