#include <kescorexml/detail/DiagnosticList.h>

#include <utility>

namespace {

template <typename Entry>
void GiveBack(std::vector<Entry>& entries) noexcept
{
    std::vector<Entry>().swap(entries);
}

} // namespace

void DiagnosticList::Add(XMLDiagnostic&& diagnostic, const TError::ErrorInfo& info)
{
    const std::size_t size = m_diagnostics.size();
    try {
        m_metadata.push_back(info);
        if (m_keepsMessages)
            m_messages.push_back(diagnostic.GetMessage());
        m_diagnostics.push_back(std::move(diagnostic));
    } catch (...) {
        if (m_metadata.size() > size)
            m_metadata.pop_back();
        if (m_messages.size() > size)
            m_messages.pop_back();
        throw;
    }
}

void DiagnosticList::Clear() noexcept
{
    GiveBack(m_diagnostics);
    GiveBack(m_metadata);
    GiveBack(m_messages);
}

const std::vector<TString>& DiagnosticList::GetMessages() const
{
    if (m_keepsMessages)
        return m_messages;
    std::vector<TString> messages;
    messages.reserve(m_diagnostics.size());
    for (const XMLDiagnostic& diagnostic : m_diagnostics)
        messages.push_back(diagnostic.GetMessage());
    m_messages = std::move(messages);
    m_keepsMessages = true;
    return m_messages;
}
