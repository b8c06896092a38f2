#include "deploy/state/SeenFile.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileVersion.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/KnownFiles.h"

namespace ZET::Deploy {

namespace {

namespace fs = std::filesystem;

class SeenFileTest : public HostFixture {
  protected:
    bool HaveSameBytes(const std::string& one, const std::string& other) const {
        return SeenFile(At(one)).HasBytes(ReadFileBytes(At(other)));
    }

    /// As it is found by the calls that look each time anew.
    void ExpectAsFoundAnew(const std::string& name, const RecordedState& recorded, const std::string& what) {
        const SeenFile seen(At(name));
        EXPECT_EQ(seen.IsAs(recorded), IsAsRecorded(At(name), recorded)) << name << ", " << what;
        EXPECT_EQ(seen.Version(), VersionOf(At(name))) << name;
        EXPECT_EQ(seen.State().mode, StateOf(At(name)).mode) << name;
        EXPECT_EQ(seen.State().links, StateOf(At(name)).links) << name;
    }
};

/// One that is held, and one that is not.
std::vector<std::string> Texts() {
    return {"text\n", std::string((std::size_t{1} << 20) + 1, 'x')};
}

TEST_F(SeenFileTest, TellsTheSameAsLooksEachOfItsOwn) {
    Write("empty", "");
    Write("private", "text\n", 0600);
    Write("other", "texts", 0600);
    Write("large", Texts().back());
    fs::create_symlink(At("private"), At("link"));
    fs::create_directory(At("directory"));
    RecordedState none;
    for (const char* const recorded : {"empty", "private", "other", "large"}) {
        const RecordedState state = Capture(At(recorded), 1000).state;
        for (const char* const name : {"empty", "private", "other", "large", "link", "directory", "none"}) {
            ExpectAsFoundAnew(name, state, recorded);
            ExpectAsFoundAnew(name, none, "nothing");
        }
        EXPECT_TRUE(SeenFile(At(recorded)).IsAs(state)) << recorded;
    }
}

TEST_F(SeenFileTest, ComparesEachByte) {
    for (const std::string& text : Texts()) {
        Write("one", text);
        Write("same", text);
        std::string other = text;
        other.back() = '!';
        Write("other", other);
        Write("longer", text + "x");
        Write("shorter", text.substr(1));
        EXPECT_TRUE(HaveSameBytes("one", "same")) << text.size();
        for (const char* const name : {"other", "longer", "shorter"})
            EXPECT_FALSE(HaveSameBytes("one", name)) << name << ", " << text.size();
    }
}

TEST_F(SeenFileTest, IsReadOnce) {
    Write("file", "text\n");
    const SeenFile seen(At("file"));
    const RecordedState state = Capture(At("file"), 1000).state;
    EXPECT_TRUE(seen.IsAs(state));
    Write("file", "other\n");
    EXPECT_TRUE(seen.IsAs(state)) << "who writes it compares the version";
    EXPECT_NE(seen.Version(), VersionOf(At("file")));
}

TEST_F(SeenFileTest, IsCapturedAsByALookOfItsOwn) {
    for (const std::uint64_t longest : {std::uint64_t{2}, std::uint64_t{1000}}) {
        Write("file", "text\n", 0640);
        setxattr(At("file").c_str(), "user.a", "b", 1, 0);
        const CapturedFile alone = Capture(At("file"), longest);
        const auto seen = SeenFile(At("file")).Captured(longest);
        ASSERT_TRUE(seen);
        EXPECT_TRUE(seen->IsAs(alone.state)) << longest;
        EXPECT_EQ(seen->text, alone.text) << longest;
    }
    Write("large", Texts().back());
    EXPECT_FALSE(SeenFile(At("large")).Captured(1000)) << "no two large texts are in memory";
}

TEST_F(SeenFileTest, IsTheLookThatWasTakenBefore) {
    Write("file", "text\n");
    struct stat status = {};
    ASSERT_EQ(lstat(At("file").c_str(), &status), 0);
    const SeenFile seen(At("file"), status);
    EXPECT_EQ(seen.Version(), VersionOf(At("file")));
    EXPECT_TRUE(seen.State().IsRegular());
    EXPECT_TRUE(seen.HasBytes("text\n"));
    const SeenFile none(At("file"), std::nullopt);
    EXPECT_FALSE(none.State().exists);
    EXPECT_EQ(none.Version(), FileVersion());
}

TEST_F(SeenFileTest, WhatCannotBeReadIsAFailure) {
    Write("file", "text\n");
    const SeenFile seen(At("file"));
    const RecordedState state = Capture(At("file"), 1000).state;
    fs::remove(At("file"));
    EXPECT_THROW(seen.IsAs(state), Failure);
}

}  // namespace

}  // namespace ZET::Deploy
