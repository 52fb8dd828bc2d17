#include "bytes/StrictDecoding.h"

#include <kesplatform/Unicode.h>

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XML88591Transcoder.hpp>
#include <xercesc/util/XMLASCIITranscoder.hpp>
#include <xercesc/util/XMLException.hpp>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>

using xercesc::XMLPlatformUtils;
using xercesc::XMLTranscoder;

namespace {

/// What a decoder gets at once, in bytes.
constexpr XMLSize_t c_chunk = 4096;
constexpr XMLCh c_replacement = 0xFFFD;

std::unique_ptr<XMLTranscoder> MakeTranscoder(std::string_view encoding)
{
    xercesc::XMLTransService::Codes result{};
    return std::unique_ptr<XMLTranscoder>(XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
        std::string(encoding).c_str(), result, c_chunk, XMLPlatformUtils::fgMemoryManager));
}

/// Whether the decoder has a character for every byte, or an error.
bool IsStrict(const XMLTranscoder& transcoder)
{
    return dynamic_cast<const xercesc::XML88591Transcoder*>(&transcoder) != nullptr ||
           dynamic_cast<const xercesc::XMLASCIITranscoder*>(&transcoder) != nullptr;
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

constexpr std::size_t c_unknown = std::string_view::npos;

/// In how large pieces a decoder gets its bytes.
enum class Pace
{
    Chunks,
    /// Every character is known by where it ends.
    Bytes
};

/// Hands each UTF-16 code unit that the bytes are decoded to, together with the offset where its
/// character begins or the one where it ends, to `take`, until that returns false.
///
/// A decoder swallows the beginning of a character that the end of a chunk has cut off, and does
/// not tell how much of it. So behind each chunk it gets single bytes until a character is whole:
/// the bytes up to there end with it, and the next chunk begins with the one behind.
template <typename Take>
void Decode(std::string_view bytes, XMLTranscoder& transcoder, Pace pace, const Take& take)
{
    constexpr std::size_t c_longestCharacter = 8;
    std::size_t singles = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        const bool isChunk = pace == Pace::Chunks && singles == 0;
        XMLCh units[c_chunk];
        unsigned char sizes[c_chunk];
        XMLSize_t eaten = 0;
        const XMLSize_t count = transcoder.transcodeFrom(
            reinterpret_cast<const XMLByte*>(bytes.data()) + at,
            std::min(bytes.size() - at, isChunk ? c_chunk : 1), units, c_chunk, eaten, sizes);
        if (eaten == 0)
            return;
        std::size_t begin = at;
        at += eaten;
        for (XMLSize_t i = 0; i < count; ++i) {
            const bool isKept =
                isChunk ? take(units[i], begin, c_unknown) : take(units[i], c_unknown, at);
            if (!isKept)
                return;
            begin += sizes[i];
        }
        if (isChunk)
            singles = c_longestCharacter;
        else
            singles = count > 0 || singles == 0 ? 0 : singles - 1;
    }
}

/// Tells a replacement character that a document holds from one that stands for bytes of none.
class ReplacementCheck
{
public:
    ReplacementCheck(std::string_view bytes, std::string_view encoding)
        : m_bytes(bytes), m_spelling(SpellReplacement(encoding)),
          m_isUtf7(m_spelling.starts_with("+//"))
    {
    }

    /// By which the offsets are known that IsSpelled needs.
    Pace GetPace() const noexcept { return m_isUtf7 ? Pace::Bytes : Pace::Chunks; }

    /// Whether the character that begins at `begin`, or ends at `end`, is spelled there.
    bool IsSpelled(std::size_t begin, std::size_t end) const
    {
        // The same character has many spellings there. Its last bits stand in a digit, while the
        // decoder replaces nothing but bytes that are none.
        if (m_isUtf7)
            return IsDigitOfUtf7(m_bytes[end - 1]);
        if (m_spelling.empty())
            return false;
        return end == c_unknown
                   ? m_bytes.substr(std::min(begin, m_bytes.size())).starts_with(m_spelling)
                   : m_bytes.substr(0, end).ends_with(m_spelling);
    }

private:
    static bool IsDigitOfUtf7(char c) noexcept
    {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
               c == '+' || c == '/';
    }

    std::string_view m_bytes;
    std::string m_spelling;
    bool m_isUtf7;
};

} // namespace

std::optional<TextPosition> StrictDecoding::FindUndecodable(std::string_view bytes,
                                                            std::string_view encoding)
{
    const auto transcoder = MakeTranscoder(encoding);
    if (transcoder == nullptr || IsStrict(*transcoder))
        return std::nullopt;
    const ReplacementCheck check(bytes, encoding);
    std::optional<TextPosition> found;
    PositionCounter counter;
    Decode(bytes, *transcoder, check.GetPace(),
           [&](XMLCh unit, std::size_t begin, std::size_t end) {
               if (unit == c_replacement && !check.IsSpelled(begin, end)) {
                   found = counter.Get();
                   return false;
               }
               counter.Pass(unit);
               return true;
           });
    return found;
}

std::optional<TextPosition> StrictDecoding::FindEnd(std::string_view bytes,
                                                    std::string_view encoding)
{
    const auto transcoder = MakeTranscoder(encoding);
    if (transcoder == nullptr)
        return std::nullopt;
    PositionCounter counter;
    Decode(bytes, *transcoder, Pace::Chunks, [&](XMLCh unit, std::size_t, std::size_t) {
        counter.Pass(unit);
        return true;
    });
    return counter.Get();
}

std::size_t StrictDecoding::FindIncomplete(std::string_view bytes, std::size_t from,
                                           std::string_view encoding)
{
    const auto transcoder = MakeTranscoder(encoding);
    if (transcoder == nullptr)
        return from;
    std::size_t whole = from;
    Decode(bytes.substr(from), *transcoder, Pace::Bytes, [&](XMLCh, std::size_t, std::size_t end) {
        whole = from + end;
        return true;
    });
    return whole == bytes.size() ? std::string_view::npos : whole;
}

std::string StrictDecoding::ToUtf8(std::string_view bytes, std::string_view encoding)
{
    const auto transcoder = MakeTranscoder(encoding);
    if (transcoder == nullptr)
        return {};
    std::u16string text;
    Decode(bytes, *transcoder, Pace::Chunks, [&](XMLCh unit, std::size_t, std::size_t) {
        text += static_cast<char16_t>(unit);
        return true;
    });
    return Unicode::toUtf8KeepingHalves(text);
}
