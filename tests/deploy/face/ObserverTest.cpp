#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "FaceFixture.h"
#include "deploy/face/Parts.h"
#include "zet/ZETFiles.h"
#include "zet/ZETHost.h"
#include "zet/deploy/Commit.h"
#include "zet/deploy/Edit.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::StartsWith;
using Result = FileOutcome::Result;

/// Keeps what it is told, each with its name.
class Listener : public Observer {
  public:
    void Detail(const std::string& text) override { told.push_back("Detail " + text); }
    void Remark(const std::string& text) override { told.push_back("Remark " + text); }
    void Warning(const std::string& text) override { told.push_back("Warning " + text); }
    void Error(const std::string& text, const std::string& lines) override {
        told.push_back("Error " + text + lines);
    }
    void Progress(std::size_t done, std::size_t total) override {
        told.push_back("Progress " + std::to_string(done) + " of " + std::to_string(total));
    }
    void Done(const FileOutcome& outcome) override { told.push_back("Done " + outcome.path); }
    void Recorded(std::int64_t entry) override { told.push_back("Recorded " + std::to_string(entry)); }
    void Restarts(const std::vector<std::string>& services) override {
        told.push_back("Restarts " + services.front());
    }
    void Reloads(const std::vector<std::string>& services) override {
        told.push_back("Reloads " + services.front());
    }
    bool IsCancelled() override {
        told.push_back("IsCancelled");
        return true;
    }

    std::vector<std::string> told;
};

/// The operations that the public header declares.
std::size_t CountOperations() {
    const std::regex operation("    virtual (void|bool) .*");
    std::ifstream header(ZET_OBSERVER_HEADER);
    std::size_t count = 0;
    for (std::string line; std::getline(header, line);)
        count += std::regex_match(line, operation) ? 1 : 0;
    return count;
}

TEST(RelayTest, EveryOperationIsHandedOn) {
    Listener listener;
    Relay relay(&listener);
    relay.Detail("a");
    relay.Remark("b");
    relay.Warning("c");
    relay.Error("d", "e");
    relay.Progress(1, 2);
    FileOutcome outcome;
    outcome.path = "f";
    relay.Done(outcome);
    relay.Recorded(3);
    relay.Restarts({"g"});
    relay.Reloads({"h"});
    EXPECT_TRUE(relay.IsCancelled());
    EXPECT_THAT(listener.told, ElementsAre("Detail a", "Remark b", "Warning c", "Error de", "Progress 1 of 2",
                                           "Done f", "Recorded 3", "Restarts g", "Reloads h", "IsCancelled"));
    EXPECT_EQ(listener.told.size(), CountOperations());
}

/// Sends this process a signal when the first file is done.
class Signaller : public Observer {
  public:
    void Done(const FileOutcome&) override { std::raise(SIGTERM); }
};

TEST_F(FaceTest, SignalEndsTheCallThatItCameDuringAndNoOther) {
    Product product(At("zet.conf"), m_options);
    {
        Signaller signaller;
        Plan plan = MakePlan(product);
        EXPECT_THROW(Commit(product, plan, &signaller), Interrupted);
    }
    EXPECT_FALSE(fs::exists(At("out/two")));
    EXPECT_EQ(SetParam(product, At("file"), "a", "3").result, Result::Changed);
    Plan plan = MakePlan(product);
    Commit(product, plan);
    EXPECT_TRUE(fs::exists(At("out/two")));
}

TEST_F(FaceTest, NothingIsPrintedAndWhatIsLoggedIsTold) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process that has configured no log
    std::ofstream(At("zet.conf"), std::ios::app) << "ZET_SYNC=maybe\n";
    EXPECT_EXIT(
        {
            Listener listener;
            const Product product(At("zet.conf"), m_options, &listener);
            EXPECT_THAT(listener.told, ElementsAre(StartsWith("Warning " + At("zet.conf") + ":")));
            std::_Exit(HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "^$");
}

TEST_F(FaceTest, EditLeavesTheProgramsWordingAndGuardInForce) {
    std::vector<std::string> seen;
    SetLogWording([&](const std::string& text) {
        seen.push_back(text);
        return text;
    });
    int renames = 0;
    SetRenameGuard([&](const ZETRename&) { ++renames; });
    {
        Product product(At("zet.conf"), m_options);
        SetParam(product, At("file"), "a", "3");
    }
    seen.clear();
    renames = 0;
    CZETLogProvider::GetLogProvider().Put(ZETLogWarning, 1, "its own");
    RenameFile(At("file"), At("other"));
    EXPECT_THAT(seen, ElementsAre("its own"));
    EXPECT_NE(renames, 0);
    SetLogWording({});
    SetRenameGuard({});
}

volatile std::sig_atomic_t g_heard = 0;

/// Sends one when nothing is left to be done.
class LateSignaller : public Observer {
  public:
    void Recorded(std::int64_t) override { std::raise(SIGTERM); }
};

TEST_F(FaceTest, SignalThatComesTooLateToEndTheCallReachesTheProgram) {
    const auto former = std::signal(SIGTERM, [](int number) { g_heard = number; });
    LateSignaller signaller;
    Product product(At("zet.conf"), m_options, &signaller);
    EXPECT_EQ(SetParam(product, At("file"), "a", "3").result, Result::Changed);
    EXPECT_EQ(g_heard, SIGTERM);
    std::signal(SIGTERM, former);
}

}  // namespace
}  // namespace ZET::Deploy
