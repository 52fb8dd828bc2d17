#include <kescorexml/SAXInterface.h>

#include <gtest/gtest.h>

TEST(SAXInterface, IsNotDoneUnlessItSaysSo)
{
    class Sink : public SAXInterface
    {
    public:
        void StartElement(TString&&, std::unordered_map<TString, TString>&&) override {}
        void EndElement() override {}
        void TextContent(const TString&) override {}
    };
    EXPECT_FALSE(Sink().IsDone());
}
