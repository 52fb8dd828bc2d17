#include "support/OddDocumentParts.h"

#include <string_view>

using namespace std::string_view_literals;
using OddDocuments::Collection;

namespace {

void AddComments(Collection& collection)
{
    collection.Plain({"<!----><a/>", "<!-- comment --><a/><!-- behind -->", "<a><!--x--></a>",
                      "<a>x<!-- between -->y</a>", "<a>x<!---->y<!--1--><!--2-->z</a>",
                      "<!-- < > & &amp; &x; ' \" ]]> <b> --><a/>", "<!-- - - -x--><a/>",
                      "<a><!--\r\n\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80--><b/></a>",
                      "<!--- x--><a/>", "<a><!--<!-x--></a>", "<a> <!-- --> </a>"});
    collection.Other({"<!-- -- --><a/>",
                      "<!-- ---><a/>",
                      "<!----->",
                      "<!---><a/>",
                      "<!--><a/>",
                      "<!-- a--b --><a/>",
                      "<!- x --><a/>",
                      "<! -- x --><a/>",
                      "<!--x",
                      "<!--x-",
                      "<!--x--",
                      "<a><!--x--",
                      "<a/><!--",
                      "<a><!--\x01--></a>",
                      "<a><!--\xEF\xBF\xBE--></a>",
                      "<a><!--\xFF--></a>",
                      "<a <!--x-->/>",
                      "<a b='<!--x-->'/>",
                      "<a><!--x--\n></a>",
                      "<!--x--\xC3\xA9--><a/>"});
    collection.Other({"<a><!--\0--></a>"sv});
}

void AddProcessingInstructions(Collection& collection)
{
    collection.Plain({"<?p?><a/>", "<?p data?><a/><?p  more data ?>", "<a><?p?></a>",
                      "<a>x<?p ?y?>y</a>", "<?xml-stylesheet href='a.xsl'?><a/>", "<?xmlx?><a/>",
                      "<?p <a> & &amp; ]]> -- ?><a/>", "<?p ?\?><a/>", "<a>x<?p\r\ndata\r\n?>y</a>",
                      "<?p\n?><a/>", "<?p.q-r_1 x?><a/>", "<?\xC3\xA9 \xE2\x82\xAC?><a/>",
                      "<?p \xF0\x9F\x98\x80?><a/>"});
    collection.Other({"<?\?><a/>",
                      "<? p?><a/>",
                      "<?1?><a/>",
                      "<?p><a/>",
                      "<?p",
                      "<?p?",
                      "<?p ?",
                      "<a><?p",
                      "<a/><?p x",
                      "<?XML?><a/>",
                      "<?xmL x?><a/>",
                      "<?Xml x?><a/>",
                      "<?xml x?><a/>",
                      "<a><?xml?></a>",
                      "<a><?XML x?></a>",
                      "<a/><?xml ?>",
                      "<?p:q?><a/>",
                      "<?:p?><a/>",
                      "<?p: x?><a/>",
                      "<?p\x01?><a/>",
                      "<?p \x01?><a/>",
                      "<?p \xFF?><a/>",
                      "<?p/?><a/>",
                      "<?p'?><a/>",
                      "<?p \xEF\xBF\xBF?><a/>",
                      "<?xml:x y?><a/>",
                      "<a ?>",
                      "<a><?></a>"});
}

void AddSections(Collection& collection)
{
    collection.Plain({"<a><![CDATA[]]></a>", "<a><![CDATA[text]]></a>", "<a>x<![CDATA[y]]>z</a>",
                      "<a><![CDATA[<b>&amp;&x;</b>]]></a>", "<a><![CDATA[]]]></a>",
                      "<a><![CDATA[]]]]></a>", "<a><![CDATA[]>]]></a>", "<a><![CDATA[>]]></a>",
                      "<a><![CDATA[]]]]><![CDATA[>]]></a>", "<a><![CDATA[ ]]></a>",
                      "<a> <![CDATA[]]> </a>", "<a><![CDATA[a\r\nb\rc]]></a>",
                      "<a><![CDATA[\r]]>\n</a>", "<a>\r<![CDATA[\n]]></a>",
                      "<a><![CDATA[<![CDATA[]]></a>", "<a><![CDATA[\xF0\x9F\x98\x80\xC3\xA9]]></a>",
                      "<a><b/><![CDATA[x]]><b/></a>", "<a><![CDATA[x]]><!--c--><![CDATA[y]]></a>"});
    collection.Other({"<a><![CDATA[x", "<a><![CDATA[x]", "<a><![CDATA[x]]", "<a><![CDATA[x]]</a>",
                      "<a><![CDATA [x]]></a>", "<a><![cdata[x]]></a>", "<a><![CDATA</a>",
                      "<a><! [CDATA[x]]></a>", "<a><![CDATA[x]]></a>]]>", "<a><![", "<a><![C",
                      "<a><![CDATA[\x02]]></a>", "<a><![CDATA[\xEF\xBF\xBF]]></a>",
                      "<a><![CDATA[\xED\xA0\x80]]></a>", "<a><![INCLUDE[x]]></a>", "<a><!x></a>"});
}

void AddPlainText(Collection& collection)
{
    collection.Plain({"<a>]</a>",
                      "<a>]]</a>",
                      "<a>]]]</a>",
                      "<a>]] ></a>",
                      "<a>]&gt;</a>",
                      "<a>]]&gt;</a>",
                      "<a>]]&#62;</a>",
                      "<a>]&#93;></a>",
                      "<a>>></a>",
                      "<a>]></a>",
                      "<a>]<!---->]></a>",
                      "<a>]]<!---->></a>",
                      "<a>]]<![CDATA[>]]></a>",
                      "<a>]]<?p?>></a>",
                      "<a>]]<b/>></a>",
                      "<a>'\"</a>",
                      "<a>a=b</a>",
                      "<a>\x7F</a>",
                      "<a>\t\n </a>",
                      "<a>\xED\x9F\xBF\xEE\x80\x80</a>",
                      "<a>\xEF\xBF\xBD</a>",
                      "<a>\xF0\x90\x80\x80\xF4\x8F\xBF\xBF</a>",
                      "<a>\xF0\x9F\xBF\xBE</a>",
                      "<a>\xDF\xBF\xE0\xA0\x80</a>",
                      "<a>\xEF\xBB\xBEx</a>",
                      "<a>x\xEF\xBB\xBF</a>"});
}

void AddOtherText(Collection& collection)
{
    collection.Other({"<a>]]></a>",
                      "<a>x]]>y</a>",
                      "<a>]]]></a>",
                      "<a>]]]]></a>",
                      "<a>]]>",
                      "<a>]]",
                      "<a>\x01</a>",
                      "<a>\x08</a>",
                      "<a>\x0B</a>",
                      "<a>\x0C</a>",
                      "<a>\x0E</a>",
                      "<a>\x1F</a>",
                      "<a>\xEF\xBF\xBE</a>",
                      "<a>\xEF\xBF\xBF</a>",
                      "<a>\xED\xA0\x80</a>",
                      "<a>\xED\xBF\xBF</a>",
                      "<a>\xED\xA0\xBD\xED\xB8\x80</a>",
                      "<a>\xC0\x80</a>",
                      "<a>\xC1\xBF</a>",
                      "<a>\xE0\x80\x80</a>",
                      "<a>\xE0\x9F\xBF</a>",
                      "<a>\xF0\x80\x80\x80</a>",
                      "<a>\xF0\x8F\xBF\xBF</a>",
                      "<a>\xF4\x90\x80\x80</a>",
                      "<a>\xF5\x80\x80\x80</a>",
                      "<a>\xF8\x88\x80\x80\x80</a>",
                      "<a>\xFC\x84\x80\x80\x80\x80</a>",
                      "<a>\xFE</a>",
                      "<a>\xFF</a>",
                      "<a>\x80</a>",
                      "<a>\xBF</a>",
                      "<a>\xC3</a>",
                      "<a>\xC3(</a>",
                      "<a>\xE2\x82</a>",
                      "<a>\xE2\x82(</a>",
                      "<a>\xE2(\xAC</a>",
                      "<a>\xF0\x9F\x98</a>",
                      "<a>\xF0\x9F</a>",
                      "<a>\xF0</a>",
                      "<a/>\xC3",
                      "<a/>\xE2\x82",
                      "<a/>\xF0\x9F\x98",
                      "<a>\xF0\x9F\x98",
                      "<a>\xE2\x82",
                      "<a>\xC3",
                      "<a/>\xFF",
                      "<\xFF/>",
                      "<a \xFF='1'/>",
                      "<a b='\xFF'/>",
                      "<a b='\xC3'/>",
                      "\xFF<a/>",
                      "<a>x\xED\xA0y</a>"});
    collection.Other({"<a>\0</a>"sv, "<a/>\0"sv, "\0<a/>"sv, "<a\0/>"sv, "<a b='\0'/>"sv,
                      "<a/>\0<b/>"sv, "<a/>\n\0"sv});
}

void AddPlainReferences(Collection& collection)
{
    collection.Plain({"<a>&amp;&lt;&gt;&quot;&apos;</a>",
                      "<a>x&amp;y</a>",
                      "<a>&#65;&#x41;</a>",
                      "<a>&#x0041;&#00065;</a>",
                      "<a>&#0000000000000000000000000065;</a>",
                      "<a>&#xd;&#xa;&#9;&#32;</a>",
                      "<a>&#13;\n</a>",
                      "<a>\r&#10;</a>",
                      "<a>&#x20AC;&#x20ac;&#8364;</a>",
                      "<a>&#x1F600;&#128512;</a>",
                      "<a>&#x10FFFF;&#1114111;</a>",
                      "<a>&#xD7FF;&#xE000;</a>",
                      "<a>&#xFFFD;</a>",
                      "<a>&#x85;&#x2028;&#160;</a>",
                      "<a>&#60;b&#62;&#38;amp;</a>",
                      "<a b='&amp;&lt;&gt;&quot;&apos;'/>",
                      "<a b='&#9;&#10;&#13;&#32;'/>",
                      "<a b='&#x1F600;'/>",
                      "<a b='&#39;&#34;'/>",
                      "<a b=' &#32; '/>",
                      "<a> &#32; </a>",
                      "<a>&#32;</a>",
                      "<a>&amp;amp;</a>",
                      "<a>&#38;#65;</a>",
                      "<a>&lt;![CDATA[x]]&gt;</a>",
                      "<a>&#x000000000000000000000000010FFFF;</a>"});
}

void AddBrokenReferences(Collection& collection)
{
    collection.Other({"<a>&</a>",
                      "<a>& </a>",
                      "<a>&;</a>",
                      "<a>&a</a>",
                      "<a>&amp</a>",
                      "<a>&amp ;</a>",
                      "<a>& amp;</a>",
                      "<a>&AMP;</a>",
                      "<a>&Amp;</a>",
                      "<a>&nbsp;</a>",
                      "<a>&e;</a>",
                      "<a>&#;</a>",
                      "<a>&#x;</a>",
                      "<a>&#X41;</a>",
                      "<a>&#65</a>",
                      "<a>&#65 ;</a>",
                      "<a>&# 65;</a>",
                      "<a>&#6A;</a>",
                      "<a>&#xG;</a>",
                      "<a>&#-65;</a>",
                      "<a>&#+65;</a>",
                      "<a>&#0;</a>",
                      "<a>&#x0;</a>",
                      "<a>&#1;</a>",
                      "<a>&#8;</a>",
                      "<a>&#11;</a>",
                      "<a>&#31;</a>",
                      "<a>&#xD800;</a>",
                      "<a>&#xDFFF;</a>",
                      "<a>&#55296;</a>",
                      "<a>&#xFFFE;</a>",
                      "<a>&#xFFFF;</a>",
                      "<a>&#65534;</a>",
                      "<a>&#x110000;</a>",
                      "<a>&#1114112;</a>",
                      "<a>&#4294967361;</a>",
                      "<a>&#x100000041;</a>",
                      "<a>&#99999999999999999999;</a>",
                      "<a>&#x1FFFFE;</a>",
                      "<a>&#xD83D;&#xDE00;</a>"});
}

void AddBrokenReferencesElsewhere(Collection& collection)
{
    collection.Other({"<a b='&'/>",
                      "<a b='&e;'/>",
                      "<a b='&#0;'/>",
                      "<a b='&lt'/>",
                      "<a b='&#xD800;'/>",
                      "<&amp;/>",
                      "<a &amp;='1'/>",
                      "<a>&amp;",
                      "<a>&am",
                      "<a>&",
                      "<a>&#6",
                      "<a>&#x",
                      "<a>&ampx;</a>",
                      "<a>&ltx;</a>",
                      "<a>&#x41g;</a>",
                      "<a>&\xC3\xA9;</a>",
                      "<a>&1;</a>",
                      "<a>&amp&amp;</a>",
                      "<a>%amp;</a>",
                      "<a>&#x1F600</a>"});
}

void AddLineEnds(Collection& collection)
{
    collection.Plain({"<a>\r</a>",
                      "<a>\r\n</a>",
                      "<a>\n\r</a>",
                      "<a>\r\r\n\n</a>",
                      "<a>x\ry\r\nz\nw</a>",
                      "<a\r\nb='1'\r/>",
                      "<a>\r\n<b/>\r<b/>\n<b/></a>",
                      "<a/>\r",
                      "<a/>\r\n",
                      "\r<a/>",
                      "\r\n<a/>",
                      "<a>\r&#13;\n</a>",
                      "<a b='\r'/>",
                      "<a b='\r\n'/>",
                      "<a b='\n\r'/>",
                      "<a b='\r\r\n\n\t'/>",
                      "<!--\r--><a/>",
                      "<?p \r\n?><a/>",
                      "<a>\xC3\xA9\n\xC3\xA9<b/></a>",
                      "<a>\xF0\x9F\x98\x80<b/>\xF0\x9F\x98\x80<b/></a>",
                      "<a>\t<b/>\t\t<c/></a>",
                      "<a>\r\n\r\n\r\n<b\r\nc='1'\r\n\r\nd='\r\n'\r\n/></a>",
                      "<a>x\r</a\r>\r"});
    collection.Other({"\xC2\x85<a/>", "<a>\xC2\x80\xC2\x85\xC2\x9F\xC2\xA0</a>",
                      "<a>\xE2\x80\xA8\xE2\x80\xA9</a>", "<a>\xC2\x85<b/></a>",
                      "<a>\xE2\x80\xA8<b/></a>", "<a>\r\xC2\x85<b/></a>", "<a/>\xC2\x85",
                      "<a\xC2\x85/>", "<a\xE2\x80\xA8 b='1'/>", "\xE2\x80\xA8<a/>",
                      "<a b='1'\xC2\x85 c='2'/>", "\x0B<a/>", "\x0C<a/>", "<a\x0C/>", "<a/>\x0C",
                      "<a>\r", "<a>\r\n", "<a>\n\r</b>", "<a>\r</a>\r<"});
}

} // namespace

void OddDocuments::AddContent(Collection& collection)
{
    AddComments(collection);
    AddProcessingInstructions(collection);
    AddSections(collection);
    AddPlainText(collection);
    AddOtherText(collection);
    AddPlainReferences(collection);
    AddBrokenReferences(collection);
    AddBrokenReferencesElsewhere(collection);
    AddLineEnds(collection);
}
