#include "deploy/state/PendingRecord.h"

#include <fcntl.h>
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

class PendingRecordTest : public HostFixture {
  protected:
    /// What a run that was killed leaves: its record, and then what it was at.
    void RecordOfKilledRun(const std::string& name) { Write("state/zet.pending", At(name) + "\n"); }

    /// As if what was written before had been there long before the run.
    void LetRunBeginLater() {
        fs::last_write_time(At("state/zet.pending"),
                            fs::file_time_type::clock::now() + std::chrono::hours(1));
    }

    std::set<std::string> Recorded() { return PendingRecord::Read(State(), m_paths); }

    std::set<std::string> Clear() { return PendingRecord::ClearLeftOvers(TheHost()); }

    const Paths m_paths{""};
};

TEST_F(PendingRecordTest, IsThereAsLongAsItIsWritten) {
    EXPECT_THAT(Recorded(), IsEmpty());
    {
        const PendingRecord record(State(), m_paths, {At("out/b"), At("out/a b")});
        EXPECT_THAT(Recorded(), ElementsAre(At("out/a b"), At("out/b")));
    }
    EXPECT_TRUE(fs::is_empty(At("state")));
}

TEST_F(PendingRecordTest, WhatCannotBeRecordedIsAFailureWithoutATrace) {
    fs::create_directory(At("state/zet.pending"));
    EXPECT_ANY_THROW(PendingRecord(State(), m_paths, {At("out/a")}));
    EXPECT_FALSE(fs::exists(At("state/zet.pending.tmp")));
    EXPECT_THROW(Recorded(), Damage);
}

TEST_F(PendingRecordTest, TreeHasPathsOfItsOwnAndNoneThatLeadOutOfIt) {
    const Paths paths(At("etc"));
    fs::create_directory(At("etc/in"));
    fs::create_symlink(At("out"), At("etc/link"));
    Write("state/zet.pending", "/in/a\n/link/a\n");
    EXPECT_THAT(PendingRecord::Read(State(), paths), ElementsAre(At("etc/in/a")));
    const PendingRecord record(State(), paths, {At("etc/in/b")});
    EXPECT_EQ(Read("state/zet.pending"), "/in/b\n");
}

TEST_F(PendingRecordTest, TemporaryFileOfAKilledRunIsRemovedAndTold) {
    Write("out/a", "text");
    RecordOfKilledRun("out/a");
    Write("out/a.tmp", "half of the te");
    EXPECT_THAT(Clear(), ElementsAre(At("out/a")));
    EXPECT_FALSE(fs::exists(At("out/a.tmp")));
    EXPECT_EQ(Read("out/a"), "text");
    EXPECT_FALSE(fs::exists(At("state/zet.pending")));
    EXPECT_THAT(m_told.remarks,
                ElementsAre("removed " + At("out/a.tmp") + ", which a run that was cut short left"));
    EXPECT_THAT(m_told.warnings, IsEmpty());
}

TEST_F(PendingRecordTest, UnfinishedCopiesAndReservesAreRemovedAsWell) {
    RecordOfKilledRun("out/a");
    for (const char* name : {"out/a.before_zet.Ab3xYz.tmp", "out/a.000000.tmp"})
        Write(name, "half");
    Write("out/a.before_zet", "kept");
    Write("out/b.Ab3xYz.tmp", "kept");
    Write("out/a.Ab3xYz7.tmp", "kept");
    Clear();
    EXPECT_THAT(m_told.remarks, SizeIs(2));
    for (const char* name : {"out/a.before_zet.Ab3xYz.tmp", "out/a.000000.tmp"})
        EXPECT_FALSE(fs::exists(At(name))) << name;
    for (const char* name : {"out/a.before_zet", "out/b.Ab3xYz.tmp", "out/a.Ab3xYz7.tmp"})
        EXPECT_TRUE(fs::exists(At(name))) << name;
}

TEST_F(PendingRecordTest, WhatWasThereBeforeTheRunStaysAndIsTold) {
    RecordOfKilledRun("out/a");
    Write("out/a.tmp", "somebody's");
    LetRunBeginLater();
    Clear();
    EXPECT_EQ(Read("out/a.tmp"), "somebody's");
    ASSERT_THAT(m_told.warnings, SizeIs(1));
    EXPECT_THAT(m_told.warnings[0], HasSubstr(At("out/a.tmp") + ": stays"));
}

TEST_F(PendingRecordTest, WhatHasAnotherNameOrIsNoFileStays) {
    RecordOfKilledRun("out/a");
    Write("out/somebodys", "text");
    fs::create_hard_link(At("out/somebodys"), At("out/a.tmp"));
    Clear();
    EXPECT_TRUE(fs::exists(At("out/a.tmp")));
    RecordOfKilledRun("out/b");
    fs::create_directory(At("out/b.tmp"));
    Clear();
    EXPECT_TRUE(fs::exists(At("out/b.tmp")));
    EXPECT_THAT(m_told.warnings, SizeIs(2));
    EXPECT_THAT(m_told.remarks, IsEmpty());
}

TEST_F(PendingRecordTest, WhatBelongsToNeitherRootNorTheOwnerOfTheFileStays) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    constexpr uid_t kNobody = 65534;
    const auto giveAway = [&](const std::string& name) {
        return chown(At(name).c_str(), kNobody, kNobody) == 0;
    };
    RecordOfKilledRun("out/a");
    Write("out/a.tmp", "his");
    ASSERT_TRUE(giveAway("out/a.tmp"));
    Clear();
    EXPECT_TRUE(fs::exists(At("out/a.tmp")));
    EXPECT_THAT(m_told.warnings, SizeIs(1));
    RecordOfKilledRun("out/a");
    Write("out/a", "his, too");
    ASSERT_TRUE(giveAway("out/a") && giveAway("out/a.tmp"));
    Clear();
    EXPECT_FALSE(fs::exists(At("out/a.tmp"))) << "a new text has its owner before it is in place";
}

TEST_F(PendingRecordTest, FileWithoutADirectoryKeepsNothingElseFromBeingCleared) {
    Write("state/zet.pending", At("gone/a") + "\n" + At("out/a") + "\n");
    Write("out/a.tmp", "half");
    EXPECT_THAT(Clear(), SizeIs(2));
    EXPECT_FALSE(fs::exists(At("out/a.tmp")));
    EXPECT_THAT(m_told.warnings, SizeIs(1));
    EXPECT_FALSE(fs::exists(At("state/zet.pending")));
}

TEST_F(PendingRecordTest, WithoutARecordNothingIsCleared) {
    Write("out/a.tmp", "somebody's");
    EXPECT_THAT(Clear(), IsEmpty());
    EXPECT_TRUE(fs::exists(At("out/a.tmp")));
    EXPECT_THAT(m_told.remarks, IsEmpty());
}

}  // namespace
}  // namespace ZET::Deploy
