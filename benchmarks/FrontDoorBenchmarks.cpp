#include "Documents.h"
#include "Families.h"
#include "Peers.h"
#include "Ratios.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/VersionSniffer.h>
#include <kescorexml/XercesXMLParser.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unordered_map>

#include <unistd.h>

namespace {

/// Beside bytes to DOM.
constexpr double c_file = 1.15;
// Beside the scanner.

constexpr double c_standalone = 0.8;
constexpr double c_sink = 0.35;
// Beside a reader that is used again, and beside one that is made anew.

constexpr double c_oneParser = 0.5;
constexpr double c_parserEachTime = 0.3;

/// A file that holds a document as long as the program runs.
class DocumentFile
{
public:
    explicit DocumentFile(const Document& document)
        : m_path(
              std::filesystem::temp_directory_path() /
              ("kescorexml-benchmark-" + std::to_string(getpid()) + "-" + document.name + ".xml"))
    {
        std::ofstream(m_path, std::ios::binary) << document.bytes;
    }
    ~DocumentFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    DocumentFile(const DocumentFile&) = delete;
    DocumentFile& operator=(const DocumentFile&) = delete;

    TString Path() const { return TString::fromStdString(m_path.string()); }

private:
    std::filesystem::path m_path;
};

void FromFile(benchmark::State& state, const Document& document)
{
    const DocumentFile file(document);
    const DOMParser parser;
    for (auto _ : state) {
        std::unique_ptr<DOM> dom = parser.ParseXmlFile(file.Path());
        state.PauseTiming();
        dom.reset();
        state.ResumeTiming();
    }
    SettleHeap();
}

void Standalone(benchmark::State& state, const Document& document)
{
    const StandaloneDOMParser parser;
    for (auto _ : state) {
        StandaloneParseResult result = parser.ParseXmlString(document.bytes, TString());
        state.PauseTiming();
        result = {};
        state.ResumeTiming();
    }
    SettleHeap();
}

class IdleSink final : public SAXInterface
{
public:
    void StartElement(TString&&, std::unordered_map<TString, TString>&&) override {}
    void EndElement() override {}
    void TextContent(const TString&) override {}
};

void ToSink(benchmark::State& state, const Document& document)
{
    const auto sink = std::make_shared<IdleSink>();
    StringInputSource source(TString::fromStdString(document.bytes), TString(), false);
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, sink);
    for (auto _ : state) {
        source.ResetToStart();
        parser->Reload(source, sink);
        parser->Parse();
    }
    if (parser->HasErrors())
        state.SkipWithError("the document was not parsed");
}

void Sniff(benchmark::State& state, const Document& document)
{
    StringInputSource source(TString::fromStdString(document.bytes), TString(), true);
    for (auto _ : state)
        benchmark::DoNotOptimize(VersionSniffer(source, TString()).has_value());
}

/// Documents of a few bytes, as services parse them by the thousand.
Document MakeSmall(std::size_t bytes)
{
    std::string text = "<message id='1' kind='note'>";
    for (int i = 0; text.size() + 30 < bytes; ++i)
        text += "<item key='" + std::to_string(i % 10) + "'>text</item>";
    text.append(bytes > text.size() + 10 ? bytes - text.size() - 10 : 0, 'x');
    text += "</message>";
    return {std::to_string(bytes) + " bytes", text};
}

void OneParser(benchmark::State& state, const Document& document)
{
    const DOMParser parser;
    for (auto _ : state)
        benchmark::DoNotOptimize(parser.ParseXmlString(document.bytes, TString()));
}

void ParserEachTime(benchmark::State& state, const Document& document)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(DOMParser().ParseXmlString(document.bytes, TString()));
}

void OneReader(benchmark::State& state, const Document& document)
{
    BareReader reader;
    for (auto _ : state)
        reader.Parse(document.bytes);
}

void ReaderEachTime(benchmark::State& state, const Document& document)
{
    for (auto _ : state)
        BareReader().Parse(document.bytes);
}

using Function = void (*)(benchmark::State&, const Document&);

void Register(const std::string& name, Function function, const Document& document)
{
    benchmark::RegisterBenchmark(name.c_str(), [function, &document](benchmark::State& state) {
        function(state, document);
    })->Unit(benchmark::kMillisecond);
}

} // namespace

void RegisterFrontDoorBenchmarks()
{
    for (const Document& document : GetDocuments()) {
        const std::string suffix = "/" + document.name;
        Register("file" + suffix, FromFile, document);
        Register("standalone" + suffix, Standalone, document);
        Register("sniff" + suffix, Sniff, document);
        Register("sink" + suffix, ToSink, document);
        AddRatio({"file to DOM", document.name, "file" + suffix, "parse" + suffix, c_file});
        AddRatio({"bytes to the standalone tree", document.name, "standalone" + suffix,
                  "scan" + suffix, c_standalone});
        AddRatio({"bytes to a sink that does nothing", document.name, "sink" + suffix,
                  "scan" + suffix, c_sink});
        AddRatio({"VersionSniffer", document.name, "sniff" + suffix, "scan" + suffix, 0});
    }

    static const Document s_small[] = {MakeSmall(100), MakeSmall(600)};
    for (const Document& document : s_small) {
        const std::string suffix = "/" + document.name;
        Register("small:one parser" + suffix, OneParser, document);
        Register("small:parser each time" + suffix, ParserEachTime, document);
        Register("small:one reader" + suffix, OneReader, document);
        Register("small:reader each time" + suffix, ReaderEachTime, document);
        AddRatio({"many documents, one DOMParser", document.name, "small:one parser" + suffix,
                  "small:one reader" + suffix, c_oneParser});
        AddRatio({"many documents, a DOMParser each", document.name,
                  "small:parser each time" + suffix, "small:reader each time" + suffix,
                  &document == &s_small[0] ? c_parserEachTime : 0});
    }
}
