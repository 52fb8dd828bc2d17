#include "CharacterWidths.h"

#include <QList>

#include <wchar.h>

CharacterWidths::CharacterWidths() : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr))
{
    if (m_locale != nullptr)
        m_previous = uselocale(m_locale);
}

CharacterWidths::~CharacterWidths()
{
    if (m_locale == nullptr)
        return;
    uselocale(m_previous);
    freelocale(m_locale);
}

int CharacterWidths::Of(const QString& text) const
{
    int columns = 0;
    for (const uint character : text.toUcs4()) {
        const int width = wcwidth(static_cast<wchar_t>(character));
        columns += width < 0 ? 1 : width;
    }
    return columns;
}
