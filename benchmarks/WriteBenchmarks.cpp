#include "Documents.h"
#include "Families.h"
#include "Ratios.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <pugixml.hpp>

#include <memory>
#include <string>

namespace {

/// What writing may cost beside its peer.
constexpr double c_writeLimit = 1;

class StringWriter final : public pugi::xml_writer
{
public:
    void write(const void* data, std::size_t size) override
    {
        m_text.append(static_cast<const char*>(data), size);
    }
    const std::string& Text() const { return m_text; }

private:
    std::string m_text;
};

void Ours(benchmark::State& state, const Document& document)
{
    const std::unique_ptr<DOM> dom = DOMParser().ParseXmlString(document.bytes, TString());
    for (auto _ : state)
        benchmark::DoNotOptimize(XMLDomFormatter::RenderAsXMLString(*dom, nullptr, true));
}

/// The tree that formatter calls make, the calls included.
void OurTree(benchmark::State& state, const Document& document)
{
    const std::unique_ptr<DOM> dom = DOMParser().ParseXmlString(document.bytes, TString());
    for (auto _ : state) {
        XMLDomFormatter formatter;
        formatter.OutputDOMElement(*dom->GetDocumentRoot());
        benchmark::DoNotOptimize(formatter.GetOutput(FormatMode::Content));
    }
}

void Pugixml(benchmark::State& state, const Document& document)
{
    pugi::xml_document tree;
    tree.load_buffer(document.bytes.data(), document.bytes.size());
    for (auto _ : state) {
        StringWriter writer;
        tree.save(writer, "  ");
        benchmark::DoNotOptimize(writer.Text().data());
    }
}

void Libxml2(benchmark::State& state, const Document& document)
{
    xmlDoc* tree = xmlReadMemory(document.bytes.data(), static_cast<int>(document.bytes.size()),
                                 "document", nullptr, XML_PARSE_NONET | XML_PARSE_HUGE);
    for (auto _ : state) {
        xmlChar* text = nullptr;
        int length = 0;
        xmlDocDumpFormatMemory(tree, &text, &length, 1);
        benchmark::DoNotOptimize(text);
        xmlFree(text);
    }
    xmlFreeDoc(tree);
}

} // namespace

void RegisterWriteBenchmarks()
{
    for (const Document& document : GetDocuments()) {
        const std::string suffix = "/" + document.name;
        const auto add = [&](const char* name,
                             void (*function)(benchmark::State&, const Document&)) {
            benchmark::RegisterBenchmark((name + suffix).c_str(), [function, &document](
                                                                      benchmark::State& state) {
                function(state, document);
            })->Unit(benchmark::kMillisecond);
        };
        add("write", Ours);
        add("write:tree", OurTree);
        add("write:pugixml", Pugixml);
        add("write:libxml2", Libxml2);
        AddRatio({"RenderAsXMLString", document.name, "write" + suffix, "write:pugixml" + suffix,
                  c_writeLimit});
        AddRatio({"XMLDomFormatter, calls and GetOutput", document.name, "write:tree" + suffix,
                  "write:pugixml" + suffix, 0});
        AddRatio({"dump of libxml2, formatted", document.name, "write:libxml2" + suffix,
                  "write:pugixml" + suffix, 0});
    }
}
