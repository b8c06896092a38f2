#include "deploy/state/Manifest.h"

#include <gmock/gmock.h>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class ManifestTest : public HostFixture {
  protected:
    Manifest Of(Role role) { return {State(), role, m_paths}; }

    Manifest OfServer() { return Of(Role::Server); }

    /// Records the file as it is for the role.
    void Record(const std::string& name, Role role = Role::Server) {
        Manifest manifest = Of(role);
        manifest.Record(At(name));
        manifest.Save();
    }

    const Paths m_paths{""};
};

TEST_F(ManifestTest, MissingOneIsEmpty) {
    EXPECT_TRUE(OfServer().IsEmpty());
    EXPECT_FALSE(OfServer().Has(At("out/a")));
    EXPECT_FALSE(OfServer().IsUntouched(At("out/a")));
}

TEST_F(ManifestTest, WhatIsSavedIsReadBack) {
    Write("out/a", "a");
    Write("out/b c", "b");
    Manifest manifest = OfServer();
    manifest.Record(At("out/b c"));
    manifest.Record(At("out/a"));
    manifest.Save();
    EXPECT_THAT(OfServer().Paths(), ElementsAre(At("out/a"), At("out/b c")));
    EXPECT_TRUE(OfServer().IsUntouched(At("out/a")));
    EXPECT_TRUE(OfServer().IsUntouched(At("out/b c")));
}

TEST_F(ManifestTest, EachRoleHasItsOwn) {
    Write("out/a", "a");
    Record("out/a", Role::Client);
    EXPECT_TRUE(OfServer().IsEmpty());
    EXPECT_TRUE(Of(Role::Client).Has(At("out/a")));
    EXPECT_TRUE(fs::exists(At("state/zet-client.manifest")));
    EXPECT_FALSE(fs::exists(At("state/zet-server.manifest")));
}

TEST_F(ManifestTest, EveryChangeOfAFileIsSeen) {
    Write("out/a", "text", 0644);
    Record("out/a");
    ASSERT_TRUE(OfServer().IsUntouched(At("out/a")));
    fs::permissions(At("out/a"), fs::perms(0640));
    EXPECT_FALSE(OfServer().IsUntouched(At("out/a"))) << "another mode";
    fs::permissions(At("out/a"), fs::perms(0644));
    EXPECT_TRUE(OfServer().IsUntouched(At("out/a")));

    const auto time = fs::last_write_time(At("out/a"));
    Write("out/a", "longer text");
    fs::last_write_time(At("out/a"), time);
    EXPECT_FALSE(OfServer().IsUntouched(At("out/a"))) << "another size";
    Write("out/a", "text");
    fs::last_write_time(At("out/a"), time);
    EXPECT_TRUE(OfServer().IsUntouched(At("out/a")));
    fs::last_write_time(At("out/a"), time + std::chrono::nanoseconds(1));
    EXPECT_FALSE(OfServer().IsUntouched(At("out/a"))) << "another time";
}

TEST_F(ManifestTest, LinkToTheSameFileIsAnother) {
    Write("out/a", "text");
    Record("out/a");
    fs::rename(At("out/a"), At("out/b"));
    EXPECT_FALSE(OfServer().IsUntouched(At("out/a"))) << "not there";
    fs::create_symlink(At("out/b"), At("out/a"));
    EXPECT_FALSE(OfServer().IsUntouched(At("out/a")));
}

TEST_F(ManifestTest, ForgottenFileIsGoneAndTheLastOneTakesTheManifestWithIt) {
    Write("out/a", "a");
    Record("out/a");
    Manifest manifest = OfServer();
    manifest.Forget(At("out/a"));
    manifest.Save();
    EXPECT_TRUE(OfServer().IsEmpty());
    EXPECT_FALSE(fs::exists(State().Manifest(Role::Server)));
}

TEST_F(ManifestTest, FileIsEditedWhenNoRoleKnowsItAsItIs) {
    const auto isEdited = [&] { return Manifest::IsEdited(State(), m_paths, At("out/a")); };
    Write("out/a", "one");
    EXPECT_FALSE(isEdited()) << "nobody recorded it";
    Record("out/a", Role::Client);
    EXPECT_FALSE(isEdited());
    Write("out/a", "three");
    EXPECT_TRUE(isEdited());
    Record("out/a", Role::Server);
    EXPECT_FALSE(isEdited()) << "one of the roles knows it";
}

TEST_F(ManifestTest, EachBrokenLineIsNamed) {
    for (const char* line :
         {"", "1", "1 2 3 644", "1 2 3 644 ", "1 2 3 644 relative/path", "x 2 3 644 /p", "1 x 3 644 /p",
          "1 2 x 644 /p", "1 2 3 9 /p", "99999999999999999999 2 3 644 /p", "\1\2\3"}) {
        Write("state/zet-server.manifest", std::string("1 2 3 644 /first\n") + line + "\n");
        EXPECT_EQ(MessageOf<Damage>([&] { OfServer(); }),
                  At("state/zet-server.manifest") +
                      ":2: is no line INODE SIZE MTIME MODE PATH (remove the file, then commit again)")
            << line;
    }
}

TEST_F(ManifestTest, WhatIsNoFileIsDamage) {
    fs::create_directory(At("state/zet-server.manifest"));
    EXPECT_THROW(OfServer(), Damage);
}

TEST_F(ManifestTest, DamagedOneIsToldIsEmptyAndStaysForWhoCanDoWithout) {
    const std::string text = "1 2 3 644 /first\nnonsense\n";
    Write("state/zet-server.manifest", text);
    Write("out/a", "a");
    Manifest manifest(State(), Role::Server, m_paths, m_told);
    EXPECT_TRUE(manifest.IsDamaged());
    EXPECT_TRUE(manifest.IsEmpty());
    ASSERT_THAT(m_told.warnings, SizeIs(1));
    EXPECT_THAT(m_told.warnings[0], HasSubstr("zet-server.manifest:2:"));
    manifest.Record(At("out/a"));
    manifest.Save();
    EXPECT_EQ(Read("state/zet-server.manifest"), text);
}

TEST_F(ManifestTest, SoundOneIsReadByWhoCouldDoWithout) {
    Write("out/a", "a");
    Record("out/a");
    const Manifest manifest(State(), Role::Server, m_paths, m_told);
    EXPECT_FALSE(manifest.IsDamaged());
    EXPECT_TRUE(manifest.Has(At("out/a")));
    EXPECT_THAT(m_told.warnings, IsEmpty());
}

TEST_F(ManifestTest, PathsOfATreeAreRecordedAsItsHostKnowsThem) {
    const Paths paths(At("."));
    Write("out/a", "a");
    Manifest manifest(State(), Role::Server, paths);
    manifest.Record(At("out/a"));
    manifest.Save();
    EXPECT_THAT(Read("state/zet-server.manifest"), testing::EndsWith(" /out/a\n"));
    EXPECT_TRUE(Manifest(State(), Role::Server, paths).IsUntouched(At("out/a")));
}

TEST_F(ManifestTest, FileWhoseDirectoryWasMovedIsKnownByItsRealName) {
    Write("out/a", "a");
    Record("out/a");
    fs::rename(At("out"), At("moved"));
    fs::create_symlink(At("moved"), At("out"));
    EXPECT_THAT(OfServer().Paths(), ElementsAre(At("moved/a")));
    EXPECT_TRUE(OfServer().IsUntouched(At("moved/a")));
}

TEST_F(ManifestTest, OfTwoNamesOfAFileTheEntryThatFitsCounts) {
    Write("out/a", "a");
    Record("out/a");
    const std::string fits = Read("state/zet-server.manifest");
    const std::string other = "1 2 3 100644 " + At("out/a") + "\n";
    for (const std::string& text : {other + fits, fits + other}) {
        Write("state/zet-server.manifest", text);
        EXPECT_TRUE(OfServer().IsUntouched(At("out/a"))) << text;
    }
}

}  // namespace
}  // namespace ZET::Deploy
