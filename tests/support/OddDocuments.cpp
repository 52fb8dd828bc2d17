#include "support/OddDocumentParts.h"

const std::vector<OddDocuments::Document>& OddDocuments::All()
{
    static const std::vector<Document> s_documents = [] {
        Collection collection;
        AddTags(collection);
        AddContent(collection);
        AddProlog(collection);
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
