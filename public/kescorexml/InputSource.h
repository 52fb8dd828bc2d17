#pragma once

#include <kescorexml/Export.h>

#include <kesplatform/TString.h>

#include <cstdint>
#include <string>

/// Supplies the bytes of one XML document, forwards only, together with the identifier that
/// diagnostics show, normally a file name.
///
/// Different objects may be used from different threads.
class KESCOREXML_EXPORT InputSource
{
public:
    /// `id` names the document in diagnostics.
    explicit InputSource(const TString& id);
    InputSource(const InputSource&) = delete;
    InputSource& operator=(const InputSource&) = delete;
    virtual ~InputSource();

    /// Replaces `out` by the next line, its line feed included. False at the end of the data, and
    /// then `out` is as before.
    virtual bool GetNextLine(std::string& out) = 0;
    /// Replaces `out` by the next bytes, at most `maxBytes`. False at the end of the data, and then
    /// `out` is as before.
    virtual bool GetBytes(std::string& out, unsigned int maxBytes) = 0;
    /// The only way back: the next read delivers the first byte again.
    virtual void ResetToStart() = 0;
    /// The length of the document in bytes, whatever has been read.
    [[nodiscard]] virtual std::int64_t Size() const = 0;

    /// Valid as long as this object.
    [[nodiscard]] const TString& Id() const noexcept { return m_id; }

private:
    TString m_id;
};
