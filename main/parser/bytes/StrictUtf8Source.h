#pragma once

#include <kesplatform/TString.h>

#include <xercesc/framework/MemBufInputSource.hpp>

#include <cstddef>
#include <string_view>

/// A memory buffer of UTF-8 in which the scanner gets to see what it would drop without a word:
/// sequences of four bytes that begin with F5 to F7, characters beyond the last one. In place of
/// each such byte, its streams show one that it always refuses. The bytes are looked at as they are
/// read, a piece at a time, and never copied as a whole.
class StrictUtf8Source final : public xercesc::MemBufInputSource
{
public:
    /// `bytes` must live as long as this object and its streams.
    StrictUtf8Source(std::string_view bytes, const TString& id, xercesc::MemoryManager* manager);

    /// REQUIRES: this object outlives the stream's last read.
    xercesc::BinInputStream* makeStream() const override;

    /// Whether a null character may be among the bytes: one was read, or some were not read yet.
    bool MayHoldNull() const noexcept { return m_firstUnchecked < m_bytes.size(); }

private:
    std::string_view m_bytes;
    /// All bytes before it were read and are not null.
    mutable std::size_t m_firstUnchecked = 0;
};
