#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>

#include "FaceFixture.h"
#include "zet/deploy/Commit.h"
#include "zet/deploy/Doctor.h"
#include "zet/deploy/Edit.h"
#include "zet/deploy/Explain.h"
#include "zet/deploy/History.h"
#include "zet/deploy/Rollback.h"
#include "zet/deploy/Status.h"
#include "zet/deploy/Targets.h"
#include "zet/deploy/TemplateCheck.h"
#include "zet/deploy/Templates.h"
#include "zet/deploy/Values.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;
using Result = FileOutcome::Result;

/// Counts what it is told, and may want no more.
class Watcher : public Observer {
  public:
    void Done(const FileOutcome&) override { ++done; }
    bool IsCancelled() override { return done >= most; }

    int done = 0;
    int most = 100;
};

TEST_F(FaceTest, HostIsPlannedCommittedAndTakenBack) {
    Write(At("out/one"), "old\n");
    Watcher watcher;
    Product product(At("zet.conf"), m_options, &watcher);
    EXPECT_THAT(Values(product), Contains(Pair("${realm}", "EXAMPLE.ORG")));
    ASSERT_THAT(ListTargets(product), SizeIs(2));
    EXPECT_THAT(CheckTemplates(product), IsEmpty());
    EXPECT_EQ(StatusOf(product).targets.targets.front().state, "not committed");
    {
        Plan plan = MakePlan(product);
        ASSERT_THAT(plan.Problems(), IsEmpty());
        ASSERT_THAT(plan.Files(), SizeIs(2));
        EXPECT_EQ(plan.Files()[0].result, Result::Changed);
        EXPECT_EQ(plan.Files()[1].result, Result::Created);
        EXPECT_THAT(plan.Restarts(), ElementsAre("daemon"));
        EXPECT_EQ(Read(At("out/one")), "old\n");
        const Outcome outcome = Commit(product, plan);
        ASSERT_THAT(outcome.files, SizeIs(2));
        EXPECT_EQ(outcome.files[0].reserve, At("out/one.before_zet"));
        EXPECT_THAT(outcome.restarts, ElementsAre("daemon"));
        EXPECT_EQ(watcher.done, 2);
    }
    EXPECT_THAT(Read(At("out/one")), HasSubstr("realm EXAMPLE.ORG\n"));
    EXPECT_TRUE(StatusOf(product).targets.IsInSync());
    EXPECT_FALSE(StatusOf(product).role.commitTime.empty());
    EXPECT_EQ(Explain(product, At("out/one")).templateName, "one");

    const Outcome undone = RollBack(product);
    EXPECT_TRUE(undone.isComplete);
    ASSERT_THAT(undone.files, SizeIs(2));
    EXPECT_EQ(undone.files[1].result, Result::Removed);
    EXPECT_EQ(Read(At("out/one")), "old\n");
    EXPECT_FALSE(fs::exists(At("out/two")));
}

TEST_F(FaceTest, PlanOfADryRunWritesNothingWhenItIsCommitted) {
    m_options.dryRun = true;
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product, {"two"});
    ASSERT_THAT(Commit(product, plan).files, SizeIs(1));
    EXPECT_TRUE(fs::is_empty(At("out")));
    EXPECT_TRUE(fs::is_empty(At("state")));
}

TEST_F(FaceTest, PlanWithProblemsCannotBeCommitted) {
    Write(At("templates/two"), "${nobody}\n");
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product);
    ASSERT_THAT(plan.Problems(), SizeIs(1));
    EXPECT_EQ(plan.Problems()[0].line, 1);
    EXPECT_THAT(plan.Files(), IsEmpty());
    EXPECT_THROW(Commit(product, plan), Failure);
    EXPECT_TRUE(fs::is_empty(At("out")));
}

TEST_F(FaceTest, ObserverEndsACommitBetweenTwoFilesAndAnotherOneCompletesIt) {
    Product product(At("zet.conf"), m_options);
    Watcher watcher;
    watcher.most = 1;
    {
        Plan plan = MakePlan(product);
        EXPECT_THROW(Commit(product, plan, &watcher), Interrupted);
    }
    EXPECT_TRUE(fs::exists(At("out/one")));
    EXPECT_FALSE(fs::exists(At("out/two")));
    Plan plan = MakePlan(product);
    Commit(product, plan);
    EXPECT_TRUE(fs::exists(At("out/two")));
}

TEST_F(FaceTest, TemplateThatTheModuleWouldNeverReturnFromIsTold) {
    const StringMap values = {{"${a}", "x${a}"}};
    ASSERT_THAT(CheckTemplate(values, "one\n${a}\n", "t"), SizeIs(1));
    EXPECT_EQ(CheckTemplate(values, "one\n${a}\n", "t")[0].line, 2);
    EXPECT_THAT(CheckTemplate(values, "one\n"), IsEmpty());
}

TEST_F(FaceTest, LinesOfAnyFileAreReadSetAndBroughtBack) {
    m_options.needsConfigFile = false;
    Product product(At("zet.conf"), m_options);
    EXPECT_EQ(GetParam(product, At("file"), "a"), "1");
    EXPECT_EQ(GetParam(product, At("file"), "c"), std::nullopt);
    EXPECT_EQ(SetParam(product, At("file"), "a", "3").result, Result::Changed);
    EXPECT_EQ(GetParam(product, At("file"), "a"), "3");
    EXPECT_EQ(GetLine(product, At("file"), "^b"), "b=2");
    EXPECT_EQ(SetLine(product, At("file"), "^b", "b=4").result, Result::Changed);
    EXPECT_EQ(RestoreParam(product, At("file"), "a", {.allBlocks = true}).result, Result::Changed);
    EXPECT_THAT(Read(At("file")), HasSubstr("a=1\n"));
    EXPECT_EQ(RestoreFile(product, At("file")).result, Result::Restored);
    EXPECT_EQ(Read(At("file")), "a=1\nb=2\n");
    EXPECT_EQ(ReserveFile(product, At("file")).result, Result::Reserved);
    EXPECT_EQ(ForgetReserve(product, At("file")).result, Result::Forgotten);
    EXPECT_EQ(StripFile(product, At("file")).result, Result::Unchanged);
    EXPECT_THROW(SetParam(product, At("missing"), "a", "1"), Failure);
    EXPECT_THROW(SetParam(product, At("file"), "", "1"), UsageError);
}

TEST_F(FaceTest, OptionIsSetInTheMainFile) {
    Product product(At("zet.conf"), m_options);
    EXPECT_EQ(SetOption(product, "SERVER_ID", "7").result, Result::Changed);
    EXPECT_EQ(GetOption(product, "SERVER_ID"), "7");
    EXPECT_EQ(GetOption(product, "NOBODY"), std::nullopt);
}

TEST_F(FaceTest, DamagedMarkersAreToldWithARepair) {
    Write(At("file"), "# ---ZET_BEGIN---\na=1\n# ----ZET_END----\n# ----ZET_END----\n");
    Product product(At("zet.conf"), m_options);
    const Diagnosis diagnosis = Diagnose(product, At("file"));
    ASSERT_THAT(diagnosis.problems, SizeIs(1));
    EXPECT_EQ(diagnosis.problems[0].line, 4U);
    EXPECT_THROW(SetParam(product, At("file"), "a", "2"), Failure);
}

TEST_F(FaceTest, HistoryTellsEntriesTextsAndDifferences) {
    m_options.message = "why";
    Product product(At("zet.conf"), m_options);
    EXPECT_THAT(ListHistory(product), IsEmpty());
    EXPECT_THROW(ShowEntry(product, 1), UsageError);
    EditOptions options;
    options.noBackup = options.noMarkers = true;
    SetParam(product, At("file"), "a", "2", options);
    const std::vector<HistoryEntry> entries = ListHistory(product, At("file"));
    ASSERT_THAT(entries, SizeIs(1));
    EXPECT_EQ(entries[0].message, "why");
    EXPECT_EQ(entries[0].outcome, "done");
    EXPECT_EQ(entries[0].user, getuid());
    ASSERT_THAT(ShowEntry(product, 1).files, SizeIs(1));
    EXPECT_EQ(ShowEntry(product, 1).files[0].path, At("file"));
    EXPECT_EQ(ShowEntry(product, 1).files[0].result, Result::Changed);
    EXPECT_EQ(TextBefore(product, 1, At("file")), "a=1\nb=2\n");
    EXPECT_EQ(TextAfter(product, 1, At("file")), "a=2\nb=2\n");
    const std::vector<HistoryDiff> diffs = DiffHistory(product, 1);
    ASSERT_THAT(diffs, SizeIs(1));
    EXPECT_THAT(diffs[0].diff.text, HasSubstr("-a=1\n+a=2\n"));
}

TEST_F(FaceTest, HistoryIsExportedAndErased) {
    Product product(At("zet.conf"), m_options);
    SetParam(product, At("file"), "a", "2");
    std::ostringstream stream;
    ExportHistory(product, stream);
    EXPECT_THAT(stream.str(), HasSubstr("\na=2\n"));
    std::ofstream full("/dev/full");
    EXPECT_NE(FailureIn([&] { ExportHistory(product, full); }).Facts().remedy, "");
    std::ofstream throwing("/dev/full");
    throwing.exceptions(std::ios::badbit | std::ios::failbit);
    EXPECT_NE(FailureIn([&] { ExportHistory(product, throwing); }).Facts().remedy, "");
    std::ofstream closed;
    closed.setstate(std::ios::failbit);
    EXPECT_NE(FailureIn([&] { ExportHistory(product, closed); }).Facts().remedy, "");
    const ErasedHistory erased = EraseHistory(product, At("file"));
    EXPECT_EQ(erased.path, At("file"));
    EXPECT_EQ(erased.texts, 2U);
    EXPECT_THROW(TextBefore(product, 1, At("file")), Failure);
    std::ostringstream without;
    ExportHistory(product, without);
    EXPECT_THAT(without.str(), Not(HasSubstr("\na=2\n")));
}

TEST_F(FaceTest, ParameterOfASectionIsReadSetCommentedOutAndBroughtBack) {
    Write(At("file"), "a=0\n[one]\na=1\n[two]\na=2\n");
    Product product(At("zet.conf"), m_options);
    EXPECT_EQ(GetParam(product, At("file"), "a", "two"), "2");
    EXPECT_EQ(GetParam(product, At("file"), "a", ""), "0");
    EXPECT_EQ(SetParam(product, At("file"), "a", "3", {.section = "two"}).result, Result::Changed);
    EXPECT_EQ(GetParam(product, At("file"), "a", "two"), "3");
    EXPECT_EQ(UnsetParam(product, At("file"), "a", {.section = "one"}).result, Result::Changed);
    EXPECT_EQ(GetParam(product, At("file"), "a", "one"), std::nullopt);
    EXPECT_EQ(RestoreParam(product, At("file"), "a", {.section = "one"}).result, Result::Changed);
    EXPECT_EQ(GetParam(product, At("file"), "a", "one"), "1");
    EXPECT_THROW(GetParam(product, At("file"), "a"), Failure);
    EXPECT_THROW(UnsetParam(product, At("file"), "a"), Failure);
}

TEST_F(FaceTest, LinesStandInSectionsToo) {
    Write(At("file"), "a=0\n[one]\na=1\n[two]\na=2\n");
    Product product(At("zet.conf"), m_options);
    EXPECT_EQ(GetLine(product, At("file"), "^a", "two"), "a=2");
    EXPECT_EQ(GetLine(product, At("file"), "^b", "two"), std::nullopt);
    EXPECT_EQ(SetLine(product, At("file"), "^a", "a=3", {.section = "two"}).result, Result::Changed);
    EXPECT_EQ(GetLine(product, At("file"), "^a", "one"), "a=1");
    EXPECT_EQ(GetLine(product, At("file"), "^a", "two"), "a=3");
    EXPECT_EQ(RestoreLine(product, At("file"), "^a", {.section = "two"}).result, Result::Changed);
    EXPECT_EQ(GetLine(product, At("file"), "^a", "two"), "a=2");
    EXPECT_THROW(SetLine(product, At("file"), "^a", "a=3", {.section = "three"}), Failure);
}

TEST_F(FaceTest, WhatCanBeNoNameIsRefusedWhole) {
    const std::string name("file\0x", 6);
    Product product(At("zet.conf"), m_options);
    EXPECT_THROW(GetParam(product, At(name), "a"), UsageError);
    EXPECT_THROW(SetParam(product, At(name), "a", "2"), UsageError);
    EXPECT_THROW(ReserveFile(product, At(name)), UsageError);
    EXPECT_THROW(TextBefore(product, 1, At(name)), UsageError);
    EXPECT_EQ(Read(At("file")), "a=1\nb=2\n");
}

TEST_F(FaceTest, ProductOfNothingIsAUsageError) {
    EXPECT_THROW(Product("", m_options), UsageError);
    m_options.role = static_cast<Role>(7);
    EXPECT_THROW(Product(At("zet.conf"), m_options), UsageError);
}

TEST_F(FaceTest, CommandThatCannotBeRunKeepsTheSystemsNumber) {
    std::ofstream(At("templates/targets.toml"), std::ios::app) << "check = [\"" + At("missing") + "\"]\n";
    Product product(At("zet.conf"), m_options);
    EXPECT_EQ(FailureIn([&] { MakePlan(product); }).ErrorNumber(), ENOENT);
}

TEST_F(FaceTest, EditsThatKnowNoSectionsRefuseOne) {
    Product product(At("zet.conf"), m_options);
    const EditOptions options = {.section = "one"};
    EXPECT_THROW(StripFile(product, At("file"), options), UsageError);
    EXPECT_THROW(ForgetReserve(product, At("file"), options), UsageError);
    EXPECT_EQ(Read(At("file")), "a=1\nb=2\n");
}

TEST_F(FaceTest, FailureOfTheSystemTellsFileReasonAndRemedyApart) {
    Product product(At("zet.conf"), m_options);
    const Failure failure = FailureIn([&] { SetParam(product, At("missing"), "a", "1"); });
    EXPECT_EQ(failure.Facts().file, At("missing"));
    EXPECT_EQ(failure.Facts().text, "does not exist");
    EXPECT_EQ(failure.Facts().remedy, "create it, or correct the path");
    EXPECT_EQ(failure.ErrorNumber(), ENOENT);
    EXPECT_EQ(failure.what(), At("missing") + ": does not exist (create it, or correct the path)");
}

TEST_F(FaceTest, FailureInsideAFileTellsTheLine) {
    Write(At("file"), "# ---ZET_BEGIN---\na=1\n# ----ZET_END----\n# ----ZET_END----\n");
    Product product(At("zet.conf"), m_options);
    const Failure failure = FailureIn([&] { SetParam(product, At("file"), "a", "2"); });
    EXPECT_EQ(failure.Facts().file, At("file"));
    EXPECT_EQ(failure.Facts().line, 4);
    EXPECT_THAT(failure.Facts().remedy, HasSubstr(" doctor "));
    EXPECT_EQ(failure.ErrorNumber(), 0);
}

/// No file gets larger, for as long as the object lives.
class LimitedFiles {
  public:
    explicit LimitedFiles(rlim_t size) : m_formerHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_former);
        const struct rlimit limit = {size, m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~LimitedFiles() {
        setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_formerHandler);
    }
    LimitedFiles(const LimitedFiles&) = delete;
    LimitedFiles& operator=(const LimitedFiles&) = delete;

  private:
    struct rlimit m_former = {};
    void (*m_formerHandler)(int);
};

TEST_F(FaceTest, FailureOfTheCoreTellsTheFileByTheNameOfItsReader) {
    // Or the history would be the first to have no room.
    std::ofstream(At("zet.conf"), std::ios::app) << "ZET_HISTORY=no\n";
    Product product(At("zet.conf"), m_options);
    Write(At("file"), std::string(10'000, 'x'));
    const LimitedFiles limit(5'000);
    const Failure failure = FailureIn([&] { ReserveFile(product, At("file")); });
    EXPECT_EQ(failure.Facts().file, At("file.before_zet"));
    EXPECT_EQ(failure.Facts().text,
              "Failed to copy file '" + At("file") + "' to '" + At("file.before_zet") + "': File too large");
    EXPECT_EQ(failure.Facts().remedy, "allow larger files, then run the command again");
    EXPECT_EQ(failure.ErrorNumber(), EFBIG);
}

TEST_F(FaceTest, ModuleThatIsMissingIsAFailureWithItsNumber) {
    m_options.moduleFile = At("none.so");
    const Failure failure = FailureIn([&] { const Product product(At("zet.conf"), m_options); });
    EXPECT_EQ(failure.Facts().file, At("none.so"));
    EXPECT_EQ(failure.Facts().remedy, "install the product again, or name its module with --module");
    EXPECT_EQ(failure.ErrorNumber(), ENOENT);
}

TEST_F(FaceTest, OptionThatWouldBreakTheMainFileKeepsWhatIsWrong) {
    Product product(At("zet.conf"), m_options);
    const Failure failure = FailureIn([&] { SetOption(product, "ZET_SYNC", "perhaps"); });
    EXPECT_THAT(failure.what(), StartsWith("the option would break the configuration file: "));
    EXPECT_NE(failure.Facts().remedy, "");
    EXPECT_THAT(failure.Facts().text, Not(HasSubstr(failure.Facts().remedy)));
}

TEST_F(FaceTest, MainFileThatIsMissingIsAnError) {
    const Failure failure = FailureIn([&] { const Product product(At("missing.conf"), m_options); });
    EXPECT_EQ(failure.Facts().file, At("missing.conf"));
    EXPECT_EQ(failure.Facts().remedy, "name a configuration file that exists and is readable");
    EXPECT_EQ(failure.ErrorNumber(), ENOENT);
}

TEST_F(FaceTest, MainFileThatIsBrokenIsAnErrorWithTheLine) {
    Write(At("zet.conf"), "A=1\nbroken\n");
    const Failure failure = FailureIn([&] { const Product product(At("zet.conf"), m_options); });
    EXPECT_EQ(failure.Facts().file, At("zet.conf"));
    EXPECT_EQ(failure.Facts().line, 2);
    EXPECT_EQ(failure.Facts().text, "no \"=\" in the line");
}

/// Installs the working copies, and ships newer templates then.
class UpgradeTest : public FaceTest {
  protected:
    UpgradeTest() {
        Write(At("templates/one"), "first\nrealm ${realm}\nlast\n");
        Product product(At("zet.conf"), m_options);
        Plan plan = MakePlan(product);
        Commit(product, plan);
        Write(At("templates/one"), "first\nrealm ${realm}\nnewer\n");
        Write(At("templates/two"), "newer\n");
    }
};

TEST_F(UpgradeTest, WorkingCopiesAreBroughtUpToTheShippedTemplates) {
    Write(At("etc/one"), "mine\nrealm ${realm}\nlast\n");
    Product product(At("zet.conf"), m_options);
    ASSERT_THAT(ListTemplates(product), SizeIs(2));
    EXPECT_TRUE(ListTemplates(product)[1].isInstalled);
    EXPECT_EQ(TemplateStates(product)[0].state, "edited, newer shipped");
    EXPECT_EQ(TemplateStates(product)[1].state, "newer shipped");
    EXPECT_THAT(StatusOf(product).targets.newerTemplates, ElementsAre("one", "two"));
    Watcher watcher;
    const Outcome outcome = UpgradeTemplates(product, {}, &watcher);
    ASSERT_THAT(outcome.files, SizeIs(2));
    EXPECT_TRUE(outcome.entry);
    EXPECT_EQ(watcher.done, 2);
    EXPECT_EQ(Read(At("etc/one")), "mine\nrealm ${realm}\nnewer\n");
    EXPECT_EQ(Read(At("etc/two")), "newer\n");
    EXPECT_THAT(StatusOf(product).targets.newerTemplates, IsEmpty());
}

TEST_F(UpgradeTest, ConflictIsAFailureWithItsPlaceAndWritesNothing) {
    Write(At("etc/one"), "first\nrealm ${realm}\nmine\n");
    Product product(At("zet.conf"), m_options);
    const Failure failure = FailureIn([&] { UpgradeTemplates(product); });
    EXPECT_THAT(failure.Lines(), StartsWith(At("etc/one") + ":3: was edited here"));
    EXPECT_EQ(Read(At("etc/two")), "two\n");
}

TEST_F(FaceTest, CertainRepairIsWritten) {
    Write(At("file"), "# ---ZET_BEGIN---\na=1\n  # ----ZET_END----\n");
    Product product(At("zet.conf"), m_options);
    const Repair repair = Fix(product, At("file"));
    EXPECT_THAT(repair.found.problems, SizeIs(1));
    EXPECT_EQ(repair.outcome.reserve, At("file.before_zet"));
    EXPECT_EQ(Read(At("file")), "# ---ZET_BEGIN---\na=1\n# ----ZET_END----\n");
    EXPECT_EQ(Fix(product, At("file")).outcome.result, Result::Unchanged);
    Write(At("file"), "# ---ZET_BEGIN---\na=1\nb=2\n");
    EXPECT_EQ(FailureIn([&] { Fix(product, At("file")); }).Facts().file, At("file"));
}

}  // namespace
}  // namespace ZET::Deploy
