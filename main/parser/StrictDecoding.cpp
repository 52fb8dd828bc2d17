#include "StrictDecoding.h"

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLException.hpp>

#include <algorithm>
#include <memory>
#include <string>

using xercesc::XMLPlatformUtils;
using xercesc::XMLTranscoder;

namespace {

constexpr XMLSize_t c_block = 4096;
constexpr XMLCh c_replacement = 0xFFFD;

std::unique_ptr<XMLTranscoder> MakeTranscoder(std::string_view encoding)
{
    xercesc::XMLTransService::Codes result{};
    return std::unique_ptr<XMLTranscoder>(XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
        std::string(encoding).c_str(), result, c_block, XMLPlatformUtils::fgMemoryManager));
}

/// The bytes of the replacement character itself; empty in an encoding that does not have it.
std::string SpellReplacement(std::string_view encoding)
{
    const auto transcoder = MakeTranscoder(encoding);
    XMLByte bytes[32];
    XMLSize_t eaten = 0;
    try {
        const XMLSize_t count = transcoder->transcodeTo(&c_replacement, 1, bytes, sizeof(bytes),
                                                        eaten, XMLTranscoder::UnRep_Throw);
        return {reinterpret_cast<const char*>(bytes), count};
    } catch (const xercesc::XMLException&) {
        return {};
    }
}

class Counter
{
public:
    void Pass(XMLCh unit) noexcept
    {
        const bool continuesLineEnd = unit == u'\n' && m_previous == u'\r';
        if (!continuesLineEnd && (unit == u'\n' || unit == u'\r')) {
            ++m_position.line;
            m_position.column = 1;
        } else if (!continuesLineEnd) {
            ++m_position.column;
        }
        m_previous = unit;
    }
    const StrictDecoding::Position& Get() const noexcept { return m_position; }

private:
    StrictDecoding::Position m_position;
    XMLCh m_previous = 0;
};

} // namespace

std::optional<StrictDecoding::Position> StrictDecoding::FindUndecodable(std::string_view bytes,
                                                                        std::string_view encoding)
{
    const auto transcoder = MakeTranscoder(encoding);
    if (transcoder == nullptr)
        return std::nullopt;
    std::optional<std::string> spelling;
    Counter counter;
    while (!bytes.empty()) {
        XMLCh units[c_block];
        unsigned char sizes[c_block];
        XMLSize_t eaten = 0;
        const XMLSize_t count = transcoder->transcodeFrom(
            reinterpret_cast<const XMLByte*>(bytes.data()), std::min(bytes.size(), c_block), units,
            c_block, eaten, sizes);
        std::size_t at = 0;
        for (XMLSize_t i = 0; i < count; ++i) {
            if (units[i] == c_replacement) {
                if (!spelling)
                    spelling = SpellReplacement(encoding);
                if (spelling->empty() || !bytes.substr(at).starts_with(*spelling))
                    return counter.Get();
            }
            counter.Pass(units[i]);
            at += sizes[i];
        }
        if (eaten == 0)
            break;
        bytes.remove_prefix(eaten);
    }
    return std::nullopt;
}
