#pragma once

#include "bytes/DocumentDecoding.h"
#include "bytes/StrictUtf8Source.h"

#include <kescorexml/ColonProcessingMode.h>

#include <kesplatform/TString.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// How the bytes of a document are read.
enum class XercesEncoding
{
    /// By their byte-order mark and their declaration.
    Declared,
    /// As UTF-8, whatever they declare.
    Utf8
};

/// One document as a memory buffer of Xerces, together with the bytes that the buffer points into.
/// The bytes are decoded at once; they are changed where Xerces needs it, and the buffer is made,
/// as late as possible: most documents are read without Xerces. Metrics see the colon sanitizer at
/// work in any case.
class XercesInputSource
{
public:
    /// The buffer begins at the byte `start` of `data`; `id` becomes its system id.
    XercesInputSource(const std::shared_ptr<const std::string>& data, std::size_t start,
                      const TString& id, ColonProcessingMode mode,
                      XercesEncoding encoding = XercesEncoding::Declared);
    XercesInputSource(std::shared_ptr<const std::string>&& data, std::size_t start,
                      const TString& id, ColonProcessingMode mode,
                      XercesEncoding encoding = XercesEncoding::Declared);
    XercesInputSource(XercesInputSource&& other) noexcept = default;
    XercesInputSource& operator=(XercesInputSource&& other) = delete;
    ~XercesInputSource() = default;

    /// Puts names that begin with a colon under the reserved prefix, where the mode asks for it.
    void Sanitize() const;

    /// Sanitizes and makes the buffer when it is asked for the first time; Xerces must be
    /// initialised then.
    xercesc::InputSource& operator()() const
    {
        if (m_xercesSource == nullptr)
            Prepare();
        return *m_xercesSource;
    }
    /// What the buffer holds, UTF-8; before there is one, the document as it was given or decoded,
    /// or sanitized. Followed by a zero byte, and valid until the next of these steps. The buffer
    /// may differ from the document in names that begin with a colon and in the first line end.
    std::string_view GetBytes() const noexcept { return std::string_view(*m_data).substr(m_start); }
    /// Why nobody can read the document, which is to be told and not to be read; else nothing.
    const std::optional<DocumentDecoding::Refusal>& GetRefusal() const noexcept
    {
        return m_refusal;
    }
    /// What is wrong with the first bytes that are no UTF-8, where they stand for others that could
    /// not be decoded; else empty.
    const TString& GetFault() const noexcept { return m_fault; }
    /// Whether a null character may be among the bytes; false only once all of them were read.
    bool MayHoldNull() const noexcept
    {
        return m_xercesSource == nullptr || m_xercesSource->MayHoldNull();
    }

private:
    void Decode();
    void Prepare() const;
    void SetupXercesBuffer() const;

    // Made, or changed, when they are needed for the first time.

    mutable std::unique_ptr<StrictUtf8Source> m_xercesSource;
    mutable std::shared_ptr<const std::string> m_data;
    mutable ColonProcessingMode m_mode;
    std::size_t m_start;
    TString m_id;
    XercesEncoding m_encoding;
    TString m_fault;
    std::optional<DocumentDecoding::Refusal> m_refusal;
};
