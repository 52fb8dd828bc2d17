#include "scanner/MessageList.h"

#include <kesplatform/TFormatString.h>

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

void MessageList::Close(const TString& limit)
{
    const TString text =
        TFormatString(u"%1 more from here on; all messages take more than %2 (message limit, "
                      u"SetMessageLimit)")
            .Format(m_missing, limit);
    m_kept.emplace_back(m_kind, text, m_id, m_line, m_column);
    m_missing = 0;
}
