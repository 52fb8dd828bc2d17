#include <kescorexml/DOM.h>

#include "support/TreeTesting.h"

#include <kescorexml/DOMException.h>
#include <kescorexml/PathRenames.h>

#include <functional>
#include <type_traits>

TEST(DOM, StartsWithAnEmptyDocumentElement)
{
    DOM dom(false);
    ASSERT_NE(dom.GetRoot(), nullptr);
    EXPECT_EQ(std::as_const(dom).GetRoot(), dom.GetRoot());
    EXPECT_EQ(dom.GetRoot()->GetName(), TString(u"Document"));
    EXPECT_TRUE(dom.GetRoot()->IsEmpty());
    EXPECT_TRUE(dom.GetRoot()->IsRootNode());
    EXPECT_EQ(dom.GetRoot()->GetDOMManager(), &dom);
    EXPECT_EQ(dom.GetDocumentRoot(), nullptr);
    EXPECT_EQ(std::as_const(dom).GetDocumentRoot(), nullptr);
    EXPECT_EQ(dom.GetProtectedDataSourceName(), TString());
    EXPECT_EQ(dom.GetDSValidationCancelType(), 0);
    EXPECT_TRUE(dom.GetPathRenames().GetPathMap().empty());
    EXPECT_FALSE(dom.HasErrors());
    EXPECT_FALSE(dom.HasWarnings());
}

TEST(DOM, KeepsTheFlagForExternalPaths)
{
    EXPECT_TRUE(DOM(true).GetRestrictExternalPaths());
    EXPECT_FALSE(DOM(false).GetRestrictExternalPaths());
}

TEST(DOM, MayBeDerivedFromAndDestroyedThroughItsBase)
{
    struct Derived : DOM
    {
        explicit Derived(bool& flag) : gone(flag) {}
        Derived(const Derived&) = delete;
        Derived& operator=(const Derived&) = delete;
        ~Derived() override { gone = true; }
        bool& gone;
    };
    bool gone = false;
    const std::unique_ptr<DOM> dom = std::make_unique<Derived>(gone);
    EXPECT_TRUE(std::has_virtual_destructor_v<DOM>);
    const_cast<std::unique_ptr<DOM>&>(dom).reset();
    EXPECT_TRUE(gone);
}

TEST(DOM, GetDocumentRootIsTheFirstChild)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a,b");
    EXPECT_EQ(dom.GetDocumentRoot(), &Find(dom, "a"));
    EXPECT_EQ(std::as_const(dom).GetDocumentRoot(), &Find(dom, "a"));
}

TEST(DOM, GetElementSearchesInDocumentOrder)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(x(y)),x");
    EXPECT_EQ(dom.GetElement(u"x"), &dom.GetRoot()->GetChildren()[0].GetChildren()[0]);
    EXPECT_EQ(std::as_const(dom).GetElement(u"x"), dom.GetElement(u"x"));
    EXPECT_EQ(dom.GetElement(u"Document"), dom.GetRoot());
    EXPECT_EQ(dom.GetElement(u"none"), nullptr);
    EXPECT_EQ(dom.GetElement(TString()), nullptr);
}

TEST(DOM, GetElementLooksAThousandLevelsDeep)
{
    DOM dom;
    DOMElement* element = dom.GetRoot();
    for (int level = 1; level <= 1001; ++level)
        element = element->AddNewChild(TString(u"e") + TString::number(level), nullptr);
    EXPECT_NE(dom.GetElement(u"e1000"), nullptr);
    EXPECT_EQ(dom.GetElement(u"e1001"), nullptr);
}

TEST(DOM, ComparesTreesAndNothingElse)
{
    DOM one(false);
    DOM two(true);
    AddChildren(*one.GetRoot(), "a(b)");
    AddChildren(*two.GetRoot(), "a(b)");
    AddError(Find(one, "a"), "e");
    one.SetProtectedDataSourceName(u"p");
    one.SetDSValidationCancelType(3);
    one.AddDataSourceRename(u"x", u"y");
    EXPECT_TRUE(one == two);
    EXPECT_FALSE(one != two);
    Find(two, "b").SetText(u"t");
    EXPECT_FALSE(one == two);
    EXPECT_TRUE(one != two);
}

TEST(DOM, ComparesTheRootsThemselves)
{
    const std::function<void(DOMElement&)> changes[] = {
        [](DOMElement& root) { root.SetName(u"x"); },
        [](DOMElement& root) { root.SetText(u"x"); },
        [](DOMElement& root) { root.SetAttribute(u"k", u"v"); },
        [](DOMElement& root) { root.AddNewChild(u"b"); },
    };
    for (const auto& change : changes) {
        DOM one;
        DOM two;
        one.GetRoot()->AddNewChild(u"a");
        two.GetRoot()->AddNewChild(u"a");
        EXPECT_TRUE(one == two);
        change(*two.GetRoot());
        EXPECT_FALSE(one == two);
        EXPECT_TRUE(one != two);
    }
}

TEST(DOM, ConvertsFromItsFlag)
{
    static_assert(std::is_convertible_v<bool, DOM>);
    const DOM dom = true;
    EXPECT_TRUE(dom.GetRestrictExternalPaths());
}

TEST(DOM, KeepsItsSettings)
{
    DOM dom;
    dom.SetDSValidationCancelType(-5);
    EXPECT_EQ(dom.GetDSValidationCancelType(), -5);
    dom.SetProtectedDataSourceName(u"p");
    const TString& name = dom.GetProtectedDataSourceName();
    EXPECT_EQ(name, TString(u"p"));
    dom.SetProtectedDataSourceName(u"q");
    EXPECT_EQ(name, TString(u"q")) << "the reference shows what is stored";
    PathRenames renames;
    renames.SetRename(u"a", u"b");
    dom.SetPathRenames(renames);
    EXPECT_EQ(dom.GetPathRenames().RenamePath(u"a"), TPath(u"b"));
    dom.SetPathRenames(dom.GetPathRenames());
    EXPECT_EQ(dom.GetPathRenames().RenamePath(u"a"), TPath(u"b"));
}

// DeepCopy

TEST(DOM, DeepCopyTakesTheTreeWithItsDiagnostics)
{
    DOM source;
    DOM target;
    AddChildren(*source.GetRoot(), "a(b),c");
    AddChildren(*target.GetRoot(), "old(x)");
    AddError(*source.GetRoot(), "root");
    AddError(Find(source, "b"), "b1");
    AddError(Find(source, "b"), "b2");
    AddWarning(Find(source, "c"), "wc");
    AddError(*target.GetRoot(), "gone");
    AddError(Find(target, "x"), "gone");
    AddWarning(*target.GetRoot(), "gone");
    const DOMElement* root = target.GetRoot();
    target.DeepCopy(source);
    EXPECT_EQ(target.GetRoot(), root) << "the root is never replaced";
    EXPECT_TRUE(target == source);
    EXPECT_EQ(JoinErrors(target), "root b1 b2");
    EXPECT_EQ(JoinWarnings(target), "wc");
    EXPECT_EQ(JoinErrors(source), "root b1 b2");
    EXPECT_EQ(JoinWarnings(source), "wc");
    EXPECT_TRUE(target.HasErrors(Find(target, "b")));
    EXPECT_EQ(Find(target, "b").GetDOMManager(), &target);
}

TEST(DOM, DeepCopyTakesRenamesAndSettings)
{
    DOM source(true);
    DOM target(false);
    source.AddFieldRename(FieldName(u"d", u"f"), FieldName(u"d", u"g"));
    source.AddCaptionRename(u"c1", u"c2");
    source.AddDataSourceRename(u"s1", u"s2");
    source.AddDataConnectionRename(u"n1", u"n2");
    source.AddMapSourceRename(u"m1", u"m2");
    PathRenames renames;
    renames.SetRename(u"a", u"b");
    source.SetPathRenames(renames);
    source.SetProtectedDataSourceName(u"p");
    source.SetDSValidationCancelType(4);
    target.AddDataSourceRename(u"old", u"older");
    target.AddCaptionRename(u"c1", u"other");
    target.DeepCopy(source);
    EXPECT_EQ(target.RenameField(FieldName(u"d", u"f")), FieldName(u"d", u"g"));
    EXPECT_EQ(target.GetCaptionRenameIfItExists(u"c1"), TString(u"c2"));
    EXPECT_EQ(target.RenameDataSource(u"s1"), TString(u"s2"));
    EXPECT_EQ(target.RenameDataSource(u"old"), TString(u"old"));
    EXPECT_EQ(target.RenameDataConnection(u"n1"), TString(u"n2"));
    EXPECT_EQ(target.RenameMapSource(u"m1"), TString(u"m2"));
    EXPECT_EQ(target.GetPathRenames().RenamePath(u"a"), TPath(u"b"));
    EXPECT_EQ(target.GetProtectedDataSourceName(), TString(u"p"));
    EXPECT_EQ(target.GetDSValidationCancelType(), 4);
    EXPECT_TRUE(target.GetRestrictExternalPaths());
    EXPECT_EQ(source.RenameDataSource(u"s1"), TString(u"s2"));
}

TEST(DOM, DeepCopyLeavesTheLocationOfTheRoot)
{
    DOM source;
    DOM target;
    source.GetRoot()->SetElementStartLocation(1, 2);
    source.GetRoot()->SetElementEndLocation(3, 4);
    source.GetRoot()->AddNewChild(u"a")->SetElementStartLocation(5, 6);
    target.GetRoot()->SetElementStartLocation(7, 8);
    target.GetRoot()->SetElementEndLocation(9, 10);
    target.DeepCopy(source);
    EXPECT_EQ(target.GetRoot()->GetStartLine(), 7);
    EXPECT_EQ(target.GetRoot()->GetStartColumn(), 8);
    EXPECT_EQ(target.GetRoot()->GetEndLine(), 9);
    EXPECT_EQ(target.GetRoot()->GetEndColumn(), 10);
    EXPECT_EQ(target.GetDocumentRoot()->GetStartLine(), 0);
}

namespace {

/// The map, a checksum and a directory, each of which shows in what FillIn adds later.
PathRenames MakePathRenames(const char16_t* target)
{
    PathRenames renames;
    renames.SetRename(u"plain", target);
    renames.SetCRC(u"dir/x", TPath(target) / TPath(u"x"), 7);
    return renames;
}

/// What renames that were made with MakePathRenames for "b" say, now and later.
void ExpectPathRenamesOfB(PathRenames renames)
{
    EXPECT_EQ(renames.RenamePath(u"plain"), TPath(u"b"));
    EXPECT_EQ(renames.RenamePath(u"dir"), TPath(u"b"));
    EXPECT_EQ(renames.GetPathMap().size(), 2U);
    // The checksum is known, and so is the directory, whose rename is dropped therefore.
    renames.SetCRC(u"dir/y", u"elsewhere/y", 7);
    EXPECT_EQ(renames.RenamePath(u"dir/y"), TPath(u"b/x"));
    EXPECT_EQ(renames.RenamePath(u"dir"), TPath(u"dir"));
}

} // namespace

TEST(DOM, DeepCopyReplacesAllPathRenames)
{
    DOM source;
    DOM target;
    source.SetPathRenames(MakePathRenames(u"b"));
    PathRenames old = MakePathRenames(u"old");
    old.SetRename(u"more", u"x");
    old.SetCRC(u"other/x", u"other target/x", 8);
    target.SetPathRenames(old);
    target.DeepCopy(source);
    ExpectPathRenamesOfB(target.GetPathRenames());
    ExpectPathRenamesOfB(source.GetPathRenames());
    PathRenames copied = target.GetPathRenames();
    copied.SetCRC(u"third/x", u"third target/x", 8);
    EXPECT_EQ(copied.RenamePath(u"third/x"), TPath(u"third/x")) << "the checksum 8 is forgotten";
    copied.SetCRC(u"other/y", u"new target/y", 9);
    EXPECT_EQ(copied.RenamePath(u"other"), TPath(u"new target")) << "and so is the directory";
}

TEST(DOM, DeepCopyFromItselfKeepsAllRenames)
{
    DOM dom;
    dom.AddFieldRename(FieldName(u"d", u"f"), FieldName(u"d", u"g"));
    dom.AddCaptionRename(u"c1", u"c2");
    dom.AddDataSourceRename(u"s1", u"s2");
    dom.AddDataConnectionRename(u"n1", u"n2");
    dom.AddMapSourceRename(u"m1", u"m2");
    dom.SetPathRenames(MakePathRenames(u"b"));
    dom.DeepCopy(dom);
    EXPECT_EQ(dom.RenameField(FieldName(u"d", u"f")), FieldName(u"d", u"g"));
    EXPECT_EQ(dom.GetCaptionRenameIfItExists(u"c1"), TString(u"c2"));
    EXPECT_EQ(dom.RenameDataSource(u"s1"), TString(u"s2"));
    EXPECT_EQ(dom.RenameDataConnection(u"n1"), TString(u"n2"));
    EXPECT_EQ(dom.RenameMapSource(u"m1"), TString(u"m2"));
    ExpectPathRenamesOfB(dom.GetPathRenames());
}

TEST(DOM, DeepCopyReplacesEachKindOfRename)
{
    DOM source;
    DOM target;
    target.AddFieldRename(FieldName(u"d", u"f"), FieldName(u"d", u"g"));
    target.AddCaptionRename(u"c1", u"c2");
    target.AddDataSourceRename(u"s1", u"s2");
    target.AddDataConnectionRename(u"n1", u"n2");
    target.AddMapSourceRename(u"m1", u"m2");
    target.SetProtectedDataSourceName(u"p");
    target.DeepCopy(source);
    EXPECT_EQ(target.GetCaptionRenameIfItExists(u"c1"), TString(u"c1"));
    EXPECT_EQ(target.RenameDataSource(u"s1"), TString(u"s1"));
    EXPECT_EQ(target.RenameDataConnection(u"n1"), TString(u"n1"));
    EXPECT_EQ(target.RenameMapSource(u"m1"), TString(u"m1"));
    EXPECT_EQ(target.GetProtectedDataSourceName(), TString());
    target.SetProtectedDataSourceName(u"p");
    EXPECT_EQ(target.RenameField(FieldName(u"d", u"f")), FieldName(u"d", u"f"));
}

TEST(DOM, DeepCopyFromItselfKeepsTheTreeAndEmptiesBothRegistries)
{
    DOM dom(true);
    AddChildren(*dom.GetRoot(), "a(b)");
    AddError(Find(dom, "b"), "e");
    AddWarning(Find(dom, "a"), "w");
    dom.AddDataSourceRename(u"s1", u"s2");
    dom.AddCaptionRename(u"c1", u"c2");
    dom.SetProtectedDataSourceName(u"p");
    dom.SetDSValidationCancelType(4);
    const DOMElement* b = &Find(dom, "b");
    dom.DeepCopy(dom);
    EXPECT_EQ(&Find(dom, "b"), b);
    EXPECT_FALSE(dom.HasErrors());
    EXPECT_FALSE(dom.HasWarnings());
    EXPECT_EQ(dom.RenameDataSource(u"s1"), TString(u"s2"));
    EXPECT_EQ(dom.GetCaptionRenameIfItExists(u"c1"), TString(u"c2"));
    EXPECT_EQ(dom.GetProtectedDataSourceName(), TString(u"p"));
    EXPECT_EQ(dom.GetDSValidationCancelType(), 4);
    EXPECT_TRUE(dom.GetRestrictExternalPaths());
}

TEST(DOM, DeepCopyDropsDiagnosticsOfElementsThatWereRemoved)
{
    DOM source;
    DOM target;
    AddChildren(*target.GetRoot(), "a");
    AddError(Find(target, "a"), "e");
    const auto removed = target.GetRoot()->RemoveChild(u"a");
    target.DeepCopy(source);
    EXPECT_FALSE(removed->HasErrors());
    EXPECT_EQ(removed->GetDOMManager(), &target);
}

TEST(DOM, EndsWithItsDiagnosticsAndElements)
{
    DOM other;
    {
        DOM dom;
        AddChildren(*dom.GetRoot(), "a(b),c");
        AddError(Find(dom, "b"), "e");
        AddWarning(*dom.GetRoot(), "w");
        AddChildren(*other.GetRoot(), "x");
        AddError(Find(other, "x"), "x");
    }
    EXPECT_EQ(JoinErrors(other), "x");
}

// DOMException

TEST(DOMException, HandsMessageAndRecordToItsBase)
{
    const DOMException exception(u"what", MakeInfo(7));
    const CorvinaException& base = exception;
    EXPECT_EQ(base.GetMessagesFront(), TString(u"what"));
    EXPECT_EQ(base.GetErrorInfo(), MakeInfo(7));
    EXPECT_STREQ(base.what(), "what");
}

TEST(DOMException, ClonesAndThrowsItsOwnType)
{
    const DOMException exception(u"what", MakeInfo(7));
    const DOMException copy(exception);
    const CorvinaException& base = copy;
    const std::unique_ptr<CorvinaException> clone(base.Clone());
    EXPECT_NE(dynamic_cast<DOMException*>(clone.get()), nullptr);
    EXPECT_EQ(clone->GetMessagesFront(), TString(u"what"));
    try {
        clone->Throw();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const DOMException& thrown) {
        EXPECT_NE(&thrown, clone.get());
        EXPECT_EQ(thrown.GetErrorInfo(), MakeInfo(7));
    }
}
