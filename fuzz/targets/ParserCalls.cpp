#include "Targets.h"

#include "calls/CallProgram.h"
#include "direct/DirectScanning.h"
#include "support/Require.h"

#include <kesplatform/TLog.h>

#include <string>
#include <utility>

namespace {

/// Nobody reads what is logged of files that are missing.
class Silence
{
public:
    Silence() : m_before(TLog::SetSink([](const TLog::Record&) {})) {}
    ~Silence() { TLog::SetSink(std::move(m_before)); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    TLog::Sink m_before;
};

ParseTrace RunProgram(FuzzTargets::Bytes bytes, bool isDirect)
{
    const Silence silence;
    const DirectScanning::Switch switched(isDirect);
    ParseTrace trace;
    CallProgram(bytes, trace).Run();
    return trace;
}

} // namespace

/// Every public operation of the parsers at every moment: before and after parses, in events, while
/// a source is read, a schema loads or statistics are told, after stops and after what was thrown.
/// The parsers are usable afterwards, and both scanners lead to the same.
void FuzzTargets::ParserCalls(Bytes bytes)
{
    const ParseTrace direct = RunProgram(bytes, true);
    const ParseTrace xerces = RunProgram(bytes, false);
    const std::string difference = xerces.Difference(direct, "by Xerces", "with direct scanner");
    Require(difference.empty(), difference);
}
