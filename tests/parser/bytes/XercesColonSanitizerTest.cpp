#include "bytes/XercesColonSanitizer.h"

#include "support/ColonModel.h"
#include "support/Effort.h"
#include "support/RandomBytes.h"
#include "support/Repeat.h"
#include "support/XercesEvents.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

const std::string c_declaration =
    " xmlns:IllegalColon='http://kescorexml.invalid/xml/ThisShouldNotAppear'";

std::string Encode(const std::string& text)
{
    const auto input = std::make_shared<const std::string>(text);
    const auto output = XercesColonSanitizer::EncodeColonAttributeNames(input);
    // What is not changed must not be copied either.
    EXPECT_EQ(*output == text, output == input) << text;
    EXPECT_EQ(*input, text);
    return *output;
}

std::u16string Restore(const std::u16string& name)
{
    return std::u16string(XercesColonSanitizer::RestoreEncodedAttributeNames(TString(name)).view());
}

TEST(XercesColonSanitizer, PutsAPrefixBeforeColonNames)
{
    EXPECT_EQ(Encode("<r :a=\"1\"/>"), "<r" + c_declaration + " IllegalColon:a=\"1\"/>");
    EXPECT_EQ(Encode("<r><s b='1'\n:a\t= '2'\t:c='3'>x</s></r>"),
              "<r" + c_declaration +
                  "><s b='1'\nIllegalColon:a\t= '2'\tIllegalColon:c='3'>x</s></r>");
}

TEST(XercesColonSanitizer, DeclaresThePrefixBehindTheRootName)
{
    EXPECT_EQ(Encode("<r/><s :a='1'/>"), "<r" + c_declaration + "/><s IllegalColon:a='1'/>");
    EXPECT_EQ(Encode("\n<?xml version='1.0'?><!-- <x> --><!DOCTYPE r><p:r\n><s :a='1'></s></p:r>"),
              "\n<?xml version='1.0'?><!-- <x> --><!DOCTYPE r><p:r" + c_declaration +
                  "\n><s IllegalColon:a='1'></s></p:r>");
    EXPECT_EQ(Encode("<!DOCTYPE r SYSTEM ''><r :a='1'/>"),
              "<!DOCTYPE r SYSTEM ''><r" + c_declaration + " IllegalColon:a='1'/>");
    EXPECT_EQ(Encode("< r :a='1'/>"), "< r" + c_declaration + " IllegalColon:a='1'/>");
    EXPECT_EQ(Encode("<\xC3\xA4r :a='1'/>"),
              "<\xC3\xA4r" + c_declaration + " IllegalColon:a='1'/>");
}

TEST(XercesColonSanitizer, ReturnsTheVeryTextWhenThereIsNothingToDo)
{
    for (const std::string text : {"", ":", " :a='1'/>", "<r/>", "<r p:a='1'/>",
                                   "<r>12:30 :) a :b</r>", "<r xmlns:p='urn:x' p:a=\"1\">: :</r>",
                                   "<r :a/>", "<r :a", "<r :a=", "<r :a='1'", "<r :"})
        EXPECT_EQ(Encode(text), text);
}

TEST(XercesColonSanitizer, LeavesCommentsSectionsAndDeclarationsAlone)
{
    for (const std::string text :
         {"<r><!-- <s :a='1'/> --></r>", "<r><![CDATA[<s :a='1'/>]]></r>",
          "<!DOCTYPE r [<!ATTLIST r :a CDATA #IMPLIED :b = ''>]><r/>", "<!-- :a='1'",
          "<!DOCTYPE r [<!ENTITY e 'x> <s :a=\"1\"/>'> ]><r/>", "<r><!--><s :a='1'/> --></r>",
          "<r><!---><s :a='1'/> --></r>"})
        EXPECT_EQ(Encode(text), text);
}

TEST(XercesColonSanitizer, LeavesValuesAlone)
{
    for (const std::string text :
         {"<r a=' :b=\"1\"'/>", "<r a=\" :b='1'\"/>", "<r a=' :b=1'/>", "<r a=' :b='/>",
          "<r a=\"' :b=\" c=\"'\"/>", "<r a='\" :b=' c='\"'/>"})
        EXPECT_EQ(Encode(text), text);
    EXPECT_EQ(Encode("<r a=' :b=\"1\"' :c='2'/>"),
              "<r" + c_declaration + " a=' :b=\"1\"' IllegalColon:c='2'/>");
}

TEST(XercesColonSanitizer, LeavesTextAloneEvenWhenABraceFollows)
{
    for (const std::string text :
         {"<r>x :a=1 > y</r>", "<r>x :a=\"1\"/></r>", "<r/> :a=1 /> ", "<r>\n:=&gt; :a=>\n</r>"})
        EXPECT_EQ(Encode(text), text);
    EXPECT_EQ(Encode("<r>x :a=1 > y<s :a='1'/></r>"),
              "<r" + c_declaration + ">x :a=1 > y<s IllegalColon:a='1'/></r>");
}

TEST(XercesColonSanitizer, LeavesInstructionsAndEndTagsAlone)
{
    for (const std::string text : {"<?pi :a='1'?><r/>", "<?xml :version='1.0'?>\n<r/>",
                                   "<r><?pi :a='1' ?></r>", "<r></r :a='1'><s/>"})
        EXPECT_EQ(Encode(text), text);
    EXPECT_EQ(Encode("<?pi :a='1'?><r :a='1'/>"),
              "<?pi :a='1'?><r" + c_declaration + " IllegalColon:a='1'/>");
}

TEST(XercesColonSanitizer, LeavesTheRootNameAndAColonAtTheStartAlone)
{
    EXPECT_EQ(Encode(":a='1'/><r/>"), ":a='1'/><r/>");
    EXPECT_EQ(Encode("< :r='1'/>"), "< :r='1'/>");
    EXPECT_EQ(Encode("< :r=' ' :a='1'/>"), "< :r" + c_declaration + "=' ' IllegalColon:a='1'/>");
}

TEST(XercesColonSanitizer, TellsNoAttributeFromTextInTheValueBehindIt)
{
    // The next ">" is not the end of the tag.
    EXPECT_EQ(Encode("<r :a='>'/>"), "<r :a='>'/>");
    EXPECT_EQ(Encode("<r :a='1' b='>' :c='2'/>"),
              "<r" + c_declaration + " :a='1' b='>' IllegalColon:c='2'/>");
}

TEST(XercesColonSanitizer, WantsAMarkupBraceOrASlashBehindATag)
{
    EXPECT_EQ(Encode("<r :a='1'>"), "<r :a='1'>");
    EXPECT_EQ(Encode("<r :a='1'/>"), "<r" + c_declaration + " IllegalColon:a='1'/>");
    EXPECT_EQ(Encode("<r :a='1'><"), "<r" + c_declaration + " IllegalColon:a='1'><");
}

TEST(XercesColonSanitizer, FindsTheRootBehindEntitiesThatHoldTags)
{
    const std::string doctype =
        "<!DOCTYPE r [<!ENTITY e \"<b>it's</b>\"><!-- ]> ' --><?p ]> \" ?>]>";
    EXPECT_EQ(Encode(doctype + "<r :a='1'/>"),
              doctype + "<r" + c_declaration + " IllegalColon:a='1'/>");
}

TEST(XercesColonSanitizer, KnowsTheRootTagWhereverItFindsAnAttribute)
{
    // All short texts: whatever looks like an attribute in one, there is a start tag around it.
    constexpr std::string_view c_bytes = "<>:=a /!?'";
    int changed = 0;
    for (std::size_t number = 0; number < 1000000; number += Effort::c_stride) {
        std::string text = "<a";
        for (std::size_t rest = number; rest != 0; rest /= c_bytes.size())
            text += c_bytes[rest % c_bytes.size()];
        changed += Encode(text) != text;
        Encode(text.substr(1));
        Encode(text.substr(2));
    }
    EXPECT_GT(changed, 0);
    RandomBytes random(3);
    for (std::size_t round = 0; round < Effort::Scale(100000); ++round)
        Encode(random.Join({"<r",        "</r",       "<!--", "-->", "<![CDATA[", "]]>",  "<?p",
                            "?>",        "<!DOCTYPE", "[",    "]",   ">",         "/>",   " :a='1'",
                            " :a='1'/>", "'",         "\"",   " ",   ":",         " :a=", "x"},
                           16));
}

TEST(XercesColonSanitizer, EncodesAsAModelDoes)
{
    RandomBytes random(1);
    int changed = 0;
    for (int round = 0; round < 100000; ++round) {
        const std::string text =
            "<r" +
            (round % 2 == 0
                 ? random.Of("<>!-?'\":=/a \n", 40)
                 : random.Join({"<r",     "<r",  "</r", "<!--",      "-->",       "<![CDATA[",
                                "]]>",    "<?p", "?>",  "<!DOCTYPE", "[",         "]",
                                ">",      "/>",  "/><", " :a='1'",   " :a='1'/>", "\n:b = \"2\"",
                                " c='",   "'",   "\"",  " ",         ":",         " :a=",
                                " x > y "},
                               16));
        const std::string expected = ColonModel::Encode(text);
        ASSERT_EQ(Encode(text), expected) << text;
        changed += expected != text;
    }
    EXPECT_GT(changed, 1000);
}

TEST(XercesColonSanitizer, FindsNamesBehindManyOtherColons)
{
    // A search may go on in another way where there are many; the names stand before, at and
    // behind every place where it could change.
    const std::string name = "<s :a='1'/>";
    const std::string encoded = "<s IllegalColon:a='1'/>";
    for (const std::size_t distance : {1U, 3U, 60U, 300U}) {
        const std::string other = std::string(distance, 'x') + ":";
        for (std::size_t count = 0; count < 150; ++count) {
            const std::string others = Repeat(other, count);
            EXPECT_EQ(Encode("<r>" + others + name + others + name + "</r>"),
                      "<r" + c_declaration + ">" + others + encoded + others + encoded + "</r>");
        }
    }
}

/// A well-formed document that is full of colons.
std::string MakeDocument(RandomBytes& random)
{
    const std::vector<std::string_view> openings = {
        "<e>", "<e :a='1'>", "<p:e p:a=' :b=\"1\"'\n:a = \"2\" >", "<e\t:a.b='it is > that' c=''>"};
    const std::vector<std::string_view> leaves = {"text",
                                                  " :a='1' ",
                                                  " :a=1 > 2 ",
                                                  "<!-- <e :a='1'/> -->",
                                                  "<![CDATA[ <e :a='1'/> > ]]>",
                                                  "<?p :a='1' ?>",
                                                  "<e/>",
                                                  "<e :a='1' :b='\"'/>",
                                                  "&amp; :a=\"1\"/>",
                                                  "<p:e p:b='1'/>",
                                                  "\n"};
    std::string text = random.Join({"<?p :a='1'?>", "<!-- :a=> -->", "\n"}, 2);
    if (random.Below(3) == 0)
        text += "<!DOCTYPE r [<!ENTITY e ' :a=1 > <x :a=\"1\">'><!-- <x :a='' > --> ]>\n";
    text += random.Below(2) == 0 ? "<r>" : "<r :a='1'\n>";
    std::vector<std::string> closings = {"</r>"};
    for (std::size_t count = random.Below(12); count > 0; --count) {
        const std::string_view opening = openings[random.Below(openings.size())];
        if (random.Below(3) == 0) {
            text += opening;
            closings.push_back(opening[1] == 'p' ? "</p:e>" : "</e>");
        } else if (closings.size() > 1 && random.Below(3) == 0) {
            text += closings.back();
            closings.pop_back();
        } else {
            text += leaves[random.Below(leaves.size())];
        }
    }
    for (; !closings.empty(); closings.pop_back())
        text += closings.back();
    return text;
}

TEST(XercesColonSanitizer, ChangesNothingButAttributeNames)
{
    RandomBytes random(2);
    const auto asItIs = [](const std::u16string& name) { return name; };
    for (int round = 0; round < 2000; ++round) {
        const std::string text = MakeDocument(random);
        const auto events = ReadEvents(text, asItIs);
        ASSERT_TRUE(events) << text;
        ASSERT_EQ(ReadEvents(Encode(text), Restore), events) << text;
    }
}

TEST(XercesColonSanitizer, RestoresNames)
{
    EXPECT_EQ(Restore(u"IllegalColon:a"), u":a");
    EXPECT_EQ(Restore(u"IllegalColon:a:b"), u":a:b");
    EXPECT_EQ(Restore(u"IllegalColon:"), u":");
    EXPECT_EQ(Restore(u"IllegalColon:IllegalColon:a"), u":IllegalColon:a");
}

TEST(XercesColonSanitizer, DropsTheDeclarationOfThePrefix)
{
    EXPECT_EQ(Restore(u"xmlns:IllegalColon"), u"");
    EXPECT_EQ(Restore(u"xmlns:IllegalColonAndMore"), u"");
}

TEST(XercesColonSanitizer, RestoresNoOtherNames)
{
    for (const std::u16string name :
         {u"", u"a", u":a", u"IllegalColon", u"illegalcolon:a", u"p:IllegalColon:a", u"xmlns",
          u"xmlns:Illegal", u"XMLNS:IllegalColon", u"xmlns:p"})
        EXPECT_EQ(Restore(name), name);
}

TEST(XercesColonSanitizer, PassesAMillionCandidatesThatAreNoneInLinearTime)
{
    const std::string colons = Repeat(" :a=", 1'000'000);
    for (const std::string& text :
         {"<r>" + colons, "<r>" + colons + "</r>", "<r>" + colons + "></r>", colons + "/>",
          "<r a='" + colons + "'/>", "<r a='" + colons + "/>",
          "<r>" + Repeat(" :a='", 999'999) + "></r>",
          "<r a='>'" + Repeat(" :a='>'", 1'000'000) + "></r>", "<!DOCTYPE r [" + colons + "]><r/>",
          "<!-- " + colons + "--><r/>", "<r>" + Repeat(" :a=><!", 1'000'000) + "</r>",
          "<?p" + colons + ">?><r/>", "<r>" + Repeat(" :", 1'000'000) + "</r>",
          "<r>" + Repeat(" :a= >\n", 1'000'000) + "</r>",
          Repeat(" :", 1) + Repeat("a", 5'000'000) + "=>"}) {
        const auto input = std::make_shared<const std::string>(text);
        EXPECT_EQ(XercesColonSanitizer::EncodeColonAttributeNames(input), input)
            << text.substr(0, 30);
    }
}

TEST(XercesColonSanitizer, EncodesAMillionNamesInLinearTime)
{
    EXPECT_EQ(Encode("<r" + Repeat(" :a='1'", 1'000'000) + "/>"),
              "<r" + c_declaration + Repeat(" IllegalColon:a='1'", 1'000'000) + "/>");
    EXPECT_EQ(Encode("<r>" + Repeat("<s :a=\"'\"> > </s>", 1'000'000) + "</r>"),
              "<r" + c_declaration + ">" + Repeat("<s IllegalColon:a=\"'\"> > </s>", 1'000'000) +
                  "</r>");
}

} // namespace
