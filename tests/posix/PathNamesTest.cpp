#include "posix/PathNames.h"

#include <gtest/gtest.h>

namespace ZET {
namespace {

TEST(PathNamesTest, DirectoryIsWhatStandsBeforeTheLastSlash) {
    EXPECT_EQ(DirectoryOf("/etc/zet/zet.conf"), "/etc/zet");
    EXPECT_EQ(DirectoryOf("etc/zet.conf"), "etc");
    EXPECT_EQ(DirectoryOf("/etc/zet/"), "/etc/zet");
    EXPECT_EQ(DirectoryOf("/etc"), "/") << "the root is a directory, nothing is none";
    EXPECT_EQ(DirectoryOf("/"), "/");
    EXPECT_EQ(DirectoryOf("zet.conf"), ".");
    EXPECT_EQ(DirectoryOf(""), ".");
}

TEST(PathNamesTest, BaseNameIsWhatStandsBehindTheLastSlash) {
    EXPECT_EQ(BaseNameOf("/etc/zet/zet.conf"), "zet.conf");
    EXPECT_EQ(BaseNameOf("zet.conf"), "zet.conf");
    EXPECT_EQ(BaseNameOf("/etc/"), "");
    EXPECT_EQ(BaseNameOf(""), "");
}

TEST(PathNamesTest, PartBeforeNameAndNameMakeThePath) {
    for (const char* path : {"/etc/zet/zet.conf", "/etc", "zet.conf", "/", "", "a//b", "a/"})
        EXPECT_EQ(PartBeforeName(path) + BaseNameOf(path), path);
    EXPECT_EQ(PartBeforeName("/etc/x"), "/etc/");
    EXPECT_EQ(PartBeforeName("x"), "");
}

TEST(PathNamesTest, NameIsPutIntoADirectoryWithOneSlash) {
    EXPECT_EQ(PathIn("/etc", "x"), "/etc/x");
    EXPECT_EQ(PathIn("/", "x"), "/x");
    EXPECT_EQ(PathIn("", "x"), "/x") << "the root that is empty, as the one of a host is";
    EXPECT_EQ(PathIn("etc", "a/b"), "etc/a/b");
}

TEST(PathNamesTest, WhatIsBelowADirectoryHasASlashBehindItsName) {
    EXPECT_TRUE(IsBelow("/etc/x", "/etc"));
    EXPECT_TRUE(IsBelow("/etc/", "/etc"));
    EXPECT_TRUE(IsBelow("/etc", ""));
    EXPECT_FALSE(IsBelow("/etc", "/etc")) << "the directory itself";
    EXPECT_FALSE(IsBelow("/etcetera/x", "/etc"));
    EXPECT_FALSE(IsBelow("/var/etc/x", "/etc"));
    EXPECT_FALSE(IsBelow("etc", ""));
    EXPECT_FALSE(IsBelow("", ""));
}

TEST(PathNamesTest, StepUpIsAWholePart) {
    for (const char* path : {"..", "../x", "x/..", "/a/../b", "/.."})
        EXPECT_TRUE(HasStepUp(path)) << path;
    for (const char* path : {"", "/", "x", "..x", "x..", "/a/..b/c", "/a../b", "...", "a/./b"})
        EXPECT_FALSE(HasStepUp(path)) << path;
}

TEST(PathNamesTest, NormalisedPathHasNoStepsThatLeadNowhere) {
    EXPECT_EQ(Normalised("/usr/bin/../lib/./zet//x.so"), "/usr/lib/zet/x.so");
    EXPECT_EQ(Normalised("/a/b/../../c"), "/c");
    EXPECT_EQ(Normalised("/../../a"), "/a") << "nothing is above the root";
    EXPECT_EQ(Normalised("/a/.."), "/");
    EXPECT_EQ(Normalised("/a/b/"), "/a/b");
    EXPECT_EQ(Normalised("/..a/b.."), "/..a/b..");
    EXPECT_EQ(Normalised("/"), "/");
    EXPECT_EQ(Normalised(""), "/");
}

TEST(PathNamesTest, PlainNameHasNoPartsThatLeadNowhere) {
    for (const char* name : {"x", "a/b", "..x", ".x", "a/.b", "x."})
        EXPECT_TRUE(IsPlainName(name)) << name;
    for (const char* name : {"/", ".", "./x", "x/.", "a//b", "a/./b", "a/../b", "x/", "/x"})
        EXPECT_FALSE(IsPlainName(name)) << name;
}

}  // namespace
}  // namespace ZET
