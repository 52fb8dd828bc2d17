#include "scanner/NameBuckets.h"

#include "bytes/XercesText.h"
#include "support/CollidingNames.h"

#include <kescorexml/ParseLimits.h>

#include <kesplatform/TString.h>

#include <QString>

#include <gtest/gtest.h>
#include <xercesc/util/Hash2KeysSetOf.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/RefHash3KeysIdPool.hpp>
#include <xercesc/util/RefHashTableOf.hpp>

#include <random>
#include <vector>

namespace {

/// As the scanner's, counting how many names a look-up is compared with.
struct CountingHasher
{
    XMLSize_t getHashVal(const void* key, XMLSize_t modulus) const
    {
        return xercesc::XMLString::hash(static_cast<const XMLCh*>(key), modulus);
    }
    bool equals(const void*, const void*) const
    {
        ++s_comparisons;
        return false;
    }
    static inline std::size_t s_comparisons = 0;
};

std::size_t CountComparisons(const std::function<void()>& lookUp)
{
    CountingHasher::s_comparisons = 0;
    lookUp();
    return CountingHasher::s_comparisons;
}

std::vector<TString> MakeNames(unsigned count)
{
    std::vector<TString> names;
    std::mt19937 random(1);
    for (unsigned i = 0; i < count; ++i)
        names.push_back(TString::fromStdString("n" + std::to_string(random() % 10000000) + "-" +
                                               std::to_string(i)));
    for (const std::string& name : MakeCollidingNames(50))
        names.push_back(TString::fromStdString(name));
    return names;
}

class NameBucketsTest : public testing::Test
{
protected:
    NameBucketsTest() { xercesc::XMLPlatformUtils::Initialize(); }
    ~NameBucketsTest() override { xercesc::XMLPlatformUtils::Terminate(); }
};

} // namespace

TEST_F(NameBucketsTest, GrowLikeTheTablesOfElementsAndEntities)
{
    for (const std::size_t modulus : {29U, 109U}) {
        xercesc::RefHashTableOf<int, CountingHasher> table(modulus, false);
        NameBuckets buckets(NameBuckets::Growing(modulus));
        int value = 0;
        for (const TString& name : MakeNames(3000)) {
            const XMLCh* const key = GetInternalXMLChPtrFromTString(name);
            table.put(const_cast<XMLCh*>(key), &value);
            EXPECT_EQ(buckets.Add(name.view()),
                      CountComparisons([&] { static_cast<void>(table.get(key)); }));
        }
    }
}

TEST_F(NameBucketsTest, CountAnAttributeOnceWhateverItsPrefix)
{
    NameBuckets buckets(NameBuckets::c_tag);
    EXPECT_EQ(buckets.AddAttribute(u"p:a", true), 1U);
    EXPECT_EQ(buckets.AddAttribute(u"p:a", true), 1U);
    EXPECT_EQ(buckets.AddAttribute(u"q:a", true), 2U);
    EXPECT_EQ(buckets.AddAttribute(u"a", true), 3U);
}

TEST_F(NameBucketsTest, CountWhatATableOfTheScannerCostsThatStaysLarge)
{
    xercesc::RefHashTableOf<int, CountingHasher> table(29, false);
    int value = 0;
    std::size_t reach = 0;
    for (const unsigned count : {1000U, 3000U, 200U}) {
        NameBuckets buckets(NameBuckets::Growing(29), reach);
        for (const TString& name : MakeNames(count)) {
            const XMLCh* const key = GetInternalXMLChPtrFromTString(name);
            table.put(const_cast<XMLCh*>(key), &value);
            const std::size_t comparisons =
                CountComparisons([&] { static_cast<void>(table.get(key)); });
            EXPECT_GE(buckets.Add(name.view()), comparisons);
            EXPECT_LE(buckets.Add(name.view()), comparisons + 10);
        }
        reach = buckets.GetReach();
        EXPECT_EQ(reach, count == 1000 ? 1919U : 7679U);
        table.removeAll();
    }
}

TEST_F(NameBucketsTest, GrowLikeTheTableOfATag)
{
    xercesc::Hash2KeysSetOf<CountingHasher> table(7);
    NameBuckets buckets(NameBuckets::c_tag);
    for (const TString& name : MakeNames(3000)) {
        const XMLCh* const key = GetInternalXMLChPtrFromTString(name);
        table.putIfNotPresent(key, 0);
        // A name for which the table grows stays in the bucket that was its own before.
        EXPECT_NEAR(static_cast<double>(buckets.Add(name.view())),
                    static_cast<double>(
                        CountComparisons([&] { static_cast<void>(table.containsKey(key, 0)); })),
                    2);
    }
}

TEST_F(NameBucketsTest, StayAsTheyAreLikeTheTableOfElementsWithoutSchema)
{
    struct Element
    {
        void setId(XMLSize_t value) { id = value; }
        XMLSize_t getId() const { return id; }
        XMLSize_t id = 0;
    };
    std::vector<Element> elements(4000);
    xercesc::RefHash3KeysIdPool<Element, CountingHasher> table(29, false, 128);
    NameBuckets buckets(NameBuckets::Fixed(29));
    std::size_t next = 0;
    for (const TString& name : MakeNames(3000)) {
        const XMLCh* const key = GetInternalXMLChPtrFromTString(name);
        table.put(const_cast<XMLCh*>(key), 0, 0, &elements[next++]);
        EXPECT_EQ(buckets.Add(name.view()),
                  CountComparisons([&] { static_cast<void>(table.getByKey(key, 0, 0)); }));
    }
}

TEST_F(NameBucketsTest, TakeANameTheyKnowForNoNewOne)
{
    NameBuckets buckets(NameBuckets::Fixed(29));
    EXPECT_EQ(buckets.Add(u"bA"), 1U);
    EXPECT_EQ(buckets.Add(u"ag"), 2U);
    EXPECT_EQ(buckets.Add(u"bA"), 2U);
    EXPECT_EQ(buckets.Add(u"bA", u"companion"), 3U);
    EXPECT_EQ(buckets.Add(u"bA", u"companion"), 3U);
    EXPECT_EQ(buckets.Add(u"bA", u"other"), 4U);
}

TEST_F(NameBucketsTest, HoldFewNamesThatNobodyHasChosenForIt)
{
    const auto findMost = [](const std::function<std::string(unsigned)>& make) {
        std::size_t most = 0;
        for (const NameBuckets::Shape& shape :
             {NameBuckets::Growing(29), NameBuckets::Growing(109), NameBuckets::c_tag}) {
            NameBuckets buckets(shape);
            for (unsigned i = 0; i < 50000; ++i)
                most = std::max(most, buckets.Add(TString::fromStdString(make(i)).view()));
        }
        return most;
    };
    const auto digits = [](unsigned number, const std::string& alphabet) {
        std::string text;
        do {
            text += alphabet[number % alphabet.size()];
            number /= static_cast<unsigned>(alphabet.size());
        } while (number != 0);
        return text;
    };
    const std::string letters = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-_";
    // Of what is allowed, more than a third is left. A table of 14079 buckets, which is three times
    // 13 times the square of 19, is what the scanner's base of 38 suits least.
    const std::size_t few = ParseLimits().GetNameCollisionLimit() * 5 / 8;
    EXPECT_LE(findMost([](unsigned i) { return "item" + std::to_string(i); }), few);
    EXPECT_LE(findMost([](unsigned i) { return std::to_string(i * 38) + "x"; }), few);
    EXPECT_LE(findMost([&](unsigned i) { return "x" + digits(i, letters); }), few);
    EXPECT_LE(findMost([&](unsigned i) { return "x" + digits(i, "01"); }), few);
    EXPECT_LE(findMost([&](unsigned i) { return "id-" + digits(i * 2654435761U, letters); }), few);
    for (const char* const pattern : {"%05d00", "N%05d00", "_%05d__", "fig%05d.0", "m%04d_e",
                                      "id%d", "x%d00", "%06X00", "http://e.org/%06d00"})
        EXPECT_LE(findMost([&](unsigned i) { return QString::asprintf(pattern, i).toStdString(); }),
                  few)
            << pattern;
}
