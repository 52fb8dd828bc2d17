#include "scanner/DocumentTypeGuard.h"

#include "bytes/XercesText.h"
#include "scanner/XercesXMLParserImpl.h"

#include <gtest/gtest.h>

#include <xercesc/sax/SAXParseException.hpp>

#include <optional>
#include <utility>

namespace {

class FixedLocator : public xercesc::Locator
{
public:
    const XMLCh* getPublicId() const override { return nullptr; }
    const XMLCh* getSystemId() const override { return nullptr; }
    XMLFileLoc getLineNumber() const override { return 3; }
    XMLFileLoc getColumnNumber() const override { return 5; }
};

/// The line and the column of the refusal; nothing when the identifier is taken.
std::optional<std::pair<XMLFileLoc, XMLFileLoc>> FindRefusal(const xercesc::Locator* locator,
                                                             const XMLCh* systemId)
{
    ParseBudget budget;
    budget.SetLocator(locator);
    DocumentTypeGuard guard(budget);
    try {
        guard.startDTD(u"a", nullptr, systemId);
    } catch (const xercesc::SAXParseException& exception) {
        return std::pair(exception.getLineNumber(), exception.getColumnNumber());
    }
    return std::nullopt;
}

using Position = std::pair<XMLFileLoc, XMLFileLoc>;

} // namespace

TEST(DocumentTypeGuard, RefusesWhatIsNoCharacterWhetherOrNotThereIsALocator)
{
    EnsureXercesIsInitialised();
    const FixedLocator locator;
    EXPECT_EQ(FindRefusal(&locator, u"b\x0E"), Position(3, 5));
    EXPECT_EQ(FindRefusal(nullptr, u"b\x0E"), Position(0, 0));
    EXPECT_EQ(FindRefusal(nullptr, u"\xD83D"), Position(0, 0));
    EXPECT_EQ(FindRefusal(nullptr, u"\xDE00\xD83D"), Position(0, 0));
}

TEST(DocumentTypeGuard, NamesTheUnitThatIsNoCharacter)
{
    EnsureXercesIsInitialised();
    ParseBudget budget;
    DocumentTypeGuard guard(budget);
    try {
        guard.startDTD(u"a", nullptr, u"b\xFFFE");
        FAIL();
    } catch (const xercesc::SAXParseException& exception) {
        EXPECT_EQ(GetTStringFromXMLChPtr(exception.getMessage(), -1),
                  u"invalid character 0xFFFE in system identifier");
    }
}

TEST(DocumentTypeGuard, KnowsWhetherTheDocumentHasADocumentType)
{
    ParseBudget budget;
    DocumentTypeGuard guard(budget);
    EXPECT_FALSE(guard.HasBegun());
    guard.startDTD(u"a", nullptr, nullptr);
    EXPECT_TRUE(guard.HasBegun());
    guard.Reset();
    EXPECT_FALSE(guard.HasBegun());
}

TEST(DocumentTypeGuard, TakesPairsAndNoIdentifierAtAll)
{
    EnsureXercesIsInitialised();
    EXPECT_EQ(FindRefusal(nullptr, u"b.dtd \xD83D\xDE00"), std::nullopt);
    EXPECT_EQ(FindRefusal(nullptr, u"\xD83D\xDE00"), std::nullopt);
    EXPECT_EQ(FindRefusal(nullptr, u""), std::nullopt);
    EXPECT_EQ(FindRefusal(nullptr, nullptr), std::nullopt);
}
