#pragma once

#include <gmock/gmock.h>

#include <QFile>
#include <QString>
#include <QXmlStreamReader>

#include <string>
#include <vector>

/// A page that is well-formed XML, as a list of its elements in the order of their end tags.
class HtmlPage
{
public:
    struct Element
    {
        std::string name;
        /// The values of the attributes of these names; empty where there are none.
        std::string classes;
        std::string id;
        std::string href;
        /// All text in it, in its order.
        std::string text;
    };

    /// Reads a file. A page that is not well-formed fails the test.
    static HtmlPage Read(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return HtmlPage(file.readAll());
    }

    explicit HtmlPage(const QByteArray& bytes) : source(bytes.toStdString())
    {
        QXmlStreamReader reader(bytes);
        std::vector<Element> open;
        while (!reader.atEnd()) {
            const auto token = reader.readNext();
            if (token == QXmlStreamReader::StartElement) {
                const QXmlStreamAttributes attributes = reader.attributes();
                const auto value = [&](const char* name) {
                    return attributes.value(QLatin1String(name)).toString().toStdString();
                };
                open.push_back({reader.qualifiedName().toString().toStdString(), value("class"),
                                value("id"), value("href"), ""});
            } else if (token == QXmlStreamReader::Characters && !open.empty()) {
                open.back().text += reader.text().toString().toStdString();
            } else if (token == QXmlStreamReader::EndElement) {
                elements.push_back(open.back());
                open.pop_back();
                if (!open.empty())
                    open.back().text += elements.back().text;
            }
        }
        EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    }

    /// The texts of the elements with this name and, unless it is null, this class attribute.
    std::vector<std::string> Texts(const std::string& name, const char* classes = nullptr) const
    {
        std::vector<std::string> texts;
        for (const Element& element : elements) {
            if (element.name == name && (classes == nullptr || element.classes == classes))
                texts.push_back(element.text);
        }
        return texts;
    }

    std::string source;
    std::vector<Element> elements;
};
