#include "support/OddDocuments.h"

#include "support/Repeat.h"

#include <initializer_list>
#include <string_view>

using namespace std::string_view_literals;

namespace {

/// Gathers documents.
class Collection
{
public:
    void Plain(std::initializer_list<std::string_view> documents) { Add(documents, true); }
    void Other(std::initializer_list<std::string_view> documents) { Add(documents, false); }
    void PlainText(std::string document) { m_documents.push_back({std::move(document), true}); }
    void OtherText(std::string document) { m_documents.push_back({std::move(document), false}); }

    std::vector<OddDocuments::Document> Take() { return std::move(m_documents); }

private:
    void Add(std::initializer_list<std::string_view> documents, bool isPlain)
    {
        for (const std::string_view bytes : documents)
            m_documents.push_back({std::string(bytes), isPlain});
    }

    std::vector<OddDocuments::Document> m_documents;
};

void AddRoots(Collection& collection)
{
    collection.Plain({"<a/>", "<a />", "<a></a>", "<a></a >", "<a\n\t/>", "<a\n></a\n>", "<a/>\n",
                      "\n<a/>", " \t\r\n<a/> \t\r\n", "<a><b/><b></b><c><d/></c></a>",
                      "<a>text</a>", "<a> </a>", "<a>\n <b/>\n</a>", "<a>x<b/>y<b/>z</a>",
                      "<a>x<b>y</b></a>", "<_/>", "<a.b-c_d1/>", "<abcdefghijklmnop/>"});
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

void AddDeclarations(Collection& collection)
{
    collection.Plain({"<?xml version='1.0'?><a/>", "<?xml version=\"1.0\"?>\n<a/>",
                      "<?xml version = '1.0' ?><a/>", "<?xml\tversion\n=\r\n'1.0'\r?><a/>",
                      "<?xml version='1.0' encoding='UTF-8'?><a/>",
                      "<?xml version='1.0' encoding='utf-8'?><a>\xC3\xA9</a>",
                      "<?xml version='1.0' encoding='Utf-8' ?><a/>",
                      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><a/>",
                      "<?xml version='1.0' standalone='no'?><a/>",
                      "<?xml version='1.0' standalone='yes' ?><a/>",
                      "<?xml version='1.0' encoding='US-ASCII'?><a/>",
                      "<?xml version='1.0' encoding='us-ascii'?><a>text</a>",
                      "<?xml   version='1.0'   encoding='UTF-8'   standalone='yes'   ?>   <a/>",
                      "\xEF\xBB\xBF<a/>", "\xEF\xBB\xBF<?xml version='1.0'?><a/>",
                      "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a>\xE2\x82\xAC</a>",
                      "\xEF\xBB\xBF \n<a/>", "<?xml version='1.0'?>\r\n<!-- c -->\r\n<a/>\r\n"});
    collection.Other({"<?xml version='1.0' encoding='US-ASCII'?><a>\xC3\xA9</a>",
                      "<?xml version='1.0' encoding='ASCII'?><a/>",
                      "<?xml version='1.0' encoding='UTF8'?><a/>",
                      "<?xml version='1.0' encoding='UTF8'?><a>\xC3\xA9</a>",
                      "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>",
                      "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA9</a>",
                      "<?xml version='1.0' encoding='latin1'?><a/>",
                      "<?xml version='1.0' encoding='windows-1252'?><a>\x80</a>",
                      "<?xml version='1.0' encoding='UTF-16'?><a/>",
                      "<?xml version='1.0' encoding='UTF-16LE'?><a/>",
                      "<?xml version='1.0' encoding='UCS-4'?><a/>",
                      "<?xml version='1.0' encoding='IBM037'?><a/>",
                      "<?xml version='1.0' encoding='nonsense'?><a/>",
                      "<?xml version='1.0' encoding=''?><a/>",
                      "<?xml version='1.0' encoding='UTF-8 '?><a/>",
                      "<?xml version='1.0' encoding=' UTF-8'?><a/>",
                      "<?xml version='1.0' encoding='8UTF'?><a/>",
                      "<?xml version='1.0' encoding=UTF-8?><a/>",
                      "<?xml version='1.0' encoding='UTF-8'standalone='yes'?><a/>",
                      "<?xml version='1.0'encoding='UTF-8'?><a/>",
                      "<?xml version='1.0\"?><a/>",
                      "<?xml encoding='UTF-8'?><a/>",
                      "<?xml encoding='UTF-8' version='1.0'?><a/>",
                      "<?xml version='1.0' standalone='yes' encoding='UTF-8'?><a/>",
                      "<?xml version='1.0' standalone='maybe'?><a/>",
                      "<?xml version='1.0' standalone='YES'?><a/>",
                      "<?xml version='1.0' version='1.0'?><a/>",
                      "<?xml version='1.0' other='x'?><a/>",
                      "<?xml?><a/>",
                      "<?xml ?><a/>",
                      "<?xml version?><a/>",
                      "<?xml version='1.0'><a/>",
                      "<?xml version='1.0' ? ><a/>",
                      "<?xml version='1.0'?",
                      "<?xml version='1.0'?>",
                      "<?xml version='1.1'?><a/>",
                      "<?xml version='1.1'?><a>&#1;\xC2\x85</a>",
                      "<?xml version='1.2'?><a/>",
                      "<?xml version='2.0'?><a/>",
                      "<?xml version='1'?><a/>",
                      "<?xml version='1.'?><a/>",
                      "<?xml version=''?><a/>",
                      "<?xml version='1.00'?><a/>",
                      "<?xml version='01.0'?><a/>",
                      "<?xml version='1.0 '?><a/>",
                      "<?XML version='1.0'?><a/>",
                      "<?Xml version='1.0'?><a/>",
                      " <?xml version='1.0'?><a/>",
                      "\n<?xml version='1.0'?><a/>",
                      "<!--c--><?xml version='1.0'?><a/>",
                      "<a><?xml version='1.0'?></a>",
                      "<a/><?xml version='1.0'?>",
                      "<?xml version='1.0'?><?xml version='1.0'?><a/>",
                      "<?xml version='&#49;.0'?><a/>",
                      "\xEF\xBB\xBF\xEF\xBB\xBF<a/>",
                      "<a>\xEF\xBB\xBF</a>",
                      "\xEF\xBB<a/>",
                      "\xEF<a/>",
                      "\xEF\xBB\xBF",
                      "\xEF\xBB\xBF<?xml version='1.0' "
                      "encoding='ISO-8859-1'?><a>\xC3\xA9</a>"});
}

void AddOtherEncodings(Collection& collection)
{
    collection.Other(
        {"\xFE\xFF\0<\0a\0>\0\xE9\0<\0/\0a\0>"sv, "\xFF\xFE<\0a\0>\0\xE9\0<\0/\0a\0>\0"sv,
         "\xFF\xFE<\0a\0/\0>"sv, "<\0a\0/\0>\0"sv, "\0<\0a\0/\0>"sv,
         "<\0?\0x\0m\0l\0 \0v\0e\0r\0s\0i\0o\0n\0=\0'\0"
         "1\0.\0"
         "0\0'\0?\0>\0<\0a\0/\0>\0"sv,
         "\0\0\xFE\xFF\0\0\0<\0\0\0a\0\0\0/\0\0\0>"sv, "\xFF\xFE\0\0<\0\0\0a\0\0\0/\0\0\0>\0\0\0"sv,
         "\xFF\xFE"sv, "\xFE\xFF"sv, "\x4C\x6F\xA7\x94\x93"sv, "+ADw-a/+AD4-"});
}

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

void AddText(Collection& collection)
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
                      "<a>\xC2\x80\xC2\x85\xC2\x9F\xC2\xA0</a>",
                      "<a>\xE2\x80\xA8\xE2\x80\xA9</a>",
                      "<a>\xED\x9F\xBF\xEE\x80\x80</a>",
                      "<a>\xEF\xBF\xBD</a>",
                      "<a>\xF0\x90\x80\x80\xF4\x8F\xBF\xBF</a>",
                      "<a>\xF0\x9F\xBF\xBE</a>",
                      "<a>\xDF\xBF\xE0\xA0\x80</a>",
                      "<a>\xEF\xBB\xBEx</a>",
                      "<a>x\xEF\xBB\xBF</a>"});
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

void AddReferences(Collection& collection)
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
                      "<a>&#xD83D;&#xDE00;</a>",
                      "<a b='&'/>",
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
                      "<a>\xC2\x85<b/></a>",
                      "<a>\xE2\x80\xA8<b/></a>",
                      "<a>\r\xC2\x85<b/></a>",
                      "<a>\xC3\xA9\n\xC3\xA9<b/></a>",
                      "<a>\xF0\x9F\x98\x80<b/>\xF0\x9F\x98\x80<b/></a>",
                      "<a>\t<b/>\t\t<c/></a>",
                      "<a>\r\n\r\n\r\n<b\r\nc='1'\r\n\r\nd='\r\n'\r\n/></a>",
                      "<a>x\r</a\r>\r"});
    collection.Other({"\xC2\x85<a/>", "<a/>\xC2\x85", "<a\xC2\x85/>", "<a\xE2\x80\xA8 b='1'/>",
                      "\xE2\x80\xA8<a/>", "<a b='1'\xC2\x85 c='2'/>", "\x0B<a/>", "\x0C<a/>",
                      "<a\x0C/>", "<a/>\x0C", "<a>\r", "<a>\r\n", "<a>\n\r</b>", "<a>\r</a>\r<"});
}

void AddNames(Collection& collection)
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

void AddColons(Collection& collection)
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

void AddAttributes(Collection& collection)
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
                      "<a b='\x7F'/>",
                      "<a b='\xC2\x85\xE2\x80\xA8'/>"});
    collection.Other({"<a b/>",
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

void AddDocumentTypes(Collection& collection)
{
    collection.Plain(
        {"<!DOCTYPE a><a/>",
         "<!DOCTYPE a ><a/>",
         "<!DOCTYPE\na\n><a/>",
         "<!DOCTYPE b><a/>",
         "<!DOCTYPE a SYSTEM 'a.dtd'><a/>",
         "<!DOCTYPE a SYSTEM \"a.dtd\" ><a>x</a>",
         "<!DOCTYPE a PUBLIC 'p' 's'><a/>",
         "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
         "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\"><html/>",
         "<?xml version='1.0'?><!DOCTYPE a><a/>",
         "<!--c--><!DOCTYPE a><?p?><a/>",
         "<!DOCTYPE a []><a/>",
         "<!DOCTYPE a [ \n ]><a/>",
         "<!DOCTYPE a []\n><a/>",
         "<!DOCTYPE a [<!ELEMENT a EMPTY>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a ANY>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a (#PCDATA)>]><a>x</a>",
         "<!DOCTYPE a [<!ELEMENT a (b,c?)*><!ELEMENT b EMPTY>]><a><b/></a>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA #IMPLIED>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'd'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'd'>]><a b='1'/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA #FIXED 'd'>]><a><a/><b/></a>",
         "<!DOCTYPE a [<!ATTLIST a b NMTOKENS #IMPLIED>]><a b='  x   y  '/>",
         "<!DOCTYPE a [<!ATTLIST a b ID #IMPLIED c IDREF #IMPLIED>]><a b=' x ' c=' x'/>",
         "<!DOCTYPE a [<!ATTLIST a b (x|y) 'x'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'one' b CDATA 'two'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'one'><!ATTLIST a b CDATA 'two' c CDATA "
         "'three'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST b c CDATA 'd'>]><a><b/><b c='1'/></a>"});
    collection.Other({"<!DOCTYPE><a/>",
                      "<!DOCTYPE ><a/>",
                      "<!DOCTYPEa><a/>",
                      "<!doctype a><a/>",
                      "<!DOCTYPE a",
                      "<!DOCTYPE a [",
                      "<!DOCTYPE a []",
                      "<!DOCTYPE a [<!ELEMENT a EMPTY>",
                      "<!DOCTYPE a SYSTEM><a/>",
                      "<!DOCTYPE a SYSTEM s><a/>",
                      "<!DOCTYPE a SYSTEM's'><a/>",
                      "<!DOCTYPE a PUBLIC 'p'><a/>",
                      "<!DOCTYPE a PUBLIC 'p''s'><a/>",
                      "<!DOCTYPE a PUBLIC '{' 's'><a/>",
                      "<!DOCTYPE a SYSTEM 's' x><a/>",
                      "<!DOCTYPE a SYSTEM 's' []><a/>",
                      "<a/><!DOCTYPE a>",
                      "<a><!DOCTYPE a></a>",
                      "<!DOCTYPE a><!DOCTYPE a><a/>",
                      "<!DOCTYPE a>",
                      "<!DOCTYPE 1><a/>",
                      "<!DOCTYPE p:a><p:a/>",
                      "<!DOCTYPE :a><a/>",
                      "<!DOCTYPE \xC3\xA9><\xC3\xA9/>",
                      "<!DOCTYPE a SYSTEM 's#f'><a/>",
                      "<!DOCTYPE a SYSTEM 's\x01'><a/>",
                      "<!DOCTYPE a SYSTEM 'a.dtd'><a>&e;</a>",
                      "<!DOCTYPE a><a>&e;</a>",
                      "<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>x</a>",
                      "<!DOCTYPE a [x]><a/>",
                      "<!DOCTYPE a [<!--c--><?p?> <!ELEMENT a ANY>]><a/>",
                      "<!DOCTYPE a [<!-- ]> ' \" <!ENTITY --><?p ]> ?>]><a/>",
                      "<?xml version='1.0' standalone='yes'?><!DOCTYPE a [<!ATTLIST a b CDATA "
                      "'d'>]><a/>"});
}

void AddDeclaredThings(Collection& collection)
{
    collection.Other(
        {"<!DOCTYPE a [<!ENTITY e 'x'>]><a/>",
         "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>",
         "<!DOCTYPE a [<!ENTITY e 'x'>]><a b='&e;'/>",
         "<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a/>",
         "<!DOCTYPE a [<!ENTITY amp '&#38;#38;'>]><a>&amp;</a>",
         "<!DOCTYPE a [<!ENTITY lt 'x'>]><a>&lt;</a>",
         "<!DOCTYPE a [<!ENTITY % p 'x'>]><a/>",
         "<!DOCTYPE a [<!ENTITY % p ''>%p;]><a/>",
         "<!DOCTYPE a [%p;]><a/>",
         "<!DOCTYPE a [<!ENTITY % p '<!ATTLIST a b CDATA \"d\">'>%p;]><a/>",
         "<!DOCTYPE a [<!ENTITY % p SYSTEM 'f'>%p;]><a/>",
         "<!DOCTYPE a [<!NOTATION n SYSTEM 'x'>]><a/>",
         "<!DOCTYPE a [<!NOTATION n PUBLIC 'x'>]><a/>",
         "<!DOCTYPE a [<!NOTATION n SYSTEM 'x'><!ATTLIST a b NOTATION (n) #IMPLIED>]><a b='n'/>",
         "<!DOCTYPE a [<!ENTITY e SYSTEM 'x' NDATA n>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a EMPTY><!ELEMENT a ANY>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a (b>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a (b|c,d)>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a (#PCDATA|b)>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a ()>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a (b)>]>\n<a>\n <b/>\n</a>",
         "<!DOCTYPE a [<!ELEMENT a (#PCDATA|b)*>]><a> <b/> </a>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a>]><a/>",
         "<!DOCTYPE a [<!ATTLIST>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b NONSENSE #IMPLIED>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA #NONSENSE>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b () 'x'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b (x|x) 'x'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b (x|y) 'z'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA #REQUIRED>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA #FIXED 'd'>]><a b='e'/>",
         "<!DOCTYPE a [<!ATTLIST a b NMTOKEN 'x y'>]><a b=' x y '/>",
         "<!DOCTYPE a [<!ATTLIST a b ID 'x'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA '<'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA '&lt;&amp;&#65;&#9;\n\t'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA '&e;'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b NMTOKENS '  x   y  '>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b NMTOKENS #IMPLIED>]><a b='&#9;x&#32;&#10;y'/>",
         "<!DOCTYPE a [<!ATTLIST a b (x|y) #IMPLIED>]><a b='\n x\t'/>",
         "<!DOCTYPE a [<!ATTLIST a b ENTITY #IMPLIED c ENTITIES #IMPLIED>]><a b=' x ' c=' x  y '/>",
         "<!DOCTYPE a [<!ATTLIST a b IDREFS #IMPLIED>]><a b=' x  y '/>",
         "<!DOCTYPE a [<!ATTLIST a xml:space (default|preserve) 'preserve'>]><a> <b/> </a>",
         "<!DOCTYPE a [<!ATTLIST a xmlns CDATA 'u' xmlns:p CDATA 'v'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a IllegalColon:b CDATA 'd'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'd' c CDATA #IMPLIED e CDATA 'f'>]><a c='1' e='2'/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'd' e CDATA 'f'>]><a x='1' e='2' y='3'><a/></a>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA'd'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA #IMPLIED"
         "c CDATA 'd'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA '\xC3\xA9\xF0\x9F\x98\x80'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'd\r\ne\rf'>]><a/>",
         "<!DOCTYPE a [<![IGNORE[x]]>]><a/>",
         "<!DOCTYPE a [<![INCLUDE[]]>]><a/>",
         "<!DOCTYPE a [<!ATTLIST \xC3\xA9 b CDATA 'd'>]><a><\xC3\xA9/></a>",
         "<!DOCTYPE a SYSTEM 's' [<!ATTLIST a b CDATA 'd'>]><a/>",
         "<!DOCTYPE a [<!ELEMENT a (b)>]><a> <b> </b> x </a>",
         "<!DOCTYPE a [ <!ELEMENT b (c)> <!ATTLIST b d NMTOKEN 'x' > ]> <a> <b> <c/> </b> </a>"});
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

const std::vector<OddDocuments::Document>& OddDocuments::All()
{
    static const std::vector<Document> s_documents = [] {
        Collection collection;
        AddRoots(collection);
        AddDeclarations(collection);
        AddOtherEncodings(collection);
        AddComments(collection);
        AddProcessingInstructions(collection);
        AddSections(collection);
        AddText(collection);
        AddReferences(collection);
        AddLineEnds(collection);
        AddNames(collection);
        AddColons(collection);
        AddAttributes(collection);
        AddDocumentTypes(collection);
        AddDeclaredThings(collection);
        AddLargerOnes(collection);
        return collection.Take();
    }();
    return s_documents;
}

const std::vector<std::string>& OddDocuments::Small()
{
    static const std::vector<std::string> s_documents = {
        "<a/>",
        "<a></a>",
        "<a b='1' c=\"2\">text</a>",
        "<a>x<b/>y<b c='1'/>z</a>",
        "<a>\n  <b>x</b>\n  <b>y</b>\n</a>\n",
        "<?xml version='1.0'?><a/>",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>",
        "<?xml version='1.0' encoding='US-ASCII' standalone='yes' ?><a>x</a>",
        "\xEF\xBB\xBF<?xml version='1.0'?><a>\xC3\xA9</a>",
        "<!-- comment --><a><!--x--></a><!---->",
        "<a>x<!-- a-b -->y</a>",
        "<?p data?><a>x<?q?>y</a><?r ?\?>",
        "<a><![CDATA[text]]></a>",
        "<a>x<![CDATA[]]]]>y]]<![CDATA[>]]></a>",
        "<a>&amp;&lt;&gt;&quot;&apos;</a>",
        "<a>&#65;&#x41;&#x1F600;</a>",
        "<a b='&amp;&#9;&#x20AC;'>&#13;&#10;</a>",
        "<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</a>",
        "<a b='\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80'/>",
        "<\xC3\xA9 \xE4\xB8\x80='1'>x</\xC3\xA9>",
        "<p:a xmlns:p='u' p:b='1'></p:a>",
        "<a :b='1' c=':d'/>",
        "<r><a :b='1'/>\n :c='2'<!-- :d='3' --></r>",
        "<a IllegalColon:b='1' xmlns:IllegalColon='u'/>",
        "<a b = '1'\n\tc='2'\r\n/>",
        "<a b='\t x\r\ny '>\r\n</a\n>",
        "<a>\r\n<b/>\r<c/>\n\r</a>\r",
        "<a>]]&gt; ] ]] ></a>",
        "<!DOCTYPE a><a/>",
        "<!DOCTYPE a SYSTEM \"a.dtd\"><a>x</a>",
        "<!DOCTYPE a PUBLIC 'p' 's'>\n<a/>",
        "<!DOCTYPE a [<!ELEMENT a (#PCDATA|b)*>]><a>x<b/></a>",
        "<!DOCTYPE a [<!ELEMENT a (b,c?)+>\n]>\n<a> <b/> </a>",
        "<!DOCTYPE a [<!ATTLIST a b CDATA 'd'>]><a><a b='1'/></a>",
        "<!DOCTYPE a [<!ATTLIST a b NMTOKENS #IMPLIED c (x|y) 'y'>]><a b='  x   y '/>",
        "<!DOCTYPE a [<!ATTLIST a b CDATA #FIXED 'd'>\n<!ELEMENT a EMPTY>]><a/>",
        "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>",
        "<?xml version='1.1'?><a>&#1;\xC2\x85</a>",
        "<a xml:space='preserve'>  <b>  </b>  </a>",
        "<aaaaaaaaaaaaaaaa bbbbbbbbbbbbbbbb='cccccccccccccccccccccccccccccccc'/>",
        "<a>\xC2\x85\xE2\x80\xA8\xED\x9F\xBF\xEF\xBF\xBD\xF4\x8F\xBF\xBF</a>",
        "<a><b><c><d>x</d></c></b></a>",
        "<a b='1' b2='2' b3='3' b4='4' b5='5' b6='6' b7='7' b8='8'/>",
    };
    return s_documents;
}
