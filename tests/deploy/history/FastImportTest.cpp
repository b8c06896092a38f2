#include "deploy/history/FastImport.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ZET::Deploy {
namespace {

TEST(FastImportTest, PlainPathsStandAsTheyAre) {
    EXPECT_EQ(PathInStream("etc/krb5.conf.d/a_b-c"), "etc/krb5.conf.d/a_b-c");
}

TEST(FastImportTest, OtherPathsAreQuoted) {
    EXPECT_EQ(PathInStream("a b"), R"("a\040b")");
    EXPECT_EQ(PathInStream("\"a\""), R"("\042a\042")");
    EXPECT_EQ(PathInStream("a\nb\\"), R"("a\012b\134")");
    EXPECT_EQ(PathInStream("\xC3\xA4\xFF"), R"("\303\244\377")");
}

TEST(FastImportTest, DirectoryOfARepositoryGetsAnotherName) {
    EXPECT_EQ(PathInStream("root/.git/config"), "root/_.git/config");
    EXPECT_EQ(PathInStream(".GIT"), "_.GIT");
    EXPECT_EQ(PathInStream("a/.gitignore"), "a/.gitignore");
}

TEST(FastImportTest, StreamHasChangesWithTheirFiles) {
    std::ostringstream stream;
    FastImport import(stream, "refs/heads/main");
    import.Change({"anna <x>\ny", "a\n@b", 12}, {"root", "0@b", 13}, "why\n");
    import.Write("a b", true, std::string("x\0\n", 3));
    import.Write("c", false, "");
    import.Remove("d");
    import.End();
    EXPECT_EQ(stream.str(), std::string("feature done\nreset refs/heads/main\n\n"
                                        "commit refs/heads/main\n"
                                        "author anna  x  y <a @b> 12 +0000\n"
                                        "committer root <0@b> 13 +0000\n"
                                        "data 4\nwhy\n\n"
                                        "M 100755 inline \"a\\040b\"\ndata 3\nx") +
                                std::string("\0\n\n", 3) +
                                "M 100644 inline c\ndata 0\n\n"
                                "D d\ndone\n");
}

}  // namespace
}  // namespace ZET::Deploy
