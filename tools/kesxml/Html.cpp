#include "Html.h"

#include "OneLine.h"

#include <QLocale>

QString ToHtml(const QString& text)
{
    return QString(ToSafeUnits(text)).toHtmlEscaped();
}

QString ToHtml(std::size_t number)
{
    return QLocale(QLocale::English, QLocale::UnitedKingdom).toString(qulonglong{number});
}

QString ToHtml(std::size_t number, const char* what)
{
    return ToHtml(number) + ' ' + what + (number == 1 ? "" : "s");
}

qsizetype FindCut(QStringView text, qsizetype position)
{
    const bool isInside = position > 0 && position < text.size() &&
                          text[position].isLowSurrogate() && text[position - 1].isHighSurrogate();
    return isInside ? position - 1 : position;
}
