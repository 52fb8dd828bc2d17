#include <kescorexml/PathRenames.h>

#include <gtest/gtest.h>

namespace {

std::string Text(const TPath& path)
{
    return path.GetString().toStdString();
}

} // namespace

TEST(PathRenames, StartsEmpty)
{
    const PathRenames renames;
    EXPECT_TRUE(renames.GetPathMap().empty());
    EXPECT_EQ(Text(renames.RenamePath(u"a/x")), "a/x");
    EXPECT_TRUE(renames.ReverseRenamePath(u"a/x").IsEmpty());
    EXPECT_TRUE(renames.RenamePathAbsolute(u"a/x", u"a").IsEmpty());
    EXPECT_FALSE(renames.IsValidPath(u"a/x"));
    EXPECT_FALSE(renames.IsValidPath(TPath()));
}

TEST(PathRenames, SetRenameInsertsOrOverwrites)
{
    PathRenames renames;
    renames.SetRename(u"a", u"b");
    EXPECT_EQ(Text(renames.RenamePath(u"a")), "b");
    renames.SetRename(u"a", u"c");
    EXPECT_EQ(Text(renames.RenamePath(u"a")), "c");
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", u"c"}}));
    EXPECT_EQ(Text(renames.RenamePath(u"A")), "A");
}

TEST(PathRenames, ReverseGivesTheFirstOldPathOrNone)
{
    PathRenames renames;
    renames.SetRename(u"c", u"new");
    renames.SetRename(u"b", u"new");
    renames.SetRename(u"a", u"other");
    EXPECT_EQ(Text(renames.ReverseRenamePath(u"new")), "b");
    EXPECT_TRUE(renames.ReverseRenamePath(u"unknown").IsEmpty());
    EXPECT_TRUE(renames.ReverseRenamePath(u"c").IsEmpty());
}

TEST(PathRenames, AbsoluteJoinsTheBaseWithEachOldPath)
{
    PathRenames renames;
    renames.SetRename(u"x", u"y");
    EXPECT_EQ(Text(renames.RenamePathAbsolute(u"base/x", u"base")), "y");
    EXPECT_TRUE(renames.RenamePathAbsolute(u"base/z", u"base").IsEmpty());
    EXPECT_TRUE(renames.RenamePathAbsolute(u"x", u"base").IsEmpty());
}

TEST(PathRenames, AbsoluteIsEmptyWhenThePathWouldNotChange)
{
    PathRenames renames;
    renames.SetRename(u"x", u"base/x");
    EXPECT_TRUE(renames.RenamePathAbsolute(u"base/x", u"base").IsEmpty());
    // The first key that matches decides, whatever a later one would say.
    renames.SetRename(u"base/x", u"elsewhere");
    EXPECT_EQ(Text(renames.RenamePathAbsolute(u"base/x", TPath())), "elsewhere");
    PathRenames twice;
    twice.SetRename(u"/base/x", u"/base/x");
    twice.SetRename(u"x", u"elsewhere");
    EXPECT_TRUE(twice.RenamePathAbsolute(u"/base/x", u"/base").IsEmpty());
}

TEST(PathRenames, APathIsValidWhenItBeginsWithATarget)
{
    PathRenames renames;
    renames.SetRename(u"a", u"to/dir");
    renames.SetRename(u"b", u"other\\way");
    EXPECT_TRUE(renames.IsValidPath(u"to/dir/file"));
    EXPECT_TRUE(renames.IsValidPath(u"to/dir"));
    EXPECT_TRUE(renames.IsValidPath(u"to/directory")) << "a comparison of texts";
    EXPECT_TRUE(renames.IsValidPath(u"to\\dir\\file"));
    EXPECT_TRUE(renames.IsValidPath(u"other/way/file"));
    EXPECT_FALSE(renames.IsValidPath(u"TO/dir/file"));
    EXPECT_FALSE(renames.IsValidPath(u"to"));
    EXPECT_FALSE(renames.IsValidPath(u"a"));
    renames.SetRename(u"c", TPath());
    EXPECT_TRUE(renames.IsValidPath(u"anything"));
}

TEST(PathRenames, TheFirstFileOfAChecksumSetsItsTargetAndTheDirectory)
{
    PathRenames renames;
    renames.SetCRC(u"a/x", u"b/x", 7);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", u"b"}}));
    EXPECT_EQ(Text(renames.RenamePath(u"a/x")), "a/x") << "the file itself is not renamed";
}

TEST(PathRenames, AnotherFileOfAChecksumGoesWhereTheFirstWent)
{
    PathRenames renames;
    renames.SetCRC(u"a/x", u"b/x", 7);
    renames.SetCRC(u"a/y", u"c/y", 7);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a/y", u"b/x"}}));
}

TEST(PathRenames, FilesOfOneDirectoryThatStayTogetherKeepItsRename)
{
    PathRenames renames;
    renames.SetCRC(u"a/x", u"b/x", 1);
    renames.SetCRC(u"a/y", u"b/y", 2);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", u"b"}}));
}

TEST(PathRenames, ADroppedDirectoryIsNotDerivedAgain)
{
    PathRenames renames;
    renames.SetCRC(u"a/x", u"b/x", 1);
    renames.SetCRC(u"a/y", u"c/y", 2);
    EXPECT_TRUE(renames.GetPathMap().empty());
    renames.SetCRC(u"a/z", u"b/z", 3);
    EXPECT_TRUE(renames.GetPathMap().empty());
    renames.ResetRenames();
    renames.SetCRC(u"a/w", u"d/w", 4);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", u"d"}}));
}

TEST(PathRenames, TheDirectoryFollowsTheArgumentNotTheChecksum)
{
    PathRenames renames;
    renames.SetCRC(u"a/x", u"b/x", 7);
    renames.SetCRC(u"d/y", u"e/y", 7);
    EXPECT_EQ(renames.GetPathMap(),
              (PathRenames::PathMap{{u"a", u"b"}, {u"d", u"e"}, {u"d/y", u"b/x"}}));
}

TEST(PathRenames, ANewChecksumLeavesTheRenameOfItsFileAlone)
{
    PathRenames renames;
    renames.SetRename(u"a/x", u"kept");
    renames.SetCRC(u"a/x", u"b/x", 7);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", u"b"}, {u"a/x", u"kept"}}));
}

TEST(PathRenames, AKnownChecksumOverwritesTheRenameOfItsFile)
{
    PathRenames renames;
    renames.SetCRC(u"x", u"y", -7);
    renames.SetRename(u"z", u"lost");
    renames.SetCRC(u"z", u"elsewhere", -7);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"z", u"y"}}));
    renames.SetCRC(u"w", u"elsewhere", -7);
    EXPECT_EQ(Text(renames.RenamePath(u"w")), "y") << "the first target stays";
}

TEST(PathRenames, TheFirstFileOfADirectoryOverwritesItsRename)
{
    PathRenames renames;
    renames.SetRename(u"a", u"lost");
    renames.SetCRC(u"a/x", u"b/x", 7);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", u"b"}}));
}

TEST(PathRenames, ALaterFileIsHeldAgainstTheRenameThatItsDirectoryHasNow)
{
    PathRenames renames;
    renames.SetCRC(u"a/x", u"b/x", 1);
    renames.SetRename(u"a", u"c");
    renames.SetCRC(u"a/y", u"c/y", 2);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", u"c"}}));
    renames.SetCRC(u"a/z", u"b/z", 3);
    EXPECT_TRUE(renames.GetPathMap().empty());
}

TEST(PathRenames, ATargetWithoutDirectorySendsTheDirectoryToTheEmptyPath)
{
    PathRenames renames;
    renames.SetCRC(u"a/x", u"x", 7);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", TPath()}}));
}

TEST(PathRenames, ATargetMayBeAPathOfTheMap)
{
    PathRenames renames;
    renames.SetCRC(u"k", u"first/k", 7);
    renames.SetRename(u"a/x", u"b/x");
    renames.SetCRC(u"a/x", renames.GetPathMap().at(u"a/x"), 7);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", u"b"}, {u"a/x", u"first/k"}}));
}

TEST(PathRenames, AnEmptyPathIsIgnored)
{
    PathRenames renames;
    renames.SetCRC(TPath(), u"b/x", 7);
    EXPECT_TRUE(renames.GetPathMap().empty());
    renames.SetCRC(u"y", u"c/y", 7);
    renames.SetCRC(u"z", u"d/z", 7);
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"z", u"c/y"}}))
        << "its checksum was not registered, and files without directory derive none";
}

TEST(PathRenames, ResetKeepsTheChecksums)
{
    PathRenames renames;
    renames.SetCRC(u"a/x", u"b/x", 7);
    renames.SetRename(u"p", u"q");
    renames.ResetRenames();
    EXPECT_TRUE(renames.GetPathMap().empty());
    renames.SetCRC(u"k/y", u"c/y", 7);
    EXPECT_EQ(Text(renames.RenamePath(u"k/y")), "b/x");
    EXPECT_EQ(Text(renames.RenamePath(u"k")), "c");
}

TEST(PathRenames, CopiesAreIndependentAndComplete)
{
    PathRenames renames;
    renames.SetCRC(u"a/x", u"b/x", 7);
    PathRenames copy;
    copy.SetRename(u"gone", u"gone");
    copy = renames;
    copy.SetCRC(u"a/y", u"c/y", 7);
    EXPECT_EQ(copy.GetPathMap(), (PathRenames::PathMap{{u"a/y", u"b/x"}}));
    EXPECT_EQ(renames.GetPathMap(), (PathRenames::PathMap{{u"a", u"b"}}));
    PathRenames& self = copy;
    copy = self;
    EXPECT_EQ(copy.GetPathMap(), (PathRenames::PathMap{{u"a/y", u"b/x"}}));
}
