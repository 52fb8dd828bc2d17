#pragma once

#include <kescorexml/ColonProcessingMode.h>

#include <kesplatform/TString.h>

#include <xercesc/framework/MemBufInputSource.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

class StrictUtf8Source;

/// How the bytes of a document are read.
enum class XercesEncoding
{
    /// By their byte-order mark and their declaration.
    Declared,
    /// As UTF-8, whatever they declare.
    Utf8
};

/// One document as a memory buffer of Xerces, together with the bytes that the buffer points into.
/// The bytes are changed where Xerces needs it, and the buffer is made, as late as possible: most
/// documents are read without Xerces. Metrics see the colon sanitizer at work in any case.
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
    /// What the buffer holds; before there is one, the document as it was given, or sanitized.
    /// Followed by a zero byte, and valid until the next of these steps. The buffer may differ from
    /// the document in names that begin with a colon and in the first line end.
    std::string_view GetBytes() const noexcept { return std::string_view(*m_data).substr(m_start); }
    XercesEncoding GetEncoding() const noexcept { return m_encoding; }
    /// Whether a null character may be among the bytes; false only once all of them were read.
    bool MayHoldNull() const noexcept;

private:
    void Prepare() const;
    void SetupXercesBuffer() const;

    // Made, or changed, when they are needed for the first time.

    mutable std::unique_ptr<xercesc::MemBufInputSource> m_xercesSource;
    /// The same, when it is one that is strict about UTF-8; else null.
    mutable const StrictUtf8Source* m_strictSource = nullptr;
    mutable std::shared_ptr<const std::string> m_data;
    mutable ColonProcessingMode m_mode;
    std::size_t m_start;
    TString m_id;
    XercesEncoding m_encoding;
};
