#include <kescorexml/Utf8InputSource.h>

#include "base/LeadingWhitespace.h"
#include "bytes/XercesInputSource.h"

#include <algorithm>

Utf8InputSource::Utf8InputSource(const std::string& utf8, const TString& id,
                                 bool skipLeadingWhitespace)
    : Utf8InputSource(std::string(utf8), id, skipLeadingWhitespace)
{
}

Utf8InputSource::Utf8InputSource(std::string&& utf8, const TString& id, bool skipLeadingWhitespace)
    : Utf8InputSource(std::make_shared<const std::string>(std::move(utf8)), id,
                      skipLeadingWhitespace)
{
}

Utf8InputSource::Utf8InputSource(std::shared_ptr<const std::string> utf8, const TString& id,
                                 bool skipLeadingWhitespace)
    : InputSource(id), m_data(std::move(utf8)),
      m_position(skipLeadingWhitespace ? SkipLeadingWhitespace(*m_data) : 0), m_start(m_position)
{
}

Utf8InputSource::~Utf8InputSource() = default;

bool Utf8InputSource::GetNextLine(std::string& out)
{
    if (m_position >= m_data->size())
        return false;
    const std::size_t newline = m_data->find('\n', m_position);
    const std::size_t end = newline == std::string::npos ? m_data->size() : newline + 1;
    out.assign(*m_data, m_position, end - m_position);
    m_position = end;
    return true;
}

bool Utf8InputSource::GetBytes(std::string& out, unsigned int maxBytes)
{
    if (m_position >= m_data->size())
        return false;
    const std::size_t count = std::min<std::size_t>(m_data->size() - m_position, maxBytes);
    out.assign(*m_data, m_position, count);
    m_position += count;
    return true;
}

void Utf8InputSource::ResetToStart()
{
    m_position = m_start;
}

std::int64_t Utf8InputSource::Size() const
{
    return static_cast<std::int64_t>(m_data->size());
}

XercesInputSource Utf8InputSource::GetXercesInputSource(ColonProcessingMode mode)
{
    return XercesInputSource(m_data, m_start, Id(), mode, XercesEncoding::Utf8);
}
