#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "FaceFixture.h"
#include "zet/deploy/Commit.h"
#include "zet/deploy/Edit.h"
#include "zet/deploy/History.h"
#include "zet/deploy/Rollback.h"
#include "zet/deploy/Status.h"
#include "zet/deploy/Undo.h"
#include "zet/deploy/Values.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Pair;
using testing::SizeIs;
using Result = FileOutcome::Result;

/// A program that keeps one product while the host changes.
class LongLifeTest : public FaceTest {
  protected:
    static Outcome PlanAndCommit(Product& product) {
        Plan plan = MakePlan(product);
        EXPECT_THAT(plan.Problems(), IsEmpty());
        return Commit(product, plan);
    }

    /// As another program does it.
    void AddToMainFile(const std::string& line) const {
        Write(At("zet.conf"), Read(At("zet.conf")) + line + "\n");
    }

    /// The directory gets another name, and a new one has the former.
    void Swap(const std::string& directory) const {
        fs::rename(At(directory), At(directory + ".old"));
        fs::create_directory(At(directory));
    }

    bool IsHeld(const std::string& path) const {
        for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            if (fs::read_symlink(entry, gone) == path) return true;
        }
        return false;
    }
};

TEST_F(LongLifeTest, ParameterThatAnotherProgramSetIsInTheNextCommit) {
    Product product(At("zet.conf"), m_options);
    PlanAndCommit(product);
    AddToMainFile("REALM=NEW.ORG");
    EXPECT_EQ(GetOption(product, "REALM"), "NEW.ORG");
    EXPECT_FALSE(StatusOf(product).targets.IsInSync());
    PlanAndCommit(product);
    EXPECT_THAT(Read(At("out/one")), HasSubstr("realm NEW.ORG\n"));
}

TEST_F(LongLifeTest, ParameterThatIsNoMoreInTheMainFileHasNoValue) {
    const std::string former = Read(At("zet.conf"));
    AddToMainFile("REALM=NEW.ORG\nOWN=mine");
    Product product(At("zet.conf"), m_options);
    EXPECT_THAT(Values(product), Contains(Pair("${own}", "mine")));
    Write(At("zet.conf"), former);
    EXPECT_EQ(GetOption(product, "REALM"), "EXAMPLE.ORG");
    EXPECT_EQ(GetOption(product, "OWN"), std::nullopt);
    EXPECT_THAT(Values(product), Not(Contains(Key("${own}"))));
}

TEST_F(LongLifeTest, DefaultsAndValuesOfNewFilesAreInTheNextCommit) {
    Product product(At("zet.conf"), m_options);
    PlanAndCommit(product);
    fs::create_directories(At("etc/defaults.d"));
    fs::create_directories(At("etc/values.d"));
    Write(At("etc/defaults.d/fleet.conf"), "fleet=a\n");
    Write(At("etc/values.d/host"), "b\nc\n");
    Write(At("etc/two"), "${fleet} ${host}\n");
    PlanAndCommit(product);
    EXPECT_THAT(Read(At("out/two")), HasSubstr("a b\nc\n"));
}

TEST_F(LongLifeTest, OptionThatWasSetIsInTheNextCommit) {
    Product product(At("zet.conf"), m_options);
    SetOption(product, "REALM", "NEW.ORG");
    EXPECT_EQ(GetOption(product, "REALM"), "NEW.ORG");
    PlanAndCommit(product);
    EXPECT_THAT(Read(At("out/one")), HasSubstr("realm NEW.ORG\n"));
    EXPECT_TRUE(StatusOf(product).targets.IsInSync());
}

TEST_F(LongLifeTest, OptionThatWasTakenBackHasItsFormerValue) {
    Product product(At("zet.conf"), m_options);
    SetOption(product, "REALM", "NEW.ORG");
    Undo(product);
    EXPECT_EQ(GetOption(product, "REALM"), "EXAMPLE.ORG");
    SetOption(product, "REALM", "NEW.ORG");
    RollBackTo(product, 2);
    EXPECT_EQ(GetOption(product, "REALM"), "EXAMPLE.ORG");
}

TEST_F(LongLifeTest, ParameterOfTheMainFileIsAnOption) {
    Product product(At("zet.conf"), m_options);
    SetParam(product, At("zet.conf"), "DOMAIN", "example.net");
    EXPECT_EQ(GetOption(product, "DOMAIN"), "example.net");
}

TEST_F(LongLifeTest, MainFileThatIsGoneIsAFailureUntilItIsBack) {
    Product product(At("zet.conf"), m_options);
    fs::rename(At("zet.conf"), At("moved"));
    EXPECT_EQ(FailureIn([&] { GetOption(product, "REALM"); }).Facts().file, At("zet.conf"));
    fs::rename(At("moved"), At("zet.conf"));
    EXPECT_EQ(GetOption(product, "REALM"), "EXAMPLE.ORG");
}

TEST_F(LongLifeTest, MainFileStaysTheOneThatWasNamedWhereverTheProgramGoes) {
    const fs::path former = fs::current_path();
    fs::current_path(m_directory);
    std::optional<Product> product;
    product.emplace("zet.conf", m_options);
    fs::current_path(At("out"));
    Write(At("out/zet.conf"), "DOMAIN=example.net\n");
    EXPECT_EQ(GetOption(*product, "DOMAIN"), "example.org");
    fs::current_path(former);
}

TEST_F(LongLifeTest, DirectoriesOfATreeStayInIt) {
    const std::string tree = At("tree");
    for (const std::string& directory : {At("cfg"), At("kept")}) {
        fs::create_directories(directory);
        fs::create_directories(tree + directory);
    }
    for (const char* name : {"etc", "templates", "state", "out"})
        fs::create_directories(tree + "/" + name);
    Write(tree + "/zet.conf",
          "DOMAIN=example.org\nSERVER=server.example.org\nZET_SYNC=no\nZET_CFG_DIR=/etc\n"
          "ZET_CFG_TEMPL_DIR=/templates\nZET_VAR_LIB_DIR=/state\n");
    Write(tree + "/templates/one", "realm ${realm}\n");
    Write(tree + "/templates/targets.toml", "[templates.\"one\"]\ntarget = \"/out/one\"\nroles = \"both\"\n");
    m_options.root = tree;
    Product product("/zet.conf", m_options);
    SetOption(product, "ZET_CFG_DIR", At("cfg"));
    SetOption(product, "ZET_VAR_LIB_DIR", At("kept"));
    EXPECT_EQ(GetOption(product, "ZET_CFG_DIR"), tree + At("cfg"));
    PlanAndCommit(product);
    EXPECT_TRUE(fs::exists(tree + "/out/one"));
    EXPECT_TRUE(fs::exists(tree + At("cfg/one")));
    EXPECT_TRUE(fs::exists(tree + At("kept/zet.lock")));
    EXPECT_TRUE(fs::is_empty(At("cfg")));
    EXPECT_TRUE(fs::is_empty(At("kept")));
}

TEST_F(LongLifeTest, EditGoesWhereTheNameLeadsNow) {
    fs::create_directory(At("d"));
    Write(At("d/f"), "a=1\n");
    Product product(At("zet.conf"), m_options);
    SetParam(product, At("d/f"), "a", "2");
    const std::string former = Read(At("d/f"));
    Swap("d");
    Write(At("d/f"), "a=1\n");
    SetParam(product, At("d/f"), "a", "3");
    EXPECT_EQ(GetParam(product, At("d/f"), "a"), "3");
    EXPECT_EQ(Read(At("d.old/f")), former);

    fs::remove_all(At("d"));
    fs::create_directory(At("d"));
    Write(At("d/f"), "a=1\n");
    EXPECT_EQ(SetParam(product, At("d/f"), "a", "4").result, Result::Changed);
    EXPECT_EQ(GetParam(product, At("d/f"), "a"), "4");
}

TEST_F(LongLifeTest, NoDirectoryIsHeldBetweenCalls) {
    fs::create_directory(At("d"));
    Write(At("d/f"), "a=1\n");
    Product product(At("zet.conf"), m_options);
    SetParam(product, At("d/f"), "a", "2");
    EXPECT_FALSE(IsHeld(At("d")));
    EXPECT_THROW(SetParam(product, At("d/none"), "a", "2"), Failure);
    EXPECT_FALSE(IsHeld(At("d")));
    Plan plan = MakePlan(product);
    EXPECT_FALSE(IsHeld(At("out")));
    Commit(product, plan);
    EXPECT_FALSE(IsHeld(At("out")));
}

TEST_F(LongLifeTest, CommitWritesNewFilesWhereTheNameLeadsNow) {
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product);
    Swap("out");
    const Outcome outcome = Commit(product, plan);
    ASSERT_THAT(outcome.files, SizeIs(2));
    EXPECT_TRUE(fs::exists(At("out/one")));
    EXPECT_TRUE(fs::exists(At("out/two")));
    EXPECT_TRUE(fs::is_empty(At("out.old")));
}

TEST_F(LongLifeTest, CommitRefusesANameThatIsALinkToElsewhereByNow) {
    Product product(At("zet.conf"), m_options);
    {
        Plan plan = MakePlan(product);
        fs::rename(At("out"), At("else"));
        fs::create_directory_symlink(At("else"), At("out"));
        const Failure failure = FailureIn([&] { Commit(product, plan); });
        EXPECT_EQ(failure.Facts().file, At("out/one"));
        EXPECT_TRUE(fs::is_empty(At("else")));
    }
    PlanAndCommit(product);
    EXPECT_TRUE(fs::exists(At("else/one")));
}

TEST_F(LongLifeTest, CommitRefusesAFileThatIsAnotherOneWhereTheNameLeadsNow) {
    Write(At("out/one"), "old\n");
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product);
    Swap("out");
    Write(At("out/one"), "new\n");
    EXPECT_THROW(Commit(product, plan), Failure);
    EXPECT_EQ(Read(At("out/one")), "new\n");
    EXPECT_EQ(Read(At("out.old/one")), "old\n");
}

TEST_F(LongLifeTest, CallsBeforeTheCommitKnowWhatThePlanKnows) {
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product);
    AddToMainFile("REALM=NEW.ORG");
    EXPECT_EQ(GetOption(product, "REALM"), "EXAMPLE.ORG");
    Commit(product, plan);
    EXPECT_THAT(Read(At("out/one")), HasSubstr("realm EXAMPLE.ORG\n"));
    EXPECT_EQ(GetOption(product, "REALM"), "NEW.ORG");
    EXPECT_EQ(StatusOf(product).targets.targets.front().state, "pending");
}

TEST_F(LongLifeTest, PlanThatIsLetGoEndsWhatItKnew) {
    Product product(At("zet.conf"), m_options);
    std::optional<Plan> plan = MakePlan(product);
    AddToMainFile("REALM=NEW.ORG");
    plan.reset();
    EXPECT_EQ(GetOption(product, "REALM"), "NEW.ORG");
}

TEST_F(LongLifeTest, PlanThatWasMovedIsStillThePlan) {
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product);
    Plan moved = std::move(plan);
    EXPECT_THAT(Commit(product, moved).files, SizeIs(2));
}

TEST_F(LongLifeTest, PlanWithProblemsKeepsNothing) {
    Write(At("templates/two"), "${nobody}\n");
    Product product(At("zet.conf"), m_options);
    const Plan plan = MakePlan(product);
    ASSERT_THAT(plan.Problems(), SizeIs(1));
    AddToMainFile("REALM=NEW.ORG");
    EXPECT_EQ(GetOption(product, "REALM"), "NEW.ORG");
}

TEST_F(LongLifeTest, OnlyTheNewestPlanIsCommittedAndOnce) {
    m_options.dryRun = true;
    Product product(At("zet.conf"), m_options);
    Plan old = MakePlan(product);
    AddToMainFile("REALM=NEW.ORG");
    Plan plan = MakePlan(product);
    EXPECT_EQ(GetOption(product, "REALM"), "NEW.ORG");
    EXPECT_THROW(Commit(product, old), UsageError);
    EXPECT_THAT(old.Files(), SizeIs(2));
    EXPECT_THAT(Commit(product, plan).files, SizeIs(2));
    EXPECT_THROW(Commit(product, plan), UsageError);
}

TEST_F(LongLifeTest, LinesThatThePlanHasAreSetThoughTheListsWereReadAgain) {
    const std::string list = Read(At("templates/targets.toml"));
    Write(At("templates/targets.toml"), list + "[[edits]]\nfile = \"" + At("file") +
                                            "\"\nparam = \"a\"\nvalue = \"9\"\nroles = \"both\"\n");
    Product product(At("zet.conf"), m_options);
    Plan plan = MakePlan(product);
    ASSERT_THAT(plan.Problems(), IsEmpty());
    Write(At("templates/targets.toml"), list);
    StatusOf(product);
    Commit(product, plan);
    EXPECT_THAT(Read(At("file")), HasSubstr("\na=9\n"));
}

/// Asks the product while it is told.
class Asker : public Observer {
  public:
    void Done(const FileOutcome&) override { ask(); }
    std::function<void()> ask;
};

TEST_F(LongLifeTest, ObserverMayAskWhileFilesAreWritten) {
    Asker asker;
    Product product(At("zet.conf"), m_options, &asker);
    int asked = 0;
    asker.ask = [&] {
        ++asked;
        EXPECT_EQ(GetParam(product, At("file"), "a"), "1");
        EXPECT_THAT(ListHistory(product), SizeIs(asked < 3 ? 1 : 2));
    };
    PlanAndCommit(product);
    EXPECT_THAT(RollBack(product).files, SizeIs(2));
    EXPECT_EQ(asked, 4);
    EXPECT_FALSE(fs::exists(At("out/one")));
}

}  // namespace
}  // namespace ZET::Deploy
