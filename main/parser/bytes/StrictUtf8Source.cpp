#include "bytes/StrictUtf8Source.h"

#include "base/ByteScan.h"
#include "bytes/XercesText.h"

#include <xercesc/util/BinInputStream.hpp>

#include <algorithm>
#include <cstring>
#include <span>

namespace {

struct BeginsBeyondLastCharacter
{
    bool operator()(const char* p) const noexcept
    {
        const auto value = static_cast<unsigned char>(*p);
        return value >= 0xF5 && value <= 0xF7;
    }
#if defined(__SSE2__)
    ByteScan::Bytes16 MayMatch(const char* p) const noexcept
    {
        // Well-formed text has no byte from F5 on.
        const ByteScan::Bytes16 bytes = ByteScan::Load(p);
        return _mm_cmpeq_epi8(_mm_max_epu8(bytes, _mm_set1_epi8('\xF5')), bytes);
    }
    ByteScan::Bytes16 Hint(const char* p) const noexcept
    {
        return MayMatch(p);
    }
#endif
};

/// Puts, in place of each of those bytes, one that the scanner always refuses.
void RefuseBeyondLastCharacter(std::span<char> bytes) noexcept
{
    std::size_t found = 0;
    while ((found = ByteScan::FindFirst(bytes.data(), found, bytes.size(),
                                        BeginsBeyondLastCharacter{})) != ByteScan::c_npos)
        bytes[found++] = '\xFF';
}

class StrictUtf8Stream final : public xercesc::BinInputStream
{
public:
    StrictUtf8Stream(std::string_view bytes, std::size_t& firstUnchecked) noexcept
        : m_bytes(bytes), m_firstUnchecked(firstUnchecked)
    {
    }

    XMLFilePos curPos() const override { return m_position; }

    XMLSize_t readBytes(XMLByte* const to, const XMLSize_t maxBytes) override
    {
        const std::size_t count = std::min<std::size_t>(m_bytes.size() - m_position, maxBytes);
        if (count == 0)
            return 0;
        auto* const copied = reinterpret_cast<char*>(to);
        std::memcpy(copied, m_bytes.data() + m_position, count);
        // While they are at hand: to look at the whole later would cost to fetch it again.
        if (m_firstUnchecked == m_position && std::memchr(copied, 0, count) == nullptr)
            m_firstUnchecked += count;
        m_position += count;
        RefuseBeyondLastCharacter(std::span(copied, count));
        return count;
    }

    const XMLCh* getContentType() const override { return nullptr; }

private:
    std::string_view m_bytes;
    std::size_t m_position = 0;
    std::size_t& m_firstUnchecked;
};

} // namespace

StrictUtf8Source::StrictUtf8Source(std::string_view bytes, const TString& id,
                                   xercesc::MemoryManager* manager)
    : MemBufInputSource(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                        GetInternalXMLChPtrFromTString(id), false, manager),
      m_bytes(bytes)
{
}

xercesc::BinInputStream* StrictUtf8Source::makeStream() const
{
    return new (getMemoryManager()) StrictUtf8Stream(m_bytes, m_firstUnchecked);
}
