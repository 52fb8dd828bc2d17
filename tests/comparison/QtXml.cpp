#include "Documents.h"
#include "Library.h"

#include <QDomDocument>

namespace {

bool Read(QDomDocument& document, const std::string& text)
{
    return document.setContent(QByteArray::fromStdString(text));
}

class QtXml : public Library
{
public:
    std::string PositionOfElement() override
    {
        QDomDocument document;
        Read(document, c_twoLines);
        const QDomElement b = document.documentElement().firstChildElement("b");
        return b.lineNumber() == 2 && b.columnNumber() > 0 ? "line and column" : "?";
    }

    std::string TreeOfBrokenDocument() override
    {
        QDomDocument document;
        const bool isFine = Read(document, c_broken);
        if (isFine)
            return "?";
        const QDomElement b = document.documentElement().firstChildElement("b");
        return b.text() == "text" ? "as far as it was read" : b.isNull() ? "none" : "?";
    }

    std::string SchemaValidation() override
    {
        QDomDocument document;
        return Read(document, c_invalid) ? "no" : "?";
    }

    std::string EntityOfDocument() override
    {
        QDomDocument document;
        const bool isFine = Read(document, c_withEntity);
        return isFine && document.documentElement().text() == "text" ? "expanded" : "?";
    }

    std::string EntityOfFile(const std::string& path) override
    {
        QDomDocument document;
        const bool isFine = Read(document, WithEntityFile(path));
        if (document.documentElement().text() == "secret")
            return "read";
        return isFine ? "not read" : "an error";
    }

    std::string TextBetweenElements() override
    {
        QDomDocument document;
        Read(document, c_mixed);
        QString nodes;
        for (QDomNode node = document.documentElement().firstChild(); !node.isNull();
             node = node.nextSibling())
            nodes += node.isElement() ? QString("<b/>") : node.nodeValue();
        return nodes == "x<b/>y" ? "in place" : "?";
    }

    std::string Comments() override
    {
        QDomDocument document;
        Read(document, c_withComment);
        return document.documentElement().firstChild().isComment() ? "kept" : "?";
    }

    std::string Queries() override
    {
        QDomDocument document;
        Read(document, c_list);
        return document.elementsByTagName("b").size() == 2 ? "one name" : "?";
    }

    std::string Html() override
    {
        QDomDocument document;
        return Read(document, c_html) ? "?" : "no";
    }

    std::string TextUnits() override
    {
        static_assert(sizeof(QChar) == 2);
        return "UTF-16";
    }

    std::shared_ptr<void> Parse(const std::string& text, bool /*isHuge*/) override
    {
        auto document = std::make_shared<QDomDocument>();
        return Read(*document, text) ? document : nullptr;
    }
};

} // namespace

std::unique_ptr<Library> MakeQtXml()
{
    return std::make_unique<QtXml>();
}
