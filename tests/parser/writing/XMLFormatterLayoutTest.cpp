#include "support/RecordingFormatter.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <deque>
#include <set>
#include <vector>

namespace {

using Attributes = XMLFormatter::AttributeMap;

// The modes

static_assert(sizeof(FormatMode) == 4);
static_assert(static_cast<int>(FormatMode::EscapeAll) == 0);
static_assert(static_cast<int>(FormatMode::Content) == 1);

// The table of virtual operations, and the members

#if defined(__x86_64__) && defined(__GNUC__)

/// The place of a virtual operation in its class's table, as the Itanium C++ ABI keeps it in a
/// pointer to member.
template <typename Operation>
std::size_t SlotOf(Operation operation)
{
    std::size_t offset = 0;
    std::memcpy(&offset, &operation, sizeof(offset));
    return (offset - 1) / sizeof(void*);
}

TEST(XMLFormatter, KeepsTheOrderOfItsVirtualOperations)
{
    using F = XMLFormatter;
    using Text = const TString&;
    using Map = const Attributes&;
    // The destructor takes the first two places.
    EXPECT_EQ(SlotOf(&F::Indent), 2U);
    EXPECT_EQ(SlotOf(&F::Undent), 3U);
    EXPECT_EQ(SlotOf(&F::GetIndent), 4U);
    EXPECT_EQ(SlotOf(&F::Flush), 5U);
    EXPECT_EQ(SlotOf(&F::OutputAttributes), 6U);
    EXPECT_EQ(SlotOf(&F::OutputDOMElement), 7U);
    EXPECT_EQ(SlotOf(&F::OutputDOMElements), 8U);
    EXPECT_EQ(SlotOf(static_cast<void (F::*)(Text)>(&F::OutputContent)), 9U);
    EXPECT_EQ(SlotOf(static_cast<void (F::*)(Text, bool)>(&F::OutputContent)), 10U);
    EXPECT_EQ(SlotOf(static_cast<void (F::*)(Text, Map, Text)>(&F::OutputContentTag)), 11U);
    EXPECT_EQ(SlotOf(static_cast<void (F::*)(Text, Map, Text, bool)>(&F::OutputContentTag)), 12U);
    EXPECT_EQ(SlotOf(&F::OutputComment), 13U);
    EXPECT_EQ(SlotOf(&F::OutputCloseTag), 14U);
    EXPECT_EQ(SlotOf(&F::OutputOpenTag), 15U);
    EXPECT_EQ(SlotOf(&F::OutputTag), 16U);
    EXPECT_EQ(SlotOf(&F::OutputHeader), 17U);
    EXPECT_EQ(SlotOf(&F::OutputLine), 18U);
    EXPECT_EQ(SlotOf(&F::OutputString), 19U);
    EXPECT_EQ(SlotOf(&F::OutputBinary), 20U);
    EXPECT_EQ(SlotOf(&XMLStringFormatter::GetOutput), 21U);
}

/// The table of virtual operations that an object has.
std::vector<const void*> TableOf(const XMLFormatter& formatter)
{
    const void* const* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&formatter), sizeof(table));
    return std::vector<const void*>(table, table + 21);
}

TEST(XMLFormatter, SharesTheOperationsWithItsSubclassesThatTheseDoNotReplace)
{
    // Of these two only the sink and the destructor differ from the base class.
    const RecordingFormatter recording;
    const XMLStringFormatter text(u"  ", false);
    const XMLDomFormatter tree;
    const std::vector<const void*> base = TableOf(recording);
    const std::vector<const void*> ofText = TableOf(text);
    const std::vector<const void*> ofTree = TableOf(tree);
    const std::set<std::size_t> ownOfTree{6, 7, 10, 11, 13, 14, 15, 16, 17, 18, 20};
    for (std::size_t slot = 2; slot <= 20; ++slot) {
        if (slot == 19) {
            EXPECT_NE(ofText[slot], ofTree[slot]);
            continue;
        }
        EXPECT_EQ(ofText[slot], base[slot]) << slot;
        EXPECT_EQ(ofTree[slot] != base[slot], ownOfTree.contains(slot)) << slot;
    }
}

/// What stands in an object from a place on.
template <typename T>
T ReadAt(const void* object, std::size_t offset)
{
    T value;
    std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof(value));
    return value;
}

/// A string is a pointer to its text, which copies share.
const void* TextOf(const TString& text)
{
    static_assert(sizeof(TString) == sizeof(void*));
    return ReadAt<const void*>(&text, 0);
}

constexpr std::size_t c_ownMembers = 40;

TEST(XMLFormatter, KeepsTheOrderOfItsMembers)
{
    const TString unit(u"unit");
    RecordingFormatter formatter(unit);
    formatter.SetFormatMode(FormatMode::Content);
    static_assert(sizeof(XMLFormatter) == c_ownMembers);
    EXPECT_EQ(static_cast<const void*>(&formatter.GetIndent()),
              reinterpret_cast<const char*>(&formatter) + 8);
    EXPECT_EQ(ReadAt<FormatMode>(&formatter, 16), FormatMode::Content);
    EXPECT_EQ(ReadAt<const void*>(&formatter, 24), TextOf(unit));
    EXPECT_NE(ReadAt<const void*>(&formatter, 32), nullptr);
    const RecordingFormatter onOneLine(unit, true);
    EXPECT_EQ(ReadAt<const void*>(&onOneLine, 32), nullptr);
}

TEST(XMLStringFormatter, KeepsTheOrderOfItsMembers)
{
    XMLStringFormatter formatter(u"  ", false);
    formatter.OutputString(u"text");
    static_assert(sizeof(XMLStringFormatter) == c_ownMembers + sizeof(TString));
    EXPECT_EQ(ReadAt<const void*>(&formatter, c_ownMembers), TextOf(formatter.GetOutput()));
}

TEST(XMLDomFormatter, KeepsTheOrderOfItsMembers)
{
    XMLDomFormatter formatter;
    constexpr std::size_t c_document = c_ownMembers + sizeof(std::deque<DOMElement*>);
    constexpr std::size_t c_comments = c_document + sizeof(void*);
    constexpr std::size_t c_hasHeader = c_comments + sizeof(std::vector<TString>);
    static_assert(sizeof(XMLDomFormatter) == c_hasHeader + sizeof(void*));
    EXPECT_EQ(ReadAt<const void*>(&formatter, c_document), formatter.GetDocument());
    EXPECT_EQ(ReadAt<const void*>(&formatter, c_comments), nullptr);
    formatter.OutputComment(u"note");
    EXPECT_NE(ReadAt<const void*>(&formatter, c_comments), nullptr);
    EXPECT_FALSE(ReadAt<bool>(&formatter, c_hasHeader));
    formatter.OutputHeader();
    EXPECT_TRUE(ReadAt<bool>(&formatter, c_hasHeader));
}

#endif

} // namespace
