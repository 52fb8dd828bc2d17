#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/XMLDomFormatter.h>

#include <gmock/gmock.h>

#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int c_threads = 4;

/// Runs `work(i)` on several threads at once.
template <typename Work>
void OnThreads(Work work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < c_threads; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

TEST(ThreadSnippets, AParserForEachThread)
{
    std::vector<std::unique_ptr<DOM>> documents(c_threads);
    OnThreads([&documents](int i) {
        const std::string xml = "<a>" + std::to_string(i) + "</a>";
        documents[static_cast<std::size_t>(i)] = DOMParser().ParseXmlString(xml, "a");
    });
    for (int i = 0; i < c_threads; ++i)
        EXPECT_EQ(documents[static_cast<std::size_t>(i)]->GetDocumentRoot()->GetText(),
                  TString::number(i));
}

TEST(ThreadSnippets, OneTreeIsReadByMany)
{
    const std::unique_ptr<const DOM> document =
        DOMParser().ParseXmlString("<r><a x='1'/><a x='2'/></r>", "r");
    OnThreads([&document](int) {
        const DOMElement& root = *document->GetDocumentRoot();
        EXPECT_EQ(DOMPath::GetAll(root, u"//a").size(), 2U);
        EXPECT_EQ(root.GetChild(u"a")->GetAttributes().at(u"x"), u"1");
        EXPECT_TRUE(XMLDomFormatter::RenderAsXMLString(root).contains(u"x='2'"));
    });
}

TEST(ThreadSnippets, ErrorsAreRecordedFromMany)
{
    const auto document = DOMParser().ParseXmlString("<r><a/></r>", "r");
    OnThreads([&document](int i) {
        document->GetDocumentRoot()->GetChild(u"a")->Error(u"from " + TString::number(i));
    });
    EXPECT_EQ(document->GetErrors().size(), static_cast<std::size_t>(c_threads));
}

TEST(ThreadSnippets, ADocumentIsReadInTheBackground)
{
    std::future<std::unique_ptr<DOM>> reading = std::async(
        std::launch::async, [] { return DOMParser().ParseXmlString("<a>later</a>", "a"); });
    const std::unique_ptr<DOM> document = reading.get();
    EXPECT_EQ(document->GetDocumentRoot()->GetText(), u"later");
}

TEST(ThreadSnippets, ATreeThatChangesIsGuardedByItsUsers)
{
    DOM document;
    DOMElement& list = *document.GetRoot()->AddNewChild(u"list");
    std::mutex mutex;
    OnThreads([&](int i) {
        const std::lock_guard lock(mutex);
        list.AddNewChild(u"item")->SetText(TString::number(i));
    });
    EXPECT_EQ(list.GetChildren().size(), static_cast<std::size_t>(c_threads));
}

TEST(ThreadSnippets, TextsAreSharedByThreads)
{
    const auto document = DOMParser().ParseXmlString("<a>shared</a>", "a");
    const TString text = document->GetDocumentRoot()->GetText();
    OnThreads([text](int i) {
        TString own = text;
        own += TString::number(i);
        EXPECT_EQ(own, u"shared" + TString::number(i));
    });
    EXPECT_EQ(text, u"shared");
}
