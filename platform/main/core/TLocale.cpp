#include <kesplatform/TLocale.h>

TString LanguageCode::GetLanguage() const
{
    return m_isoString.left(m_isoString.indexOf(u'_'));
}
