#include "direct/DirectScanning.h"

#include <atomic>

namespace {

std::atomic<bool> s_isEnabled{KESCOREXML_DIRECT_SCANNER != 0};

thread_local DirectScanning::Verdict t_lastVerdict = DirectScanning::Verdict::None;

} // namespace

void DirectScanning::SetEnabled(bool enabled) noexcept
{
    s_isEnabled.store(enabled, std::memory_order_relaxed);
}

bool DirectScanning::IsEnabled() noexcept
{
    return s_isEnabled.load(std::memory_order_relaxed);
}

DirectScanning::Verdict DirectScanning::GetLastVerdict() noexcept
{
    return t_lastVerdict;
}

void DirectScanning::SetLastVerdict(Verdict verdict) noexcept
{
    t_lastVerdict = verdict;
}

const char* DirectScanning::GetName(Verdict verdict) noexcept
{
    switch (verdict) {
    case Verdict::Accepted:
        return "accepted";
    case Verdict::None:
        return "none";
    case Verdict::Disabled:
        return "disabled";
    case Verdict::Schema:
        return "schema";
    case Verdict::Limit:
        return "limit";
    case Verdict::Encoding:
        return "encoding";
    case Verdict::Declaration:
        return "declaration";
    case Verdict::DocumentType:
        return "document type";
    case Verdict::Entity:
        return "entity";
    case Verdict::ColonName:
        return "colon name";
    case Verdict::Markup:
        return "markup";
    }
    return "";
}
