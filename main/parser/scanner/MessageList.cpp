#include "scanner/MessageList.h"

#include <kesplatform/TFormatString.h>

#include <utility>

void MessageList::Miss(const TString& id, unsigned long long line, unsigned long long column)
{
    if (m_missing++ > 0)
        return;
    m_id = id;
    m_line = line;
    m_column = column;
}

void MessageList::Clear() noexcept
{
    m_kept.clear();
    m_missing = 0;
}

std::vector<XMLDiagnostic> MessageList::Take(const TString& limit)
{
    if (m_missing > 0) {
        const TString text =
            TFormatString(u"%1 more from here on; all messages take more than %2 (message limit, "
                          u"SetMessageLimit)")
                .Format(std::exchange(m_missing, 0), limit);
        m_kept.emplace_back(m_kind, text, m_id, m_line, m_column);
    }
    return std::exchange(m_kept, {});
}
