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
/// Xerces must be initialised.
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

    xercesc::InputSource& operator()() const { return *m_xercesSource; }
    /// What the buffer holds, which may differ from `data` in names that begin with a colon and in
    /// the first line end; lives as long as this object.
    std::string_view GetBytes() const noexcept { return std::string_view(*m_data).substr(m_start); }
    XercesEncoding GetEncoding() const noexcept { return m_encoding; }
    /// Whether a null character may be among the bytes; false only once all of them were read.
    bool MayHoldNull() const noexcept;

private:
    void SetupXercesBuffer(std::size_t start, const TString& id, ColonProcessingMode mode,
                           XercesEncoding encoding);

    std::unique_ptr<xercesc::MemBufInputSource> m_xercesSource;
    /// The same, when it guards UTF-8; else null.
    const StrictUtf8Source* m_guardedSource = nullptr;
    std::shared_ptr<const std::string> m_data;
    std::size_t m_start;
    XercesEncoding m_encoding;
};
