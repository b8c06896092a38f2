#include "zet/deploy/Undo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "FaceFixture.h"
#include "zet/deploy/Commit.h"
#include "zet/deploy/History.h"
#include "zet/deploy/Status.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// A host that was committed twice, the second time with another realm.
class UndoTest : public FaceTest {
  protected:
    UndoTest() {
        Write(At("out/one"), "old\n");
        Product product(At("zet.conf"), m_options);
        Plan first = MakePlan(product);
        m_first = Commit(product, first).entry.value();
        m_afterFirst = Read(At("out/one"));
    }

    /// The template is another one now.
    std::int64_t CommitAgain() {
        Write(At("etc/one"), "another ${realm}\n");
        Product product(At("zet.conf"), m_options);
        Plan plan = MakePlan(product);
        return Commit(product, plan).entry.value();
    }

    std::int64_t m_first = 0;
    std::string m_afterFirst;
};

TEST_F(UndoTest, LastEntryIsTakenBackAndThatIsAnEntryToo) {
    const std::int64_t second = CommitAgain();
    const std::string afterSecond = Read(At("out/one"));
    Product product(At("zet.conf"), m_options);
    const Outcome outcome = Undo(product);
    EXPECT_TRUE(outcome.isComplete);
    EXPECT_GT(outcome.entry.value(), second);
    EXPECT_THAT(outcome.restarts, ElementsAre("daemon"));
    EXPECT_EQ(Read(At("out/one")), m_afterFirst);
    Undo(product);
    EXPECT_EQ(Read(At("out/one")), afterSecond);
}

TEST_F(UndoTest, EntryBeforeTheFirstCommitBringsBackTheOriginal) {
    Product product(At("zet.conf"), m_options);
    UndoOptions options;
    options.entry = m_first;
    Undo(product, options);
    EXPECT_EQ(Read(At("out/one")), "old\n");
    EXPECT_FALSE(fs::exists(At("out/two")));
    EXPECT_FALSE(fs::exists(At("out/one.before_zet")));
}

TEST_F(UndoTest, WhatOthersEditedKeepsAllFilesFromGoingBack) {
    CommitAgain();
    Write(At("out/one"), "edited\n");
    Product product(At("zet.conf"), m_options);
    const Failure failure = FailureIn([&] { Undo(product); });
    EXPECT_THAT(failure.Lines(), StartsWith(At("out/one") + ": holds another text"));
    EXPECT_EQ(Read(At("out/one")), "edited\n");
    UndoOptions options;
    options.force = true;
    Undo(product, options);
    EXPECT_EQ(Read(At("out/one")), m_afterFirst);
}

TEST_F(UndoTest, NumberThatIsNoEntryIsWrongUse) {
    Product product(At("zet.conf"), m_options);
    UndoOptions options;
    options.entry = 99;
    EXPECT_THROW(Undo(product, options), UsageError);
    EXPECT_THROW(RollBackTo(product, 99), UsageError);
}

TEST_F(UndoTest, HostGoesBackToAnEntry) {
    CommitAgain();
    Product product(At("zet.conf"), m_options);
    EXPECT_TRUE(RollBackTo(product, m_first).isComplete);
    EXPECT_EQ(Read(At("out/one")), m_afterFirst);
    EXPECT_EQ(ListHistory(product).size(), 3U);
}

TEST_F(UndoTest, DryRunTellsAndChangesNothing) {
    CommitAgain();
    const std::string before = Read(At("out/one"));
    m_options.dryRun = true;
    Product product(At("zet.conf"), m_options);
    const Outcome outcome = Undo(product);
    ASSERT_THAT(outcome.files, Not(IsEmpty()));
    EXPECT_EQ(Read(At("out/one")), before);
}

TEST_F(UndoTest, EditIsMergedWithWhatTheTemplateMakesNow) {
    Write(At("etc/one"), "first\nsecond\nthird\n");
    {
        Product product(At("zet.conf"), m_options);
        Plan plan = MakePlan(product);
        Commit(product, plan);
    }
    Write(At("out/one"), Read(At("out/one")) + "mine\n");
    Write(At("etc/one"), "newer\nsecond\nthird\n");
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product, {}, OnEdit::Merge);
    ASSERT_THAT(plan.Problems(), IsEmpty());
    Commit(product, plan);
    EXPECT_THAT(Read(At("out/one")), testing::EndsWith("newer\nsecond\nthird\nmine\n"));
    EXPECT_EQ(StatusOf(product).targets.targets.front().state, "in sync");
}

}  // namespace
}  // namespace ZET::Deploy
