// What a document says of a file that could not be read, and of what that was caused by.

#include "support/ErrorsOf.h"
#include "support/TemporaryFile.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>

#include <kesplatform/TFile.h>

#include <dlfcn.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

/// While set, files that this thread loads cannot be read, and there is a cause for it.
thread_local bool t_hasCause = false;

/// A file of a system that has more to say.
class FailureWithCause : public TIO::Exception
{
public:
    explicit FailureWithCause(const TPath& path) : TIO::Exception(path, u"not there") {}
    TString GetConcatenatedMessages() const override
    {
        return GetMessagesFront() + u"\nthe server is down";
    }
};

} // namespace

/// Stands before the platform's own in the order of symbol look-up.
std::string TFile::LoadTextFileAsUtf8(const TPath& path, int flag, bool& hadByteOrderMark)
{
    using Function = std::string (*)(const TPath&, int, bool&);
    static const auto original = reinterpret_cast<Function>(
        dlsym(RTLD_NEXT, "_ZN5TFile18LoadTextFileAsUtf8B5cxx11ERK5TPathiRb"));
    if (t_hasCause)
        throw FailureWithCause(path);
    return original(path, flag, hadByteOrderMark);
}

TEST(UnreadableFile, GivesTheMessagesOfTheCausesToo)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<a/>");
    EXPECT_THAT(ErrorsOf(*DOMParser().ParseXmlFile(path)), testing::IsEmpty());
    t_hasCause = true;
    const auto document = DOMParser().ParseXmlFile(path);
    t_hasCause = false;
    EXPECT_EQ(document->GetDocumentRoot()->GetName(), u"error");
    EXPECT_THAT(ErrorsOf(*document),
                testing::ElementsAre(path.toStdString() + ": not there\nthe server is down"));
}
