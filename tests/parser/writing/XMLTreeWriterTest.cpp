#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

TEST(XMLTreeWriter, WritesParsedAttributesOfAnyLengthInTheOrderOfTheirNames)
{
    for (const std::size_t length : {1U, 511U, 512U, 513U, 1024U, 1025U, 5000U}) {
        const std::string a = "a='" + std::string(length, 'a') + "&lt;'";
        const std::string b = "b='" + std::string(length, 'b') + "&amp;'";
        const std::string element = "<e c='' " + b + ' ' + a + "/>";
        const auto document = DOMParser().ParseXmlString(
            "<r>" + element + "<e c='' b='' a=''/>" + element + "</r>", u"id");
        std::ostringstream written;
        written << XMLDomFormatter::RenderAsXMLString(*document, nullptr, true);
        const std::string expected = "<e " + a + ' ' + b + " c='' />";
        const std::size_t first = written.str().find(expected);
        ASSERT_NE(first, std::string::npos) << length;
        EXPECT_NE(written.str().find(expected, first + 1), std::string::npos) << length;
    }
}
