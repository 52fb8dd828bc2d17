#include "support/Validation.h"

#include <kescorexml/LookupResource.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/XSDResources.h>

#include <kesplatform/TLog.h>

#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct VersionedSchema
{
    XmlFileType type;
    /// The root element of its documents.
    std::string root;
    std::string version;
    QtKesResourceId id;

    friend void PrintTo(const VersionedSchema& schema, std::ostream* out)
    {
        *out << schema.root << ' ' << schema.version;
    }
};

std::vector<VersionedSchema> VersionedSchemas()
{
    using enum QtKesResourceId;
    return {
        {XmlFileType::Zap, "zap", "10.2", FileformatZapXsd_10_2},
        {XmlFileType::Zap, "zap", "10.3", FileformatZapXsd_10_3},
        {XmlFileType::Zap, "zap", "10.4", FileformatZapXsd_10_4},
        {XmlFileType::Zap, "zap", "10.5", FileformatZapXsd_10_5},
        {XmlFileType::Zeb, "zeb", "10.2", FileformatZebXsd_10_2},
        {XmlFileType::Zeb, "zeb", "10.3", FileformatZebXsd_10_3},
        {XmlFileType::Zeb, "zeb", "10.4", FileformatZebXsd_10_4},
        {XmlFileType::Zeb, "zeb", "10.5", FileformatZebXsd_10_5},
        {XmlFileType::Zil, "zil", "10.2", FileformatZilXsd_10_2},
        {XmlFileType::Zil, "zil", "10.3", FileformatZilXsd_10_3},
        {XmlFileType::Zil, "zil", "10.4", FileformatZilXsd_10_4},
        {XmlFileType::Zil, "zil", "10.5", FileformatZilXsd_10_5},
        {XmlFileType::Zok, "zok", "10.2", FileformatZokXsd_10_2},
        {XmlFileType::Zok, "zok", "10.3", FileformatZokXsd_10_3},
        {XmlFileType::Zok, "zok", "10.4", FileformatZokXsd_10_4},
        {XmlFileType::Zok, "zok", "10.5", FileformatZokXsd_10_5},
    };
}

class VersionedSchemasTest : public testing::TestWithParam<VersionedSchema>
{
protected:
    /// A document of the tested type.
    std::string DocumentOf(const std::string& attributes) const
    {
        return "<" + GetParam().root + attributes + "><x y='z'>text</x></" + GetParam().root + ">";
    }
    std::string GoodDocument() const { return DocumentOf(" version='" + GetParam().version + "'"); }
    VersionNumber Version() const
    {
        return {TString::fromStdString(GetParam().version), u'.', u'-', 0};
    }
    /// Documents with one error each, by a word of the message.
    std::vector<std::pair<std::string, std::string>> BadDocuments() const
    {
        return {{DocumentOf(""), "missing required attribute 'version'"},
                {DocumentOf(" version='10.6'"), "value '10.6'"},
                {DocumentOf(" version='" + GetParam().version + "1'"), GetParam().version + "1"},
                {DocumentOf(" version='x'"), "value 'x'"}};
    }

    /// What is expected of any parser with the tested schema.
    template <typename Check>
    void ExpectValidation(const Check& check) const
    {
        EXPECT_THAT(check(GoodDocument()), IsEmpty());
        for (const auto& [document, reason] : BadDocuments()) {
            const int column = static_cast<int>(document.find('>')) + 2;
            EXPECT_THAT(check(document), ElementsAre(ViolationAt(1, column, reason))) << document;
        }
        EXPECT_THAT(check("<zz version='" + GetParam().version + "'/>"),
                    ElementsAre(ViolationAt(1, 21, "no declaration found for element 'zz'"),
                                ViolationAt(1, 21, "attribute 'version' is not declared")));
        EXPECT_THAT(check(GoodDocument()), IsEmpty()) << "after documents with errors";
    }

    static std::vector<std::string> ErrorsIn(const DOMParser& parser, const std::string& document)
    {
        return RootErrors(*parser.ParseXmlString(document, u"doc.xml"));
    }

private:
    /// Keeps the mention of other versions out of the test's output.
    class QuietLog
    {
    public:
        QuietLog() : m_previous(TLog::SetSink([](const TLog::Record&) {})) {}
        ~QuietLog() { TLog::SetSink(m_previous); }
        QuietLog(const QuietLog&) = delete;
        QuietLog& operator=(const QuietLog&) = delete;

    private:
        TLog::Sink m_previous;
    };

    QuietLog m_quiet;
};

} // namespace

TEST_P(VersionedSchemasTest, IsTheOneOfItsTypeAndVersion)
{
    EXPECT_TRUE(XSDResources::IsThereAnXSDResource(GetParam().type, Version()));
    EXPECT_EQ(XSDResources::GetVersionedXsdResourceName(GetParam().type, Version()),
              LookupResource(GetParam().id));
}

TEST_P(VersionedSchemasTest, ValidatesByItsIdentifier)
{
    DOMParser parser;
    parser.AddXSDResourceId(GetParam().id);
    ExpectValidation([&](const std::string& document) { return ErrorsIn(parser, document); });
}

TEST_P(VersionedSchemasTest, ValidatesAsAnInputSource)
{
    DOMParser parser;
    parser.AddXSDInputSource(XSDResources::GetVersionedXsdInputSource(GetParam().type, Version()));
    ExpectValidation([&](const std::string& document) { return ErrorsIn(parser, document); });
}

TEST_P(VersionedSchemasTest, IsFoundByADocumentThatIsThenValidated)
{
    StringInputSource document(TString::fromStdString(GoodDocument()), u"doc.xml", false);
    DOMParser parser;
    parser.AddXSDInputSource(
        XSDResources::GetVersionedXsdInputSourceForDocument(GetParam().type, document, TString()));
    EXPECT_THAT(RootErrors(*parser.ParseXmlInputSource(document, false)), IsEmpty());
    ExpectValidation([&](const std::string& text) { return ErrorsIn(parser, text); });
}

TEST_P(VersionedSchemasTest, ValidatesDocumentsOfTheStandaloneTree)
{
    StandaloneDOMParser parser;
    parser.AddXSDResourceId(GetParam().id);
    ExpectValidation([&](const std::string& document) {
        std::vector<std::string> errors;
        for (const TString& error : parser.ParseXmlString(document, u"doc.xml").errors)
            errors.push_back(error.toStdString());
        return errors;
    });
}

INSTANTIATE_TEST_SUITE_P(VersionedSchemas, VersionedSchemasTest,
                         testing::ValuesIn(VersionedSchemas()), [](const auto& tested) {
                             std::string name = tested.param.root + "_" + tested.param.version;
                             name[name.find('.')] = '_';
                             return name;
                         });
