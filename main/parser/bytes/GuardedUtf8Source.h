#pragma once

#include <kesplatform/TString.h>

#include <xercesc/framework/MemBufInputSource.hpp>

#include <cstddef>
#include <string_view>

/// A memory buffer of UTF-8 whose streams show the scanner, in place of each byte that
/// Utf8Guard names, one that it always refuses. The bytes are guarded as they are read, a piece at
/// a time, and never copied as a whole.
class GuardedUtf8Source final : public xercesc::MemBufInputSource
{
public:
    /// `bytes` must live as long as this object and its streams.
    GuardedUtf8Source(std::string_view bytes, const TString& id, xercesc::MemoryManager* manager);

    /// REQUIRES: this object outlives the stream's last read.
    xercesc::BinInputStream* makeStream() const override;

    /// Whether a null character may be among the bytes: one was read, or some were not read yet.
    bool MayHoldNull() const noexcept { return m_firstUnchecked < m_bytes.size(); }

private:
    std::string_view m_bytes;
    /// All bytes before it were read and are not null.
    mutable std::size_t m_firstUnchecked = 0;
};
