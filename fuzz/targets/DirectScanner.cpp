#include "Targets.h"

#include "support/BothScanners.h"
#include "support/ByteReader.h"
#include "support/Require.h"

#include <algorithm>

namespace {

constexpr BothScanners::Source c_sources[] = {
    BothScanners::Source::Utf8,           BothScanners::Source::Binary,
    BothScanners::Source::String,         BothScanners::Source::Utf8Skipping,
    BothScanners::Source::StringSkipping, BothScanners::Source::BinarySkipping,
    BothScanners::Source::File,           BothScanners::Source::OpenFile};

/// One document after the other; a record separator, which no document may hold, parts them.
constexpr char c_separator = '\x1E';

BothScanners::Settings ReadSettings(ByteReader& reader)
{
    BothScanners::Settings settings;
    const std::size_t choice = reader.Below(8);
    settings.expandsEntities = choice >= 5 && choice <= 6;
    if (choice == 5)
        settings.limits.SetExpansionLimit(reader.Below(3), 4U * reader.Byte());
    if (choice == 7)
        settings.limits.SetAmplificationLimit(reader.Below(3), reader.Byte());
    return settings;
}

SinkPlan ReadPlan(ByteReader& reader)
{
    SinkPlan plan;
    const std::size_t behaviour = reader.Below(8);
    const std::size_t event = 1 + reader.Byte();
    if (behaviour == 4 || behaviour == 5)
        plan.stopFrom = event;
    if (behaviour >= 6)
        plan.throwFrom = event;
    plan.stopsOnce = behaviour == 5;
    plan.throwsWhenAsked = behaviour == 7;
    plan.thrown = static_cast<SinkPlan::Thrown>(event % SinkPlan::c_kindsThrown);
    return plan;
}

std::string Compare(BothScanners& both, const std::string& bytes, BothScanners::Source source,
                    const SinkPlan& plan, std::size_t how)
{
    switch (how) {
    case 0:
        return both.CompareEvents(bytes, source, plan);
    case 1:
        return both.CompareEvents(bytes, source, plan) +
               both.CompareDom(bytes, source, {true, true});
    case 2:
        return both.CompareEvents(bytes, source, plan) +
               both.CompareDom(bytes, source, {false, false});
    case 3:
        return both.CompareNewParser(bytes, source, plan);
    case 4:
        return both.CompareEvents(bytes, source, plan) +
               both.CompareStandalone(bytes, source, true);
    default:
        return both.CompareMetrics(bytes, source);
    }
}

} // namespace

/// What the direct scanner accepts is what Xerces makes of it. The first five bytes say how a
/// document is handed over and what the sink does; the documents that follow go through the same
/// parsers.
void FuzzTargets::DirectScanner(Bytes bytes)
{
    ByteReader reader(bytes);
    const std::size_t how = reader.Below(6);
    const BothScanners::Source source = reader.Pick(c_sources);
    const BothScanners::Settings settings = ReadSettings(reader);
    const SinkPlan plan = ReadPlan(reader);
    std::string rest = reader.Rest();
    BothScanners both(settings);
    for (std::size_t start = 0; start <= rest.size();) {
        const std::size_t end = std::min(rest.find(c_separator, start), rest.size());
        const std::string difference =
            Compare(both, rest.substr(start, end - start), source, plan, how);
        Require(difference.empty(), difference);
        start = end + 1;
    }
}
