#include "support/OddDocumentParts.h"

#include "support/Repeat.h"

#include <string_view>

using namespace std::string_view_literals;
using OddDocuments::Collection;

namespace {

void AddRoots(Collection& collection)
{
    collection.Plain({"<a/>", "<a />", "<a></a>", "<a></a >", "<a\n\t/>", "<a\n></a\n>", "<a/>\n",
                      "<a><b/><b/><bc/><b.c/><b\xC3\xA9/><b/><b></b></a>", "\n<a/>",
                      " \t\r\n<a/> \t\r\n", "<a><b/><b></b><c><d/></c></a>", "<a>text</a>",
                      "<a> </a>", "<a>\n <b/>\n</a>", "<a>x<b/>y<b/>z</a>", "<a>x<b>y</b></a>",
                      "<_/>", "<a.b-c_d1/>", "<abcdefghijklmnop/>"});
    collection.Other({"",
                      " ",
                      "\n",
                      "a",
                      "text",
                      "<",
                      "<a",
                      "<a ",
                      "<a/",
                      "<a>",
                      "<a><",
                      "<a></",
                      "<a></a",
                      "<a></a ",
                      "<a/><b/>",
                      "<a/>x",
                      "x<a/>",
                      "<a></b>",
                      "<a></A>",
                      "<a><b></a></b>",
                      "<a><b></a>",
                      "</a>",
                      "<a/></a>",
                      "< a/>",
                      "<a/ >",
                      "<a></ a>",
                      "<a></a/>",
                      "<a></a b='1'>",
                      "<1a/>",
                      "<-a/>",
                      "<.a/>",
                      "<>",
                      "<></>",
                      "</>",
                      "<a>></a>",
                      "<a><></a>",
                      "<a><1/></a>",
                      "<a>< b/></a>",
                      "<a/>&amp;",
                      "<a/>&#32;",
                      "&#32;<a/>",
                      "<a/><![CDATA[]]>",
                      "<![CDATA[]]><a/>",
                      "<a//>",
                      "<a<b/>",
                      "<a/<b/>",
                      "<!a/>",
                      "<a/>\x1A",
                      "<a/>]]>"});
}

void AddPlainNames(Collection& collection)
{
    collection.Plain({"<\xC3\xA9/>",
                      "<\xC3\xA9l\xC3\xA8ve>x</\xC3\xA9l\xC3\xA8ve>",
                      "<\xCE\xB1\xCE\xB2/>",
                      "<\xD0\x96/>",
                      "<\xD7\x90/>",
                      "<\xD8\xA7/>",
                      "<\xE0\xA4\x85/>",
                      "<\xE0\xB8\x81/>",
                      "<\xE3\x81\x82/>",
                      "<\xE4\xB8\x80/>",
                      "<\xEA\xB0\x80/>",
                      "<a \xC3\xA9='1'/>",
                      "<a \xE4\xB8\x80='1' \xE4\xB8\x81='2'/>",
                      "<a\xC2\xB7/>",
                      "<a\xCC\x80/>",
                      "<p:a/>",
                      "<a p:b='1'/>",
                      "<p:a p:b='1'></p:a>",
                      "<a xmlns='u'/>",
                      "<a xmlns:p='u' p:b='1'/>",
                      "<a xml:lang='en'/>",
                      "<a xml:space='preserve'> <b/> </a>",
                      "<xml/>",
                      "<XML/>",
                      "<xmlfoo/>",
                      "<a _b='1' c.d='2' e-f='3'/>",
                      "<a:b/>",
                      "<a xmlns=''/>",
                      "<a><aa/><aaa/><aaaa/><aaaaaaaaaaaaaaaa/></a>"});
}

void AddOtherNames(Collection& collection)
{
    collection.Other({"<\xC3\x97/>",
                      "<\xC3\xB7/>",
                      "<\xC2\xB7/>",
                      "<\xCC\x80/>",
                      "<a\xC3\x97/>",
                      "<a \xC2\xAA='1'/>",
                      "<\xE2\x82\xAC/>",
                      "<a\xE2\x80\xBF/>",
                      "<\xE2\x80\x8C/>",
                      "<\xCD\xBE/>",
                      "<\xF0\x90\x80\x80/>",
                      "<a\xF0\x90\x80\x80='1'/>",
                      "<\xF0\xA0\x80\x80>x</\xF0\xA0\x80\x80>",
                      "<a \xF0\x9F\x98\x80='1'/>",
                      "<\xF3\xAF\xBF\xBF/>",
                      "<\xF3\xB0\x80\x80/>",
                      "<a\xEF\xBF\xBD/>",
                      "<\xEF\xBC\xA1/>",
                      "<\xE2\x84\xA6/>",
                      "<\xE2\xB0\x80/>",
                      "<\xEF\xBF\xBE/>",
                      "<a\xEF\xBB\xBF/>",
                      "<\xEF\xBB\xBF"
                      "a/>",
                      "<a b\xED\xA0\x80='1'/>",
                      "<a'/>",
                      "<a\"b/>",
                      "<a,b/>",
                      "<a+/>",
                      "<a$/>",
                      "<a@b/>",
                      "<a;/>",
                      "<a&b/>",
                      "<a%/>",
                      "<a*/>",
                      "<a(/>",
                      "<a[/>",
                      "<a\\/>",
                      "<a^/>",
                      "<a`/>",
                      "<a{/>",
                      "<a|/>",
                      "<a~/>",
                      "<a!/>",
                      "<a?/>",
                      "<a#/>"});
}

void AddPlainColons(Collection& collection)
{
    collection.Plain({"<a :b='1'/>",
                      "<r :a=\"1\"/>",
                      "<a :b='1' :c='2' d='3'/>",
                      "<a b='1' :b='2'/>",
                      "<a><b :c='1'>x</b></a>",
                      "<a :b = '1'/>",
                      "<a\n:b='1'/>",
                      "<a\t:b='1'\r\n:c='2'/>",
                      "<a>\n :b='1' </a>",
                      "<a b=' :c= '/>",
                      "<!-- :b='1' --><a/>",
                      "<a><!-- :b='1' --></a>",
                      "<r><!--><a \"--><b c=\"x :d='1' >\"/></r>",
                      "<a><!--><a :b='1'--></a>",
                      "<a><!---><a :b='1'--></a>",
                      "<a><!--><!--><b :c='1'/></a>",
                      "<a><![CDATA[ :b='1' ]]></a>",
                      "<a IllegalColon:b='1'/>",
                      "<a xmlns:IllegalColon='u'/>",
                      "<a xmlns:IllegalColonX='u'/>",
                      "<a :b='1' xmlns:p='u'/>",
                      "<IllegalColon:a/>",
                      "<a b=':'/>",
                      "<a>:</a>",
                      "<a b='1'>x :y='2'</a>",
                      "<?xml version='1.0'?>\n<a :b='1'/>",
                      "<a> : </a>",
                      "<a p:b='1' :p='2'/>",
                      "<a :\xC3\xA9='1'/>"});
}

void AddOtherColons(Collection& collection)
{
    collection.Other({"<:/>",
                      "<:a/>",
                      "<a:/>",
                      "<a::b/>",
                      "<a:b:c/>",
                      "<:a></:a>",
                      "<a :='1'/>",
                      "<a ::b='1'/>",
                      "<a b:='1'/>",
                      "<a b::c='1'/>",
                      "<a b:c:d='1'/>",
                      "<a :b/>",
                      "<a :b=/>",
                      "<a :b=1/>",
                      "<a :b='1' :b='2'/>",
                      "<a:b='1'/>",
                      "<a : b='1'/>",
                      "<a :1='1'/>",
                      "<a IllegalColon:='1'/>",
                      "<a IllegalColon:b='1' :b='2'/>",
                      "<a :b='2' IllegalColon:b='1'/>",
                      "<a IllegalColon:b='1' IllegalColon:b='2'/>",
                      "<a xmlns:IllegalColon='u' :b='1'/>",
                      "<a :b='1' xmlns:IllegalColon='u'/>",
                      "<a :b='1'",
                      "<a :b='1",
                      "<a :b='<'/>",
                      "<a :b='>'/>",
                      "<a b='>' :c='1'/>",
                      "<a b=\"'\" :c='1'/>",
                      "<a b='1':c='2'/>",
                      "<?p :b='1'?><a :c='1'/>",
                      "<!DOCTYPE a><a :b='1'/>",
                      "<!DOCTYPE a [<!ATTLIST a :b CDATA 'x'>]><a/>",
                      "<!DOCTYPE a [<!ATTLIST a b CDATA 'x'>]><a :b='1'/>",
                      "<a>x > :b='1'<c/></a>",
                      "<a> :b='1'> </a>",
                      "<a> :b='1'/></a>",
                      "<a :b='1'/>\n :c='1' >"});
}

void AddPlainAttributes(Collection& collection)
{
    collection.Plain({"<a b='1'/>",
                      "<a b=\"1\"/>",
                      "<a b=''/>",
                      "<a b=\"\"/>",
                      "<a b='1' c='2'/>",
                      "<a b='1'\tc='2'\nd='3'\r\ne='4' ></a>",
                      "<a b = '1'/>",
                      "<a b\n=\n'1'\n/>",
                      "<a b='\"'/>",
                      "<a b=\"'\"/>",
                      "<a b='>'/>",
                      "<a b='a>b/>'/>",
                      "<a b=']]>'/>",
                      "<a b='\t\n x  y \r\n'/>",
                      "<a b='  '/>",
                      "<a b='--'/>",
                      "<a b='=' c='/'/>",
                      "<a b='\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80'/>",
                      "<a b='1'><a b='2'/></a>",
                      "<a b='1' B='2' _b='3'/>",
                      "<a href='http://x.y/z?q=1&amp;r=2#s'/>",
                      "<a z='1' y='2' x='3' w='4' v='5' u='6' t='7' s='8' r='9'/>",
                      "<a><b c='1' d='2'/><b c='3' d='4'/><b d='5' c='6'/><b c='7'/></a>",
                      "<a b='\x7F'/>"});
}

void AddOtherAttributes(Collection& collection)
{
    collection.Other({"<a b/>",
                      "<a b='\xC2\x85\xE2\x80\xA8'/>",
                      "<a b=/>",
                      "<a b=1/>",
                      "<a b='1/>",
                      "<a b=\"1'/>",
                      "<a b='1' b='2'/>",
                      "<a b='1' c='2' b='1'/>",
                      "<a b='1'c='2'/>",
                      "<a b='1'\"c='2'/>",
                      "<a b='<'/>",
                      "<a b='<b/>'/>",
                      "<a b='a<b'/>",
                      "<a b '1'/>",
                      "<a b=='1'/>",
                      "<a ='1'/>",
                      "<a '1'/>",
                      "<a 'b'='1'/>",
                      "<a b='1' /c='2'>",
                      "<a b='1',c='2'/>",
                      "<a b='\x01'/>",
                      "<a b='\xEF\xBF\xBE'/>",
                      "<a b='1",
                      "<a b='",
                      "<a b=",
                      "<a b",
                      "<a b='1'",
                      "<a b='1' ",
                      "<a b='1'/",
                      "<a b=''c=''/>",
                      "<a 1='1'/>",
                      "<a -b='1'/>",
                      "<a b='1'\xC2\xA0"
                      "c='2'/>",
                      "<a b=`1`/>",
                      "<a></a b='1'>",
                      "<a b='1'>x</a",
                      "<a b='&#60;'/>"});
    for (const std::size_t count : {3U, 10U, 15U, 16U, 17U, 31U, 32U, 33U, 64U, 65U, 100U, 200U}) {
        std::string tag = "<a";
        for (std::size_t i = 0; i < count; ++i)
            tag += " n" + std::to_string(i) + "='v" + std::to_string(i) + "'";
        collection.PlainText("<r>" + tag + "/>" + tag + "/></r>");
        collection.OtherText("<r>" + tag + " n0='again'/></r>");
        collection.OtherText("<r>" + tag + " n" + std::to_string(count - 1) + "='again'/></r>");
    }
}

void AddLargerOnes(Collection& collection)
{
    collection.PlainText(Repeat("<a>", 300) + Repeat("</a>", 300));
    collection.PlainText("<a>" + Repeat("<b c='1'>x</b>\n", 300) + "</a>");
    collection.PlainText("<a>" + Repeat("text &amp; <![CDATA[more]]>\r\n", 300) + "</a>");
    collection.PlainText("<a>" + Repeat("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", 500) + "<b/></a>");
    collection.PlainText("<" + std::string(300, 'n') + " " + std::string(300, 'm') + "='" +
                         std::string(300, 'v') + "'/>");
    collection.PlainText("<a>" + std::string(5000, ' ') + "<b/>" + std::string(5000, '\n') +
                         "</a>");
    std::string names = "<a>";
    for (int i = 0; i < 300; ++i)
        names += "<n" + std::to_string(i) + " a" + std::to_string(i % 50) + "='x'/>";
    collection.PlainText(names + "</a>");
    collection.OtherText(Repeat("<a>", 300) + Repeat("</a>", 299));
    collection.OtherText("<a>" + Repeat("<b c='1'>x</b>\n", 300) + "&x;</a>");
    collection.OtherText("<a>" + Repeat("<b c='1'>x</b>\n", 300) + "</a>x");
}

} // namespace

void OddDocuments::AddTags(Collection& collection)
{
    AddRoots(collection);
    AddPlainNames(collection);
    AddOtherNames(collection);
    AddPlainColons(collection);
    AddOtherColons(collection);
    AddPlainAttributes(collection);
    AddOtherAttributes(collection);
    AddLargerOnes(collection);
}
