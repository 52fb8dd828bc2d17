#include "support/OddDocumentParts.h"

#include <string_view>

using namespace std::string_view_literals;
using OddDocuments::Collection;

namespace {

void AddPlainDeclarations(Collection& collection)
{
    collection.Plain({"<?xml version='1.0'?><a/>", "<?xml version=\"1.0\"?>\n<a/>",
                      "<?xml version = '1.0' ?><a/>", "<?xml version='1.0' encoding='UTF-8'?><a/>",
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
}

void AddOtherEncodingNames(Collection& collection)
{
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
                      "<?xml version='1.0\"?><a/>"});
}

void AddBrokenDeclarations(Collection& collection)
{
    collection.Other({"<?xml encoding='UTF-8'?><a/>",
                      "<?xml encoding='UTF-8' version='1.0'?><a/>",
                      "<?xml version='1.0' standalone='yes' encoding='UTF-8'?><a/>",
                      "<?xml version='1.0' standalone='maybe'?><a/>",
                      "<?xml version='1.0' standalone='YES'?><a/>",
                      "<?xml version='1.0' version='1.0'?><a/>",
                      "<?xml version='1.0' other='x'?><a/>",
                      "<?xml?><a/>",
                      "<?xml ?><a/>",
                      "<?xml version?><a/>",
                      "<?xml\tversion\n=\r\n'1.0'\r?><a/>",
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

void AddPlainDocumentTypes(Collection& collection)
{
    collection.Plain(
        {"<!DOCTYPE a><a/>",
         "<!DOCTYPE a ><a/>",
         "<!DOCTYPE\na\n><a/>",
         "<!DOCTYPE b><a/>",
         "<!DOCTYPE a SYSTEM 'a.dtd'><a/>",
         "<!DOCTYPE a SYSTEM \"a.dtd\" ><a>x</a>",
         "<!DOCTYPE a PUBLIC 'p' 's'><a/>",
         "<!DOCTYPE a PUBLIC 'azAZ09 -()+,./:=?;!*#@$_%' 's'><a/>",
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
         "<!DOCTYPE a [<!ELEMENT a (#PCDATA)*>]><a>x</a>",
         "<!DOCTYPE a [<!ELEMENT a (#PCDATA|b)*><!ELEMENT b (c|d)+>]><a>x</a>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA #IMPLIED>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA #REQUIRED>]><a b='1'/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'd'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'd'>]><a b='1'/>",
         "<!DOCTYPE a [<!ATTLIST a b CDATA #FIXED 'd'>]><a><a/><b/></a>",
         "<!DOCTYPE a [<!ATTLIST a b NMTOKENS #IMPLIED>]><a b='  x   y  '/>",
         "<!DOCTYPE a [<!ATTLIST a b ID #IMPLIED c IDREF #IMPLIED>]><a b=' x ' c=' x'/>",
         "<!DOCTYPE a [<!ATTLIST a b (x|y) 'x'>]><a/>",
         "<!DOCTYPE a [<!ATTLIST b c CDATA 'd'>]><a><b/><b c='1'/></a>"});
}

void AddOtherDocumentTypes(Collection& collection)
{
    collection.Other({"<!DOCTYPE><a/>",
                      "<!DOCTYPE a [<!ATTLIST a b CDATA 'one' b CDATA 'two'>]><a/>",
                      "<!DOCTYPE a [<!ATTLIST a b CDATA 'one'><!ATTLIST a b CDATA 'two' c CDATA "
                      "'three'>]><a/>",
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
         "<!DOCTYPE a [<!ELEMENT a (#PCDATA|b)*>]><a> <b/> </a>"});
}

void AddDeclaredAttributes(Collection& collection)
{
    collection.Other(
        {"<!DOCTYPE a [<!ATTLIST a b CDATA>]><a/>",
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

} // namespace

void OddDocuments::AddProlog(Collection& collection)
{
    AddPlainDeclarations(collection);
    AddOtherEncodingNames(collection);
    AddBrokenDeclarations(collection);
    AddOtherEncodings(collection);
    AddPlainDocumentTypes(collection);
    AddOtherDocumentTypes(collection);
    AddDeclaredThings(collection);
    AddDeclaredAttributes(collection);
}
