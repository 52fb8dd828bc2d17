// One that passes on strings of Qt, which are known only behind the library's headers.
#include <kescorexml/DOMElement.h>

#include <QString>

#include <iostream>

int main()
{
    DOMElement item(QString("item"));
    item.SetText(QString("tea"));
    item.SetAttribute(QStringLiteral("kind"), QStringView(u"green"));
    const QString text = item.GetText();
    const QString kind = item.GetAttribute(QLatin1String("kind"));
    std::cout << text.toStdString() << '\n' << kind.toStdString() << '\n';
    std::cout << (item.GetText() + QString(", ") + kind) << '\n';
    return item.GetText() == text && text == item.GetText() ? 0 : 1;
}
