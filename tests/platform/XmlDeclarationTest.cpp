#include <kesplatform/XmlDeclaration.h>

#include <gtest/gtest.h>

#include <utility>

TEST(XmlDeclaration, NamesTheEncodingThatStandsBetweenTheQuotes)
{
    const std::pair<std::string_view, std::string_view> declarations[] = {
        {"<?xml version='1.0' encoding='x-1'?>", "x-1"},
        {"<?xml version='1.0' encoding = \"x-1\"?>", "x-1"},
        {"<?xml\nversion='1.0'\n encoding\t=\r'x-1' standalone='no' ?>", "x-1"},
        {"<?xml version='1.0' encoding=''?>", ""},
        {"<?xml version='1.0'?><a encoding='x-1'/>", ""},
        {"<a encoding='x-1'/>", ""},
        {"<?xml version='1.0' encoding='x-1", ""},
        {"<?xml version='1.0 encoding=\"x-1\"?>", ""},
        {"<?xml\vversion='1.0' encoding='x-1'?>", ""},
        {"<?xml version='1.0'\fencoding='x-1'?>", ""},
        {"<?XML version='1.0' encoding='x-1'?>", ""},
        {" <?xml version='1.0' encoding='x-1'?>", ""},
        {"<?xml version='1.0' Encoding='x-1'?>", ""},
        {"<?xml encoding=x-1?>", ""},
        {"<?xml version='1.0' encoding=", ""},
        {"<?xml version='1.0' encoding", ""},
        {"<?xml version='1.0' standalone='yes'?>", ""},
        {"<?xml version=\"encoding='x-1'\"?>", ""},
        {"<?xml version='1.0' myencoding='x-1'?>", ""},
        {"<?xml version='1.0' encodings='x-1'?>", ""},
        {"<?xml version='1.0' standalone='encoding=\"x-1\"' encoding='x-2'?>", "x-2"},
        {"<?xml version='1.0'?>encoding='x-1'", ""},
        {"<?xml-stylesheet href='a.xsl' encoding='x-1'?>", ""},
        {"<?xml-model href='a.rng' encoding='x-1'?><a/>", ""},
        {"<?xmlencoding='x-1'?>", ""},
        {"<?xml", ""},
        {"", ""},
    };
    for (const auto& [declaration, encoding] : declarations)
        EXPECT_EQ(XmlDeclaration::FindEncoding(declaration), encoding) << declaration;
}
