#include "zet/deploy/Plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "FaceFixture.h"
#include "zet/deploy/Commit.h"
#include "zet/deploy/Edit.h"
#include "zet/deploy/History.h"
#include "zet/deploy/Rollback.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::SizeIs;
using Result = FileOutcome::Result;

/// Wants no more as soon as a file is done.
class Impatient : public Observer {
  public:
    void Done(const FileOutcome&) override { m_isDone = true; }
    bool IsCancelled() override { return m_isDone; }

  private:
    bool m_isDone = false;
};

class PlanTest : public FaceTest {};

TEST_F(PlanTest, WhoeverWouldWaitForAPlanOfItsOwnIsToldAtOnce) {
    Product product(At("zet.conf"), m_options);
    SetParam(product, At("file"), "a", "2");
    const Plan plan = MakePlan(product);
    const Failure failure = FailureIn([&] { SetParam(product, At("file"), "a", "3"); });
    EXPECT_EQ(failure.Facts().file, At("state/zet.lock"));
    EXPECT_EQ(failure.Facts().text, "this program holds the lock already, by a plan");
    EXPECT_EQ(failure.Facts().remedy, "commit the plan or let go of it, then try again");
    EXPECT_THROW(MakePlan(product), Failure);
    EXPECT_THROW(RollBack(product), Failure);
    EXPECT_THROW(EraseHistory(product, At("file")), Failure);
}

TEST_F(PlanTest, PlanThatIsCommittedStandsInNobodysWay) {
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product);
    Commit(product, plan);
    EXPECT_EQ(SetParam(product, At("file"), "a", "2").result, Result::Changed);
    ASSERT_THAT(plan.Files(), SizeIs(2));
    EXPECT_EQ(plan.Files()[0].result, Result::Created);
    EXPECT_THROW(Commit(product, plan), UsageError);
    plan = MakePlan(product);
    EXPECT_EQ(plan.Files()[0].result, Result::Unchanged);
    Commit(product, plan);
}

TEST_F(PlanTest, PlanThatCannotBeCommittedOrBrokeOffStandsInNobodysWay) {
    Write(At("templates/two"), "${nobody}\n");
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product);
    EXPECT_THROW(Commit(product, plan), Failure);
    Write(At("templates/two"), "two\n");
    plan = MakePlan(product);
    Impatient impatient;
    EXPECT_THROW(Commit(product, plan, &impatient), Interrupted);
    plan = MakePlan(product);
    Commit(product, plan);
    EXPECT_TRUE(fs::exists(At("out/two")));
}

TEST_F(PlanTest, PlanThatWasMovedFromSaysSo) {
    Product product(At("zet.conf"), m_options);
    Plan former = MakePlan(product);
    Plan plan = std::move(former);
    EXPECT_THROW(Commit(product, former), UsageError);
    EXPECT_THROW(former.Problems(), UsageError);
    EXPECT_THROW(former.Files(), UsageError);
    EXPECT_THROW(former.Restarts(), UsageError);
    Commit(product, plan);
    EXPECT_TRUE(fs::exists(At("out/two")));
}

}  // namespace
}  // namespace ZET::Deploy
