#include <kescorexml/DOM.h>

#include "support/TreeTesting.h"

#include <kescorexml/DOMElement.h>

#include <functional>

namespace {

FieldName Field(const char16_t* source, const char16_t* name)
{
    return {source, name};
}

} // namespace

TEST(DOMRenames, NamesThatWereNotRenamedComeBack)
{
    const DOM dom;
    EXPECT_EQ(dom.RenameDataSource(u"x"), TString(u"x"));
    EXPECT_EQ(dom.RenameDataConnection(u"x"), TString(u"x"));
    EXPECT_EQ(dom.RenameMapSource(u"x"), TString(u"x"));
    EXPECT_EQ(dom.GetCaptionRenameIfItExists(u"x"), TString(u"x"));
    EXPECT_EQ(dom.UnRenameDataSource(u"x"), TString(u"x"));
    EXPECT_EQ(dom.RenameField(Field(u"d", u"f")), Field(u"d", u"f"));
}

TEST(DOMRenames, EachKindHasItsOwnMap)
{
    DOM dom;
    dom.AddDataSourceRename(u"x", u"source");
    dom.AddDataConnectionRename(u"x", u"connection");
    dom.AddMapSourceRename(u"x", u"map");
    dom.AddCaptionRename(u"x", u"caption");
    dom.AddFieldRename(Field(u"", u"x"), Field(u"", u"field"));
    dom.SetProtectedDataSourceName(u"p");
    EXPECT_EQ(dom.RenameDataSource(u"x"), TString(u"source"));
    EXPECT_EQ(dom.RenameDataConnection(u"x"), TString(u"connection"));
    EXPECT_EQ(dom.RenameMapSource(u"x"), TString(u"map"));
    EXPECT_EQ(dom.GetCaptionRenameIfItExists(u"x"), TString(u"caption"));
    EXPECT_EQ(dom.RenameField(Field(u"", u"x")), Field(u"", u"field"));
}

TEST(DOMRenames, AllButCaptionsMayBeRenamedAgain)
{
    DOM dom;
    for (const char16_t* target : {u"first", u"second"}) {
        dom.AddDataSourceRename(u"x", target);
        dom.AddDataConnectionRename(u"x", target);
        dom.AddMapSourceRename(u"x", target);
        dom.AddFieldRename(Field(u"d", u"x"), Field(u"d", target));
    }
    EXPECT_EQ(dom.RenameDataSource(u"x"), TString(u"second"));
    EXPECT_EQ(dom.RenameDataConnection(u"x"), TString(u"second"));
    EXPECT_EQ(dom.RenameMapSource(u"x"), TString(u"second"));
    EXPECT_EQ(dom.RenameField(Field(u"d", u"x")), Field(u"d", u"second"));
}

TEST(DOMRenames, ACaptionIsRenamedOnlyOnce)
{
    DOM dom;
    dom.AddCaptionRename(u"x", u"y");
    const auto assertion = CatchAssertion([&] { dom.AddCaptionRename(u"x", u"z"); });
    ASSERT_TRUE(assertion.has_value());
    EXPECT_EQ(assertion->GetText(),
              TString(u"m_captionRenames.find(oldCaption) == m_captionRenames.end()"));
    EXPECT_EQ(assertion->GetFile(), TString(u"modules/platform/kescorexml/main/parser/DOM"));
    EXPECT_GT(assertion->GetLine(), 0);
    EXPECT_EQ(assertion->GetErrorInfo().GetError().GetIdentifier(),
              TString(u"LogicException_LogicAssert_0xB37C21E5"));
    EXPECT_EQ(dom.GetCaptionRenameIfItExists(u"x"), TString(u"y"));
    EXPECT_TRUE(CatchAssertion([&] { dom.AddCaptionRename(u"x", u"y"); }).has_value())
        << "not even to the same";
    dom.AddCaptionRename(u"y", u"z");
    EXPECT_EQ(dom.GetCaptionRenameIfItExists(u"x"), TString(u"y")) << "one step at a time";
}

TEST(DOMRenames, UnRenameGivesTheFirstOldNameInAscendingOrder)
{
    DOM dom;
    dom.AddDataSourceRename(u"c", u"new");
    dom.AddDataSourceRename(u"b", u"new");
    dom.AddDataSourceRename(u"a", u"other");
    EXPECT_EQ(dom.UnRenameDataSource(u"new"), TString(u"b"));
    EXPECT_EQ(dom.UnRenameDataSource(u"c"), TString(u"c")) << "an old name is no target";
}

TEST(DOMRenames, AnEmptyFieldStaysEmpty)
{
    DOM dom;
    dom.SetProtectedDataSourceName(u"p");
    dom.AddFieldRename(FieldName(), Field(u"d", u"f"));
    dom.AddDataSourceRename(u"", u"d");
    EXPECT_TRUE(dom.RenameField(FieldName()).IsEmpty());
}

TEST(DOMRenames, FieldsOfTheProtectedDataSourceStay)
{
    DOM dom;
    dom.AddDataSourceRename(u"d", u"e");
    dom.AddFieldRename(Field(u"d", u"f"), Field(u"d", u"g"));
    dom.AddFieldRename(Field(u"e", u"f"), Field(u"e", u"g"));
    dom.SetProtectedDataSourceName(u"d");
    EXPECT_EQ(dom.RenameField(Field(u"d", u"f")), Field(u"d", u"f"));
    // What is protected is the source before, not after its rename.
    dom.SetProtectedDataSourceName(u"e");
    EXPECT_EQ(dom.RenameField(Field(u"d", u"f")), Field(u"e", u"g"));
}

TEST(DOMRenames, LocalNamesAreProtectedAsLongAsNoDataSourceIs)
{
    DOM dom;
    dom.AddFieldRename(Field(u"", u"f"), Field(u"", u"g"));
    EXPECT_EQ(dom.RenameField(Field(u"", u"f")), Field(u"", u"f"));
    dom.SetProtectedDataSourceName(u"p");
    EXPECT_EQ(dom.RenameField(Field(u"", u"f")), Field(u"", u"g"));
}

TEST(DOMRenames, TheDataSourceIsRenamedBeforeTheField)
{
    DOM dom;
    dom.AddDataSourceRename(u"D", u"E");
    dom.AddFieldRename(Field(u"E", u"f"), Field(u"E", u"g"));
    dom.AddFieldRename(Field(u"D", u"f"), Field(u"D", u"not used"));
    EXPECT_EQ(dom.RenameField(Field(u"D", u"f")), Field(u"E", u"g"));
    EXPECT_EQ(dom.RenameField(Field(u"D", u"other")), Field(u"E", u"other"));
    EXPECT_EQ(dom.RenameField(Field(u"E", u"f")), Field(u"E", u"g"));
}

// Accessors of elements

TEST(DOMRenames, ADetachedElementGivesNamesBack)
{
    DOMElement::FieldNameCache cache;
    DOMElement element(TString(u"a"));
    element.SetAttribute(u"k", u"d.f");
    element.SetText(u"d.t");
    EXPECT_EQ(element.RenameField(Field(u"d", u"f")), Field(u"d", u"f"));
    EXPECT_EQ(element.RenameDataSource(u"x"), TString(u"x"));
    EXPECT_EQ(element.RenameDataConnection(u"x"), TString(u"x"));
    EXPECT_EQ(element.RenameMapSource(u"x"), TString(u"x"));
    EXPECT_EQ(element.GetFieldName(u"k"), Field(u"d", u"f"));
    EXPECT_EQ(element.GetTextAsFieldName(), Field(u"d", u"t"));
    EXPECT_EQ(element.GetFieldName(u"k", cache), Field(u"d", u"f"));
    EXPECT_EQ(element.GetTextAsFieldName(cache), Field(u"d", u"t"));
    EXPECT_EQ(cache.size(), 2U);
    EXPECT_TRUE(element.GetFieldName(u"absent").IsEmpty());
}

TEST(DOMRenames, AnAttachedElementAsksItsDocument)
{
    DOM dom;
    DOMElement* element = dom.GetRoot()->AddNewChild(u"a");
    element->SetAttribute(u"k", u"d.f");
    element->SetAttribute(u"caption", u"old");
    element->SetText(u"d.f");
    element->AddFieldRename(Field(u"e", u"f"), Field(u"e", u"g"));
    element->AddCaptionRename(u"old", u"new");
    dom.AddDataSourceRename(u"d", u"e");
    dom.AddDataConnectionRename(u"c", u"c2");
    dom.AddMapSourceRename(u"m", u"m2");
    EXPECT_EQ(element->RenameField(Field(u"d", u"f")), Field(u"e", u"g"));
    EXPECT_EQ(element->RenameDataSource(u"d"), TString(u"e"));
    EXPECT_EQ(element->RenameDataConnection(u"c"), TString(u"c2"));
    EXPECT_EQ(element->RenameMapSource(u"m"), TString(u"m2"));
    EXPECT_EQ(element->GetFieldName(u"k"), Field(u"e", u"g"));
    EXPECT_EQ(element->GetTextAsFieldName(), Field(u"e", u"g"));
    EXPECT_EQ(element->GetCaptionRenameIfItExists(u"caption"), TString(u"new"));
    EXPECT_EQ(element->GetCaptionRenameIfItExists(u"absent"), TString());
    EXPECT_EQ(dom.RenameField(Field(u"e", u"f")), Field(u"e", u"g"));
}

TEST(DOMRenames, AnAbsentCaptionIsLookedUpAsTheEmptyOne)
{
    DOM dom;
    dom.AddCaptionRename(TString(), u"none");
    EXPECT_EQ(dom.GetRoot()->GetCaptionRenameIfItExists(u"absent"), TString(u"none"));
}

TEST(DOMRenames, LocalNamesAreRenamedUnderTheirDataSource)
{
    DOM dom;
    DOMElement* element = dom.GetRoot()->AddNewChild(u"a");
    element->SetAttribute(u"k", u"f");
    EXPECT_EQ(element->GetLocalFieldName(u"k", u"d"), Field(u"", u"f"));
    dom.AddDataSourceRename(u"d", u"e");
    dom.AddFieldRename(Field(u"e", u"f"), Field(u"e", u"g"));
    EXPECT_EQ(element->GetLocalFieldName(u"k", u"d"), Field(u"", u"g"));
    EXPECT_EQ(element->GetLocalFieldName(u"k", u"x"), Field(u"", u"f"));
    DOMElement detached(TString(u"b"));
    detached.SetAttribute(u"k", u"f");
    EXPECT_EQ(detached.GetLocalFieldName(u"k", u"d"), Field(u"", u"f"));
}

TEST(DOMRenames, TextsThatAreParsedWithACacheAreRenamedToo)
{
    DOM dom;
    dom.AddDataSourceRename(u"d", u"e");
    dom.AddFieldRename(Field(u"e", u"f"), Field(u"e", u"g"));
    DOMElement* element = dom.GetRoot()->AddNewChild(u"a");
    element->SetText(u"d.f");
    element->SetAttribute(u"k", u"d.f");
    DOMElement::FieldNameCache cache;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(element->GetTextAsFieldName(cache), Field(u"e", u"g"));
        EXPECT_EQ(element->GetFieldName(u"k", cache), Field(u"e", u"g"));
    }
    EXPECT_EQ(element->GetTextAsFieldName(), Field(u"e", u"g"));
}

TEST(DOMRenames, LocalNamesKeepTheirDots)
{
    // As a global name this would be the field f of the data source x.
    DOM dom;
    DOMElement* element = dom.GetRoot()->AddNewChild(u"a");
    DOMElement detached(u"b");
    element->SetAttribute(u"k", u"x.f");
    detached.SetAttribute(u"k", u"x.f");
    const FieldName local = FieldName::ParseLocal(u"x.f");
    ASSERT_NE(local, FieldName::ParseGlobal(u"x.f"));
    for (DOMElement* each : {element, &detached}) {
        DOMElement::FieldNameCache cache;
        EXPECT_EQ(each->GetLocalFieldName(u"k", u"d"), local);
        EXPECT_EQ(each->GetLocalFieldName(u"k", u"d", cache), local);
        EXPECT_EQ(each->GetLocalFieldName(u"k", u"d", cache), local) << "from the cache";
        EXPECT_EQ(each->GetLocalFieldName(u"k", u"d").GetRootValue(), TString());
    }
    dom.AddFieldRename(MakeGlobalName(u"d", FieldName(local)), Field(u"d", u"g"));
    dom.AddFieldRename(Field(u"x", u"f"), Field(u"x", u"wrong"));
    DOMElement::FieldNameCache cache;
    EXPECT_EQ(element->GetLocalFieldName(u"k", u"d"), Field(u"", u"g"));
    EXPECT_EQ(element->GetLocalFieldName(u"k", u"d", cache), Field(u"", u"g"));
}

TEST(DOMRenames, ParseCachesAreUsedAndFilled)
{
    DOM dom;
    dom.AddFieldRename(Field(u"d", u"f"), Field(u"d", u"g"));
    DOMElement* element = dom.GetRoot()->AddNewChild(u"a");
    element->SetAttribute(u"k", u"d.f");
    element->SetAttribute(u"local", u"f");
    element->SetText(u"d.f");

    DOMElement::FieldNameCache cache;
    EXPECT_EQ(element->GetFieldName(u"k", cache), Field(u"d", u"g"));
    ASSERT_EQ(cache.count(u"d.f"), 1U);
    EXPECT_EQ(cache.at(u"d.f"), QualifiedName(u"d", u"f")) << "the parsed name, not the renamed";
    cache[u"d.f"] = QualifiedName(u"cached", u"name");
    EXPECT_EQ(element->GetFieldName(u"k", cache), Field(u"cached", u"name"));
    EXPECT_EQ(element->GetTextAsFieldName(cache), Field(u"cached", u"name"));

    DOMElement::FieldNameCache local;
    EXPECT_EQ(element->GetLocalFieldName(u"local", u"d", local), Field(u"", u"g"));
    EXPECT_EQ(local.count(u"f"), 1U);
    local[u"f"] = QualifiedName(u"", u"cached");
    EXPECT_EQ(element->GetLocalFieldName(u"local", u"d", local), Field(u"", u"cached"));
}
