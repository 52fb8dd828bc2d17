#pragma once

#include "Targets.h"

#include "support/ByteReader.h"
#include "support/ParseTrace.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/XercesXMLParser.h>
#include <kesplatform/CorvinaException.h>

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A program of calls: each byte is one, or an argument of one. Sinks, sources and handlers of
/// statistics read what they do, while a parser calls them, from the same bytes.
class CallProgram
{
public:
    using Location = std::pair<int, int>;

    /// What a parser leaves untouched when it knows no position.
    static constexpr Location c_unknown{-1, -2};
    /// What every parser must be able to read afterwards.
    static constexpr const char* c_usable = "<a b='1'>x<c/>\ny&amp;<c>z</c></a>";

    CallProgram(FuzzTargets::Bytes bytes, ParseTrace& trace) : m_reader(bytes), m_trace(trace)
    {
        MakeParser();
        m_dom.emplace();
        m_standalone.emplace();
    }
    CallProgram(const CallProgram&) = delete;
    CallProgram& operator=(const CallProgram&) = delete;

    void Run();

    // What those call that parsers call.

    void MeetEvent();
    bool IsDone();
    TString ResolveSchema();
    void MeetSource();
    void MeetStatistics(const DOMParserStatistics& statistics);

private:
    class Sink;
    class AskingSink;
    class Source;

    /// Within something that a parser calls, while it lives.
    class Depth
    {
    public:
        explicit Depth(int& depth) : m_depth(depth) { ++m_depth; }
        ~Depth() { --m_depth; }
        Depth(const Depth&) = delete;
        Depth& operator=(const Depth&) = delete;

    private:
        int& m_depth;
    };

    struct Load
    {
        std::string_view schema;
        TString id;
    };

    /// What is thrown from an event would not get here.
    void Expect(bool holds, const char* promise)
    {
        if (!holds && m_broken.empty())
            m_broken = promise;
    }
    template <typename Work>
    void Attempt(std::string_view what, const Work& work);

    void Step();
    void StepInside();
    void CallParser();
    void LoadSchema();
    void CallDom();
    void ParseDom(std::size_t door);
    void CallStandalone();
    void ParseStandalone(std::size_t door);
    template <typename TreeParser>
    void SetHandler(TreeParser& parser);

    std::shared_ptr<SAXInterface> MakeSink();
    void MakeParser();
    void Parse();
    void Reload();
    InputSource& MakeSource(const std::string& bytes);
    std::unique_ptr<InputSource> MakeOwnSource(const std::string& bytes);
    Location Ask();
    void Look();
    void CheckDocument(const std::unique_ptr<DOM>& document);
    void CheckParserIsUsable();
    void CheckTreeParsersAreUsable();

    ByteReader m_reader;
    ParseTrace& m_trace;
    std::string m_broken;
    int m_depth = 0;
    /// Parsing or loading a schema; then the parser is to stay the one that it is.
    bool m_isBusy = false;
    std::vector<std::unique_ptr<InputSource>> m_sources;
    std::unique_ptr<XercesXMLParser> m_parser;
    Location m_lastEvent = c_unknown;
    bool m_hasEventInParse = false;
    bool m_isDone = false;
    bool m_isDoneOnce = false;
    /// The sink made last asks which attributes are wrong; every other one does.
    bool m_asks = false;
    bool m_expands = false;
    bool m_hasLimits = false;
    /// All that the parser was told to load, while that is known.
    std::optional<std::vector<Load>> m_loads;
    std::optional<DOMParser> m_dom;
    bool m_domHasSchema = false;
    std::optional<StandaloneDOMParser> m_standalone;
    bool m_standaloneHasSchema = false;
};

template <typename Work>
void CallProgram::Attempt(std::string_view what, const Work& work)
{
    m_trace.Line(what);
    try {
        work();
    } catch (const CorvinaException& exception) {
        m_trace.Line("thrown").Text(exception.GetConcatenatedMessages());
    } catch (const std::exception& exception) {
        m_trace.Line("thrown").Text(std::string_view(exception.what()));
    } catch (...) {
        m_trace.Line("something was thrown");
    }
}
