#include "deploy/host/PathWalk.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kStranger = 12345;

/// A tree in a directory of its own, which the walks take for "/".
class PathWalkTest : public testing::Test {
  protected:
    PathWalkTest() {
        std::string name = testing::TempDir() + "zet-walk.XXXXXX";
        m_root = fs::canonical(mkdtemp(name.data())).string();
        chmod(m_root.c_str(), 0755);
    }
    ~PathWalkTest() override { fs::remove_all(m_root); }

    std::string At(const std::string& name) const { return m_root + "/" + name; }

    void MakeDirectory(const std::string& name, mode_t mode = 0755, uid_t owner = geteuid()) {
        fs::create_directory(At(name));
        ASSERT_EQ(chown(At(name).c_str(), owner, static_cast<gid_t>(owner)), 0);
        ASSERT_EQ(chmod(At(name).c_str(), mode), 0);
    }

    void MakeFile(const std::string& name, uid_t owner = geteuid()) {
        std::ofstream(At(name)) << "text\n";
        ASSERT_EQ(chown(At(name).c_str(), owner, static_cast<gid_t>(owner)), 0);
    }

    void MakeLink(const std::string& name, const std::string& target, uid_t owner = geteuid()) {
        fs::create_symlink(target, At(name));
        ASSERT_EQ(lchown(At(name).c_str(), owner, static_cast<gid_t>(owner)), 0);
    }

    FoundFile Walk(const std::string& path, PathJudge judge = PathJudge()) {
        return PathWalk(m_known, m_root, std::move(judge), PathWalk::Unseen::Fails).To(path);
    }

    /// What the judge has against the way; empty when nothing.
    std::string Objection(const std::string& path) {
        const std::optional<Problem> objection = Walk(path).judge.Objection();
        return objection ? objection->file.substr(m_root.size()) + ": " + objection->text : "";
    }

    /// All that was found, in words.
    static std::string Told(const FoundFile& found) {
        const std::optional<Problem>& objection = found.judge.Objection();
        std::string told = found.path + " " + found.name;
        told += found.directory ? " in " + found.directory->name : " in none";
        told += found.status ? " inode " + std::to_string(found.status->st_ino) : " none";
        told += found.isThroughLink ? " through a link" : "";
        told += found.judge.Holder() ? " held by " + std::to_string(*found.judge.Holder()) : "";
        return told + (objection ? " " + objection->file + objection->text : "");
    }

    std::string m_root;
    HeldDirectories m_known;
};

/// Owners can only be given by root, and only root is judged.
class PathJudgeTest : public PathWalkTest {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "needs root";
    }
};

TEST_F(PathWalkTest, FileIsFoundInItsHeldDirectory) {
    MakeDirectory("etc");
    MakeFile("etc/conf");
    const FoundFile found = Walk("/etc/conf");
    EXPECT_EQ(found.path, At("etc/conf"));
    EXPECT_EQ(found.name, "conf");
    ASSERT_TRUE(found.directory);
    EXPECT_EQ(found.directory->name, At("etc"));
    ASSERT_TRUE(found.status);
    EXPECT_TRUE(S_ISREG(found.status->st_mode));
    EXPECT_FALSE(found.isThroughLink);
}

TEST_F(PathWalkTest, LinkAtTheEndIsToldFromOneOnTheWay) {
    MakeDirectory("etc");
    MakeFile("etc/conf");
    MakeLink("etc/link", "conf");
    MakeLink("etc/link-to-nothing", "none");
    MakeLink("way", "etc");
    EXPECT_FALSE(Walk("/etc/conf").endsInLink);
    EXPECT_FALSE(Walk("/way/conf").endsInLink);
    EXPECT_FALSE(Walk("/way/none").endsInLink);
    EXPECT_TRUE(Walk("/etc/link").endsInLink);
    EXPECT_TRUE(Walk("/etc/link-to-nothing").endsInLink);
    EXPECT_TRUE(Walk("/way/link").endsInLink);
    EXPECT_TRUE(Walk("/way").endsInLink);
}

TEST_F(PathWalkTest, HeldDirectoryStaysTheSameWhenItsNameIsGivenToAnother) {
    MakeDirectory("etc");
    const FoundFile found = Walk("/etc/conf");
    fs::rename(At("etc"), At("was"));
    MakeDirectory("etc");
    struct stat held = {};
    struct stat was = {};
    ASSERT_EQ(fstat(found.directory->descriptor, &held), 0);
    ASSERT_EQ(stat(At("was").c_str(), &was), 0);
    EXPECT_EQ(held.st_ino, was.st_ino);
}

TEST_F(PathWalkTest, FileThatIsNotThereHasItsDirectoryAndNoStatus) {
    MakeDirectory("etc");
    const FoundFile found = Walk("/etc/new");
    EXPECT_EQ(found.path, At("etc/new"));
    EXPECT_TRUE(found.directory);
    EXPECT_FALSE(found.status);
}

TEST_F(PathWalkTest, WhatIsBeyondWhatIsThereIsTakenAsWritten) {
    const FoundFile found = Walk("/no/such/../file");
    EXPECT_EQ(found.path, At("no/file"));
    EXPECT_FALSE(found.directory);
}

TEST_F(PathWalkTest, AbsoluteLinkBeginsAtTheRootAgain) {
    MakeDirectory("etc");
    MakeDirectory("real");
    MakeFile("real/conf");
    MakeLink("etc/conf", "/real/conf");
    const FoundFile found = Walk("/etc/conf");
    EXPECT_EQ(found.path, At("real/conf"));
    EXPECT_TRUE(found.isThroughLink);
}

TEST_F(PathWalkTest, LinkThatClimbsTooFarEndsAtTheRoot) {
    MakeFile("conf");
    MakeLink("link", "../../../../conf");
    EXPECT_EQ(Walk("/link").path, At("conf"));
}

TEST_F(PathWalkTest, LinkToItselfIsRefused) {
    MakeLink("loop", "loop");
    EXPECT_THROW(Walk("/loop"), Failure);
}

TEST_F(PathWalkTest, LinkAtTheEndCanBeWhatIsFound) {
    MakeLink("loop", "loop");
    const FoundFile found = PathWalk(m_known, m_root, PathJudge(), PathWalk::Unseen::Fails).ToLink("/loop");
    EXPECT_EQ(found.path, At("loop"));
    ASSERT_TRUE(found.status);
    EXPECT_TRUE(S_ISLNK(found.status->st_mode));
}

TEST_F(PathWalkTest, NameThatIsTooLongCannotBeLookedAt) {
    EXPECT_THROW(Walk("/" + std::string(300, 'x')), Failure);
}

TEST_F(PathWalkTest, RootItselfIsFound) {
    const FoundFile found = Walk("/");
    EXPECT_EQ(found.path, m_root);
    EXPECT_TRUE(found.status);
}

TEST_F(PathWalkTest, FileRightBelowTheRootIsFound) {
    MakeFile("conf");
    const FoundFile found = Walk("/conf");
    EXPECT_EQ(found.path, At("conf"));
    EXPECT_EQ(found.directory->name, m_root);
    HeldDirectories known;
    const FoundFile ofHost =
        PathWalk(known, "", PathJudge(), PathWalk::Unseen::Fails).To("/no-such-file.zet");
    EXPECT_EQ(ofHost.path, "/no-such-file.zet");
    EXPECT_EQ(ofHost.directory->name, "/");
}

TEST_F(PathJudgeTest, WalkOnARememberedWayFindsWhatTheFirstOneFinds) {
    MakeDirectory("etc");
    MakeDirectory("etc/app");
    MakeDirectory("open", 0777);
    MakeDirectory("home", 0755, kStranger);
    MakeDirectory("home/sub", 0755, kStranger);
    MakeLink("link", "etc");
    MakeLink("etc/app/out", "/home");
    for (const char* file : {"etc/file", "etc/app/file", "open/file", "home/sub/roots"})
        MakeFile(file);
    MakeFile("home/sub/his", kStranger);
    MakeLink("etc/app/last", "../file");
    const std::vector<std::string> directories = {
        "/",         "",          "/etc",      "//etc/./",        "/etc/app",        "/etc/app/..",
        "/link",     "/link/app", "/missing",  "/etc/app/x",      "/etc/missing/..", "/open",
        "/home/sub", "/home",     "/etc/file", "/etc/app/out/sub"};
    const std::vector<std::string> names = {"file", "his", "roots", "app", "last",
                                            "none", "",    ".",     "..",  "sub"};
    for (int round = 0; round < 2; ++round) {
        for (const std::string& directory : directories) {
            for (const std::string& name : names) {
                const std::string path = directory + "/" + name;
                for (const uid_t harmless : {uid_t{0}, kStranger}) {
                    HeldDirectories none;
                    const auto walk = [&](HeldDirectories& known) {
                        return Told(
                            PathWalk(known, m_root, PathJudge({harmless}), PathWalk::Unseen::Fails).To(path));
                    };
                    EXPECT_EQ(walk(m_known), walk(none)) << path;
                }
            }
        }
    }
    EXPECT_FALSE(m_known.ways.empty());
}

TEST_F(PathWalkTest, DirectoryThatComesWhereNoneWasIsWalkedInto) {
    MakeDirectory("etc");
    EXPECT_EQ(Walk("/etc/new/../file").path, At("etc/file"));
    MakeLink("etc/new", "/");
    MakeDirectory("other");
    EXPECT_EQ(Walk("/etc/new/../file").path, At("file"));
}

TEST_F(PathWalkTest, MoreDirectoriesAreWalkedThanAreHeld) {
    for (int i = 0; i < 200; ++i) {
        const std::string name = "d" + std::to_string(i);
        MakeDirectory(name);
        ASSERT_TRUE(Walk("/" + name + "/conf").directory);
    }
    EXPECT_LE(m_known.byName.size(), 64U);
}

TEST_F(PathJudgeTest, OwnDirectoriesAreSafe) {
    MakeDirectory("etc");
    MakeFile("etc/conf", kStranger);
    EXPECT_EQ(Objection("/etc/conf"), "");
    EXPECT_EQ(Objection("/etc/new"), "");
}

TEST_F(PathJudgeTest, DirectoryThatOthersMayWriteIsRefusedStickyOrNot) {
    for (const mode_t mode : {mode_t{0777}, mode_t{01777}}) {
        MakeDirectory("open", mode);
        MakeFile("open/conf");
        EXPECT_EQ(Objection("/open/conf"), "/open: others may write the directory of " + At("open/conf"));
        EXPECT_EQ(Objection("/open/new"), "/open: others may write the directory of " + At("open/new"));
        m_known = {};
    }
}

TEST_F(PathJudgeTest, DirectoryThatAGroupMayWriteIsRefusedUnlessItIsRoots) {
    MakeDirectory("shared", 0775);
    EXPECT_EQ(Objection("/shared/conf"), "");
    ASSERT_EQ(chown(At("shared").c_str(), 0, kStranger), 0);
    m_known = {};
    EXPECT_EQ(Objection("/shared/conf"),
              "/shared: a group or others may write the directory of " + At("shared/conf"));
}

TEST_F(PathJudgeTest, StickyDirectoryOnTheWayIsAsSafeAsItsEntry) {
    MakeDirectory("tmp", 01777);
    MakeDirectory("tmp/own");
    MakeFile("tmp/own/conf");
    MakeDirectory("tmp/his", 0755, kStranger);
    MakeFile("tmp/his/conf");
    MakeLink("tmp/link", "/tmp/own/conf", kStranger);
    MakeLink("tmp/mine", "/tmp/own/conf");
    EXPECT_EQ(Objection("/tmp/own/conf"), "");
    EXPECT_EQ(Objection("/tmp/mine"), "");
    EXPECT_NE(Objection("/tmp/his/conf"), "");
    EXPECT_NE(Objection("/tmp/link"), "");
}

TEST_F(PathJudgeTest, OpenDirectoryOnTheWayIsRefused) {
    MakeDirectory("open", 0777);
    MakeDirectory("open/own");
    EXPECT_EQ(Objection("/open/own/conf"), "/open: others may write the directory of " + At("open/own"));
}

TEST_F(PathJudgeTest, WhatLiesWhollyWithOneUserIsHisAndAllowed) {
    MakeDirectory("home", 0755, kStranger);
    MakeFile("home/conf", kStranger);
    const FoundFile found = Walk("/home/conf");
    EXPECT_FALSE(found.judge.Objection());
    EXPECT_EQ(found.judge.Holder(), kStranger);
}

TEST_F(PathJudgeTest, AnothersFileInAUsersDirectoryIsRefused) {
    MakeDirectory("home", 0755, kStranger);
    MakeFile("home/roots");
    MakeFile("home/others", kStranger + 1);
    MakeLink("home/link", "/etc/passwd", kStranger);
    for (const char* path : {"/home/roots", "/home/others", "/home/new", "/home/link"})
        EXPECT_NE(Objection(path), "") << path;
}

TEST_F(PathJudgeTest, HardLinkInAUsersDirectoryIsRefused) {
    MakeDirectory("home", 0755, kStranger);
    MakeFile("home/conf", kStranger);
    fs::create_hard_link(At("home/conf"), At("home/other"));
    EXPECT_EQ(Objection("/home/conf"),
              "/home/conf: is in a directory of user 12345 and has other names (hard links)");
}

TEST_F(PathJudgeTest, DirectoriesOfATrustedUserCountAsRoots) {
    MakeDirectory("service", 0755, kStranger);
    const PathJudge judge({kStranger});
    EXPECT_FALSE(Walk("/service/new", judge).judge.Objection());
    EXPECT_FALSE(Walk("/service/new", judge).judge.Holder());
}

TEST_F(PathJudgeTest, FileThatTellsRootWhatToDoIsRootsAndNobodyElseMayWriteIt) {
    MakeDirectory("etc");
    MakeFile("etc/conf");
    const auto objects = [&](const std::string& path) {
        m_known = {};
        const FoundFile found = Walk(path);
        return found.judge.ObjectionToRead(found.path, *found.status).has_value();
    };
    EXPECT_FALSE(objects("/etc/conf"));
    chmod(At("etc/conf").c_str(), 0664);
    EXPECT_FALSE(objects("/etc/conf")) << "the group is root's";
    ASSERT_EQ(chown(At("etc/conf").c_str(), 0, kStranger), 0);
    EXPECT_TRUE(objects("/etc/conf"));
    chmod(At("etc/conf").c_str(), 0646);
    EXPECT_TRUE(objects("/etc/conf"));
    chmod(At("etc/conf").c_str(), 0644);
    ASSERT_EQ(chown(At("etc/conf").c_str(), kStranger, 0), 0);
    EXPECT_TRUE(objects("/etc/conf"));
    MakeDirectory("home", 0755, kStranger);
    MakeFile("home/conf", kStranger);
    EXPECT_TRUE(objects("/home/conf"));
}

}  // namespace
}  // namespace ZET::Deploy
