#include "Documents.h"
#include "Families.h"
#include "Ratios.h"

#include <kescorexml/Base64.h>
#include <kescorexml/XMLLookupTable.h>
#include <kescorexml/XMLRangeTable.h>
#include <kescorexml/XMLUtils.h>

#include <QByteArray>

#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <numeric>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t c_bytes = 8'000'000;

using Work = std::function<void()>;

void Add(const std::string& name, Work work)
{
    benchmark::RegisterBenchmark(name.c_str(), [work = std::move(work)](benchmark::State& state) {
        for (auto _ : state)
            work();
    })->Unit(benchmark::kMillisecond);
}

/// A scanner that has nothing to stop for is to be as fast as two searches for a byte.
constexpr double c_oneRun = 2;
/// A search that starts anew behind each of many short constructs cannot be. Lest it become worse.
constexpr double c_manyConstructs = 30;
/// What Base64 may cost beside its peer.
constexpr double c_base64 = 0.6;

std::string_view BytesOf(const std::string& text)
{
    return text;
}

std::string_view BytesOf(const TString& text)
{
    return {reinterpret_cast<const char*>(text.utf16()),
            static_cast<std::size_t>(text.size()) * sizeof(char16_t)};
}

/// Measures a scanner beside one search through the same memory for a byte that is not there.
template <typename Text, typename Scan>
void AddScan(const std::string& name, const std::string& document, Text text, Scan scan,
             double limit = c_oneRun)
{
    const auto shared = std::make_shared<const Text>(std::move(text));
    const std::string suffix = "/" + document;
    Add("text:" + name + suffix, [shared, scan] { benchmark::DoNotOptimize(scan(*shared)); });
    Add("memchr:" + name + suffix, [shared] {
        const std::string_view bytes = BytesOf(*shared);
        benchmark::DoNotOptimize(std::memchr(bytes.data(), '\1', bytes.size()));
    });
    AddRatio({name, document, "text:" + name + suffix, "memchr:" + name + suffix, limit});
}

std::size_t WalkRanges(const std::string& xml)
{
    XMLRangeTable table(xml);
    std::size_t ranges = 0;
    std::size_t end = 0;
    for (std::size_t at = 0; at < xml.size(); at += 4096)
        ranges += table.GetRangeTypeAt(at, end) != XMLRangeType::None ? 1U : 0U;
    return ranges;
}

void RegisterScanners()
{
    using namespace XmlUtils;
    const std::string plain = MakeTextHeavy(c_bytes);
    const std::string value(c_bytes, 'v');
    const auto repeat = [](const std::string& part) {
        std::string text;
        while (text.size() < c_bytes)
            text += part;
        return text;
    };
    const std::string comments =
        repeat("<!-- a comment of a length that is usual in practice -->\n");
    const std::string sections =
        repeat("<![CDATA[" + std::string(10'000, 'v') + "]]>" + std::string(10'000, 't'));

    AddScan("Find, a character", "text", plain,
            [](const std::string& s) { return Find(s, '\1', 0); });
    AddScan("Find, a text", "text", plain,
            [sub = std::string("</nowhere>")](const std::string& s) { return Find(s, sub, 0); });
    AddScan("FindInRange, a character", "text", plain,
            [](const std::string& s) { return FindInRange(s, '\1', 1, s.size() - 1); });
    AddScan("FindInRange, a text", "text", plain,
            [sub = std::string("</nowhere>")](const std::string& s) {
                return FindInRange(s, sub, 1, s.size() - 1);
            });
    const TString wide = TString::fromStdString(plain);
    const auto last = static_cast<std::size_t>(wide.size()) - 1;
    AddScan("Find, a character", "text in UTF-16", wide,
            [](const TString& s) { return Find(s, u'\1', 0); });
    AddScan("Find, a text", "text in UTF-16", wide,
            [sub = TString(u"</nowhere>")](const TString& s) { return Find(s, sub, 0); });
    AddScan("FindInRange, a character", "text in UTF-16", wide,
            [last](const TString& s) { return FindInRange(s, u'\1', 1, last); });
    AddScan("FindInRange, a text", "text in UTF-16", wide,
            [last, sub = TString(u"</nowhere>")](const TString& s) {
                return FindInRange(s, sub, 1, last);
            });
    AddScan("AdvanceFromOpenToCloseBrace", "a long comment", "<!--" + value + "-->",
            [](const std::string& s) { return AdvanceFromOpenToCloseBrace(s, 0); });
    AddScan("AdvanceFromOpenToCloseBrace", "a long attribute", "<a b='" + value + "'>",
            [](const std::string& s) { return AdvanceFromOpenToCloseBrace(s, 0); });
    AddScan("AreQuotesMatchingInRange", "a long attribute", "<a b='" + value + "'>",
            [](const std::string& s) { return AreQuotesMatchingInRange(s, 0, s.size() - 1); });
    AddScan("FindRootTag", "a prolog of one comment", "<!--" + value + "--><root/>",
            [](const std::string& s) { return FindRootTag(s).start; });
    AddScan(
        "FindRootTag", "a prolog of comments", comments + "<root/>",
        [](const std::string& s) { return FindRootTag(s).start; }, c_manyConstructs);
    AddScan("FindAttributeValue", "behind a long value", "<a b='" + value + "' c='1'>",
            [name = std::string("c")](const std::string& s) {
                return FindAttributeValue(s, name, {0, s.size()}).has_value();
            });
    AddScan("XMLRangeTable", "text", plain, WalkRanges);
    AddScan("XMLRangeTable", "long sections", sections, WalkRanges);
    AddScan("XMLRangeTable", "comments", comments, WalkRanges, c_manyConstructs);
}

void RegisterBase64()
{
    constexpr unsigned int c_count = 10'000'000;
    std::vector<unsigned char> bytes(c_count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    const QByteArray array(reinterpret_cast<const char*>(bytes.data()), c_count);
    const QByteArray encoded = array.toBase64();
    const TString text = TString::fromStdString(encoded.toStdString());

    for (const bool splits : {false, true}) {
        Add(splits ? "base64:encode/lines" : "base64:encode/one line", [bytes, splits] {
            std::vector<TString> lines;
            Base64Encode(bytes.data(), static_cast<unsigned int>(bytes.size()), lines, splits);
            benchmark::DoNotOptimize(lines.data());
        });
    }
    Add("base64:decode", [text] {
        std::vector<unsigned char> decoded;
        Base64Decode(text, decoded);
        benchmark::DoNotOptimize(decoded.data());
    });
    Add("base64:IsBase64", [text] { benchmark::DoNotOptimize(IsBase64(text)); });
    Add("base64:Qt encodes", [array] { benchmark::DoNotOptimize(array.toBase64()); });
    Add("base64:Qt decodes",
        [encoded] { benchmark::DoNotOptimize(QByteArray::fromBase64(encoded)); });

    const char* document = "10 MB";
    AddRatio({"Base64Encode, one line", document, "base64:encode/one line", "base64:Qt encodes",
              c_base64});
    AddRatio({"Base64Encode, split lines", document, "base64:encode/lines", "base64:Qt encodes",
              c_base64});
    AddRatio({"Base64Decode", document, "base64:decode", "base64:Qt decodes", c_base64});
    AddRatio({"IsBase64", document, "base64:IsBase64", "base64:Qt decodes", 0});
}

void RegisterLookups()
{
    std::unordered_map<TString, TString> map;
    for (int i = 0; i < 100'000; ++i)
        map.emplace(TString(u"key") + TString::number(i),
                    TString(u"the value of ") + TString::number(i));
    const TString packed = XmlUtils::PackStringLookupTableIntoXML(map, false);

    Add("lookup:pack",
        [map] { benchmark::DoNotOptimize(XmlUtils::PackStringLookupTableIntoXML(map, false)); });
    Add("lookup:unpack",
        [packed] { benchmark::DoNotOptimize(XmlUtils::UnpackStringLookupTableFromXML(packed)); });
    Add("lookup:copy", [map] {
        std::unordered_map<TString, TString> copy(map);
        benchmark::DoNotOptimize(copy.size());
    });
    const char* document = "100,000 entries";
    AddRatio({"packing a lookup table", document, "lookup:pack", "lookup:copy", 0});
    AddRatio({"unpacking a lookup table", document, "lookup:unpack", "lookup:copy", 0});
}

} // namespace

void RegisterTextBenchmarks()
{
    RegisterScanners();
    RegisterBase64();
    RegisterLookups();
}
