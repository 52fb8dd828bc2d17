#include "Documents.h"
#include "Families.h"
#include "Peers.h"
#include "Ratios.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/VersionSniffer.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <unistd.h>

namespace {

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
        AddRatio({"file to DOM", document.name, "file" + suffix, "scan" + suffix, 0});
        AddRatio({"bytes to the standalone tree", document.name, "standalone" + suffix,
                  "scan" + suffix, 0});
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
                  "small:one reader" + suffix, 2.5});
        AddRatio({"many documents, a DOMParser each", document.name,
                  "small:parser each time" + suffix, "small:reader each time" + suffix, 0});
    }
}
