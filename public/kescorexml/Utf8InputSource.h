#pragma once

#include <kescorexml/IXercesInputSourceProvider.h>
#include <kescorexml/InputSource.h>

#include <memory>

/// A document held in memory as UTF-8. It is read as UTF-8 whatever encoding its declaration names.
///
/// Parser buffers made from it share its text. Line endings are delivered as they stand.
/// Different objects may be used from different threads.
class KESCOREXML_EXPORT Utf8InputSource : public InputSource, public IXercesInputSourceProvider
{
public:
    /// With `skipLeadingWhitespace` reading starts at the first byte that is no white space
    /// (TCType::isSpace), now and after each ResetToStart; Size counts the skipped bytes too.
    Utf8InputSource(const std::string& utf8, const TString& id, bool skipLeadingWhitespace);
    Utf8InputSource(std::string&& utf8, const TString& id, bool skipLeadingWhitespace);
    ~Utf8InputSource() override;

    bool GetNextLine(std::string& out) override;
    bool GetBytes(std::string& out, unsigned int maxBytes) override;
    void ResetToStart() override;
    [[nodiscard]] std::int64_t Size() const override;

    /// Starts at the first byte to deliver, wherever reading stands.
    XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override;

protected:
    /// Shares the text.
    Utf8InputSource(std::shared_ptr<const std::string> utf8, const TString& id,
                    bool skipLeadingWhitespace);

    /// All bytes, which readers may share.
    const std::shared_ptr<const std::string>& GetData() const noexcept { return m_data; }
    /// The offset of the byte that reading starts at.
    std::uint64_t GetStart() const noexcept { return m_start; }

private:
    std::shared_ptr<const std::string> m_data;
    std::uint64_t m_position;
    std::uint64_t m_start;
};
