#include "bytes/GuardedUtf8Source.h"

#include "bytes/Utf8Guard.h"
#include "bytes/XercesText.h"

#include <xercesc/util/BinInputStream.hpp>

#include <algorithm>
#include <cstring>
#include <span>

namespace {

class GuardedUtf8Stream final : public xercesc::BinInputStream
{
public:
    GuardedUtf8Stream(std::string_view bytes, std::size_t& firstUnchecked) noexcept
        : m_bytes(bytes), m_firstUnchecked(firstUnchecked)
    {
    }

    XMLFilePos curPos() const override { return m_position; }

    XMLSize_t readBytes(XMLByte* const to, const XMLSize_t mostBytes) override
    {
        const std::size_t count = std::min<std::size_t>(m_bytes.size() - m_position, mostBytes);
        if (count == 0)
            return 0;
        auto* const copied = reinterpret_cast<char*>(to);
        std::memcpy(copied, m_bytes.data() + m_position, count);
        // While they are at hand: to look at the whole later would cost to fetch it again.
        if (m_firstUnchecked == m_position && std::memchr(copied, 0, count) == nullptr)
            m_firstUnchecked += count;
        m_position += count;
        Utf8Guard::RefuseBeyondLastCharacter(std::span(copied, count));
        return count;
    }

    const XMLCh* getContentType() const override { return nullptr; }

private:
    std::string_view m_bytes;
    std::size_t m_position = 0;
    std::size_t& m_firstUnchecked;
};

} // namespace

GuardedUtf8Source::GuardedUtf8Source(std::string_view bytes, const TString& id,
                                     xercesc::MemoryManager* manager)
    : MemBufInputSource(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                        GetInternalXMLChPtrFromTString(id), false, manager),
      m_bytes(bytes)
{
}

xercesc::BinInputStream* GuardedUtf8Source::makeStream() const
{
    return new (getMemoryManager()) GuardedUtf8Stream(m_bytes, m_firstUnchecked);
}
