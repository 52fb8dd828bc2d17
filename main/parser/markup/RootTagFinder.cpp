#include "markup/RootTagFinder.h"

#include "base/ByteScan.h"

XmlUtils::StringRange RootTagFinder::Feed(const std::string& headSoFar) noexcept
{
    while (m_rootTag.start == std::string::npos) {
        if (!m_construct) {
            const std::size_t open = ByteScan::FindByteSoon(headSoFar, '<', m_next);
            if (open == ByteScan::c_npos) {
                m_next = headSoFar.size();
                break;
            }
            m_construct.emplace(open);
        }
        const std::size_t close = m_construct->FindClose(headSoFar);
        if (close == ByteScan::c_npos)
            break;
        const std::size_t open = m_construct->GetStart();
        if (headSoFar[open + 1] != '?' && headSoFar[open + 1] != '!')
            m_rootTag = {open, close - open + 1};
        m_next = close + 1;
        m_construct.reset();
    }
    return m_rootTag;
}
