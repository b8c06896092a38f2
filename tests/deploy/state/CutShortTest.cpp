#include "deploy/state/CutShort.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/state/CapturedFile.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class CutShortTest : public HostFixture {
  protected:
    /// What a run that was killed leaves: its open entry, and then what it was at. The file was to become
    /// `after`, unless that was not known yet.
    void RecordOfKilledRun(const std::string& name, const std::optional<std::string>& after = std::nullopt,
                           FileKind kind = FileKind::Edit, std::optional<uid_t> owner = std::nullopt) {
        FileToRecord file = FileThatBecomes(name, after, owner);
        file.file.kind = kind;
        m_number = TheStore().Announce({}, {file});
    }

    FileToRecord FileThatBecomes(const std::string& name, const std::optional<std::string>& after,
                                 std::optional<uid_t> owner = std::nullopt) const {
        FileToRecord file;
        file.file.path = At(name);
        CapturedFile before = Capture(At(name), 1000);
        file.file.before = file.file.after = before.state;
        file.textBefore = before.text;
        file.file.after.exists = true;
        file.file.after.digest.clear();
        file.isPlanned = after.has_value();
        if (after) {
            file.textAfter = *after;
            file.file.after.mode = 0644;
            file.file.after.owner = owner.value_or(geteuid());
        }
        return file;
    }

    Store& TheStore() { return TheHost().HostHistory().ToRecord(); }

    /// As if what was written before had been there long before the run.
    void LetRunBeginLater(const std::string& name) {
        Write(name, "somebody's");
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        RecordOfKilledRun("out/a");
    }

    std::set<std::string> Clear() {
        const WriteLock lock(State(), LockSeeker{"zet-client param set", m_told});
        return SettleCutShort(TheHost(), lock);
    }

    std::int64_t m_number = 0;
};

TEST_F(CutShortTest, ItsFilesAreToldWithoutAChange) {
    EXPECT_THAT(FilesOfCutShort(TheHost()), IsEmpty());
    RecordOfKilledRun("out/a b");
    Write("out/a b.tmp", "half");
    EXPECT_THAT(FilesOfCutShort(TheHost()), ElementsAre(At("out/a b")));
    EXPECT_TRUE(fs::exists(At("out/a b.tmp")));
}

TEST_F(CutShortTest, WhatItHadWrittenIsToldByContent) {
    Write("out/written", "old");
    Write("out/not-yet", "old");
    RecordOfKilledRun("out/written", "new");
    const std::int64_t written = m_number;
    RecordOfKilledRun("out/not-yet", "new");
    Write("out/written", "new");
    Clear();
    ASSERT_TRUE(TheStore().Find(written));
    EXPECT_EQ(TheStore().Find(written)->outcome, EntryOutcome::CutShort);
    EXPECT_TRUE(TheStore().Known(At("out/written")));
    EXPECT_FALSE(TheStore().Find(m_number)) << "it changed nothing";
    EXPECT_FALSE(TheStore().Known(At("out/not-yet")));
}

TEST_F(CutShortTest, WhatSomebodyHadWrittenBeforeItStaysHis) {
    for (const bool isWritten : {false, true}) {
        Commit("out/a", Role::Client);
        Write("out/a", "of somebody");
        FileToRecord file = FileThatBecomes("out/a", "of somebody, and new");
        file.file.kind = FileKind::Target;
        file.file.knownAsBefore = TheStore().Known(At("out/a"))->state;
        file.file.staysKnown = true;
        m_number = TheStore().Announce({}, {file});
        if (isWritten) Write("out/a", "of somebody, and new");
        Clear();
        EXPECT_EQ(TheStore().Known(At("out/a"))->state.size, std::string("text").size());
        EXPECT_EQ(TheStore().Find(m_number).has_value(), isWritten);
        fs::remove(At("out/a"));
    }
}

TEST_F(CutShortTest, WhatSomebodyElseWroteMeanwhileIsNotItsWork) {
    Write("out/a", "old");
    RecordOfKilledRun("out/a", "new");
    Write("out/a", "of somebody else");
    Clear();
    EXPECT_FALSE(TheStore().Known(At("out/a")));
    EXPECT_EQ(Read("out/a"), "of somebody else");
}

TEST_F(CutShortTest, WhatItMayHaveReplacedIsKeptBeforeSomebodyElsesWork) {
    for (const bool isThere : {true, false}) {
        Write("out/a", "old");
        RecordOfKilledRun("out/a", "new");
        if (isThere)
            Write("out/a", "of somebody else");
        else
            fs::remove(At("out/a"));
        Clear();
        const auto change = TheStore().ChangeIn(m_number, At("out/a"));
        ASSERT_TRUE(change && change->before.text);
        EXPECT_EQ(TheStore().Text(*change->before.text), "old");
        EXPECT_FALSE(TheStore().Known(At("out/a")));
    }
}

TEST_F(CutShortTest, WhereNothingWasThereIsNothingToKeep) {
    RecordOfKilledRun("out/a", "new");
    Write("out/a", "of somebody else");
    Clear();
    EXPECT_FALSE(TheStore().Find(m_number));
}

/// Nobody can tell whether the run left its new text there, or somebody made a copy after the run's rename.
TEST_F(CutShortTest, WhatItMayHaveReplacedIsKeptAlsoWhereItsNewTextStandsBesideTheFile) {
    Write("out/a", "old");
    RecordOfKilledRun("out/a", "new");
    Write("out/a.tmp", "new");
    Write("out/a", "of somebody else");
    Clear();
    const auto change = TheStore().ChangeIn(m_number, At("out/a"));
    ASSERT_TRUE(change && change->before.text);
    EXPECT_EQ(TheStore().Text(*change->before.text), "old");
    EXPECT_EQ(Read("out/a"), "of somebody else");
}

TEST_F(CutShortTest, ReserveThatItMayHaveDroppedIsKeptWhenALinkTakesItsName) {
    Write("out/a.before_zet", "original");
    RecordOfKilledRun("out/a.before_zet", std::nullopt, FileKind::Companion);
    fs::remove(At("out/a.before_zet"));
    fs::create_symlink("elsewhere", At("out/a.before_zet"));
    Clear();
    const auto change = TheStore().ChangeIn(m_number, At("out/a.before_zet"));
    ASSERT_TRUE(change && change->before.text);
    EXPECT_EQ(TheStore().Text(*change->before.text), "original");
}

TEST_F(CutShortTest, WhatItWasNotYetGoingToWriteIsUntouchedWhateverIsThere) {
    Write("out/a", "old");
    RecordOfKilledRun("out/a");
    fs::remove(At("out/a"));
    fs::create_symlink("elsewhere", At("out/a"));
    Clear();
    EXPECT_FALSE(TheStore().Find(m_number));
}

TEST_F(CutShortTest, OnlyABeginOfTheTextThatWasToBeWrittenIsRemoved) {
    Write("out/a", "old");
    RecordOfKilledRun("out/a", "the new text");
    Write("out/a.tmp", "the n");
    Clear();
    EXPECT_FALSE(fs::exists(At("out/a.tmp")));
    for (const char* text : {"the old", "the new text and more"}) {
        RecordOfKilledRun("out/a", "the new text");
        Write("out/a.tmp", text);
        m_told.warnings.clear();
        TheHost().EndCall();
        Clear();
        EXPECT_EQ(Read("out/a.tmp"), text);
        EXPECT_THAT(m_told.warnings, SizeIs(1));
        fs::remove(At("out/a.tmp"));
    }
}

TEST_F(CutShortTest, TemporaryFileOfAKilledRunIsRemovedAndTold) {
    Write("out/a", "text");
    RecordOfKilledRun("out/a");
    Write("out/a.tmp", "half of the te");
    EXPECT_THAT(Clear(), ElementsAre(At("out/a")));
    EXPECT_FALSE(fs::exists(At("out/a.tmp")));
    EXPECT_EQ(Read("out/a"), "text");
    EXPECT_THAT(FilesOfCutShort(TheHost()), IsEmpty());
    EXPECT_THAT(m_told.remarks,
                ElementsAre("removed " + At("out/a.tmp") + ", which a run that was cut short left"));
    EXPECT_THAT(m_told.warnings, IsEmpty());
}

TEST_F(CutShortTest, UnfinishedCopiesAndReservesAreRemovedAsWell) {
    constexpr const char* kUnfinished[] = {"out/a.before_zet.Ab3xYz.tmp", "out/a.000000.tmp",
                                           "out/a.before_zet.tmp", "out/a.no_file_before_zet.tmp"};
    RecordOfKilledRun("out/a");
    for (const char* name : kUnfinished)
        Write(name, "half");
    Write("out/a.before_zet", "kept");
    Write("out/b.Ab3xYz.tmp", "kept");
    Write("out/a.Ab3xYz7.tmp", "kept");
    Clear();
    EXPECT_THAT(m_told.remarks, SizeIs(4));
    for (const char* name : kUnfinished)
        EXPECT_FALSE(fs::exists(At(name))) << name;
    for (const char* name : {"out/a.before_zet", "out/b.Ab3xYz.tmp", "out/a.Ab3xYz7.tmp"})
        EXPECT_TRUE(fs::exists(At(name))) << name;
}

TEST_F(CutShortTest, UnfinishedReserveThatWasWrittenAloneIsRemovedAsWell) {
    Write("out/a", "now");
    RecordOfKilledRun("out/a.before_zet", "the original", FileKind::Companion);
    Write("out/a.before_zet.Ab3xYz.tmp", "the ori");
    Write("out/a.000000.tmp", "somebody's");
    Clear();
    EXPECT_FALSE(fs::exists(At("out/a.before_zet.Ab3xYz.tmp")));
    EXPECT_EQ(Read("out/a.000000.tmp"), "somebody's");
}

TEST_F(CutShortTest, WhatWasThereBeforeTheRunStaysAndIsTold) {
    LetRunBeginLater("out/a.tmp");
    Clear();
    EXPECT_EQ(Read("out/a.tmp"), "somebody's");
    ASSERT_THAT(m_told.warnings, SizeIs(1));
    EXPECT_THAT(m_told.warnings[0], HasSubstr(At("out/a.tmp") + ": stays"));
}

TEST_F(CutShortTest, WhatHasAnotherNameOrIsNoFileStays) {
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

TEST_F(CutShortTest, WhatBelongsToNeitherRootNorTheOwnerOfTheFileStays) {
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

TEST_F(CutShortTest, FileWithoutADirectoryKeepsNothingElseFromBeingCleared) {
    fs::create_directory(At("gone"));
    RecordOfKilledRun("gone/a");
    fs::remove(At("gone"));
    RecordOfKilledRun("out/a");
    Write("out/a.tmp", "half");
    EXPECT_THAT(Clear(), SizeIs(2));
    EXPECT_FALSE(fs::exists(At("out/a.tmp")));
    EXPECT_THAT(m_told.warnings, SizeIs(1));
    EXPECT_THAT(FilesOfCutShort(TheHost()), IsEmpty());
}

TEST_F(CutShortTest, WithoutARecordNothingIsCleared) {
    Write("out/a.tmp", "somebody's");
    EXPECT_THAT(Clear(), IsEmpty());
    EXPECT_TRUE(fs::exists(At("out/a.tmp")));
    EXPECT_THAT(m_told.remarks, IsEmpty());
}

TEST_F(CutShortTest, WhatItHadGivenToTheOwnerThatTheFileWasToHaveIsRemoved) {
    if (geteuid() != 0) GTEST_SKIP() << "root alone gives files away";
    constexpr uid_t kOwner = 12345;
    for (const uid_t recorded : {kOwner, kOwner + 1}) {
        RecordOfKilledRun("out/new", "text\n", FileKind::Edit, recorded);
        Write("out/new.tmp", "text\n");
        ASSERT_EQ(chown(At("out/new.tmp").c_str(), kOwner, kOwner), 0);
        Clear();
        EXPECT_EQ(fs::exists(At("out/new.tmp")), recorded != kOwner) << "of somebody else it stays";
    }
}

}  // namespace
}  // namespace ZET::Deploy
