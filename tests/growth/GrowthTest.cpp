#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "Effort.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/Templates.h"
#include "zet/deploy/Commit.h"
#include "zet/deploy/Edit.h"
#include "zet/deploy/Explain.h"
#include "zet/deploy/History.h"
#include "zet/deploy/Plan.h"
#include "zet/deploy/Product.h"
#include "zet/deploy/Rollback.h"
#include "zet/deploy/Undo.h"

namespace ZET::Growth {
namespace {

namespace fs = std::filesystem;

using namespace Deploy;  // NOLINT(google-build-using-namespace): its calls are what is tested

/// A host with so many targets, which are committed.
class HostOf {
  public:
    explicit HostOf(std::size_t targets) : m_targets(targets) {
        std::string name = testing::TempDir() + "zet-growth.XXXXXX";
        m_directory = fs::canonical(mkdtemp(name.data())).string();
        for (const char* directory : {"etc", "templates", "state", "out"})
            fs::create_directory(At(directory));
        Write("zet.conf",
              "DOMAIN=example.org\nSERVER=server.example.org\nZET_SYNC=no\nZET_CFG_DIR=" + At("etc") +
                  "\nZET_CFG_TEMPL_DIR=" + At("templates") + "\nZET_VAR_LIB_DIR=" + At("state") + "\n");
        Write("file", "a=1\n");
        Write("other", "a=1\n");
        WriteList("");
        m_options.moduleFile = ZET_MODULE;
        CommitTexts("first");
    }
    HostOf(const HostOf&) = delete;
    HostOf& operator=(const HostOf&) = delete;
    ~HostOf() { fs::remove_all(m_directory); }

    std::string At(const std::string& name) const { return m_directory + "/" + name; }

    static std::string NameOf(std::size_t number) {
        const std::string digits = std::to_string(number);
        return "target" + std::string(5 - digits.size(), '0') + digits;
    }

    /// Each of a text of its own, as it would be.
    void CommitTexts(const std::string& text) {
        for (std::size_t i = 0; i < m_targets; ++i)
            Write("templates/" + NameOf(i), text + " of " + NameOf(i) + "\n");
        fs::remove_all(At("etc"));
        fs::create_directory(At("etc"));
        Use([](Product& product) {
            Plan plan = MakePlan(product);
            Commit(product, plan);
        });
    }

    void CommitTimes(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            CommitTexts("text " + std::to_string(i));
    }

    void WriteList(const std::string& more) const {
        std::string list;
        for (std::size_t i = 0; i < m_targets; ++i)
            list += "[templates.\"" + NameOf(i) + "\"]\ntarget = \"" + At("out/" + NameOf(i)) +
                    "\"\nroles = \"both\"\n" + (i % 2 == 0 ? more : "");
        Write("templates/targets.toml", list);
    }

    std::vector<std::string> Targets() const {
        std::vector<std::string> paths;
        for (std::size_t i = 0; i < m_targets; ++i)
            paths.push_back(At("out/" + NameOf(i)));
        return paths;
    }

    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(At(name), std::ios::binary) << text;
    }

    template <typename Call>
    void Use(const Call& call) {
        Product product(At("zet.conf"), m_options);
        call(product);
    }

    Options& Wanted() { return m_options; }

  private:
    const std::size_t m_targets;
    std::string m_directory;
    Options m_options;
};

/// From one size to twice of it, and to twice of that: what is done once does not matter. What grows with the
/// size, grows twice as much from the second to the third; with N log N, 2.2 times; with its square, 4 times.
void ExpectGrowthOfSize(std::uint64_t small, std::uint64_t middle, std::uint64_t large, const char* what) {
    constexpr double kMost = 2.4;
    constexpr double kFew = 20;
    EXPECT_LT(static_cast<double>(large) - static_cast<double>(middle),
              kMost * (static_cast<double>(middle) - static_cast<double>(small)) + kFew)
        << what << ": " << small << ", " << middle << ", " << large;
}

using HostCall = std::function<void(HostOf&)>;
using ProductCall = std::function<void(Product&, const HostOf&)>;

Effort EffortOn(HostOf& host, const ProductCall& call) {
    return EffortOf([&] { host.Use([&](Product& product) { call(product, host); }); });
}

/// `effortOf` is told the size.
void ExpectGrowthOfSize(std::size_t size, const std::function<Effort(std::size_t)>& effortOf) {
    const Effort small = effortOf(size);
    const Effort middle = effortOf(2 * size);
    const Effort large = effortOf(4 * size);
    ExpectGrowthOfSize(small.allocations, middle.allocations, large.allocations, "allocations");
    ExpectGrowthOfSize(small.comparisons, middle.comparisons, large.comparisons, "comparisons");
    ExpectGrowthOfSize(small.steps, middle.steps, large.steps, "steps of the database");
}

void ExpectGrowthOfSize(const HostCall& prepare, const ProductCall& call) {
    ExpectGrowthOfSize(40, [&](std::size_t targets) {
        HostOf host(targets);
        prepare(host);
        return EffortOn(host, call);
    });
}

void SetParamIn(HostOf& host, const std::string& name, const std::string& value) {
    host.Use([&](Product& product) { SetParam(product, host.At(name), "a", value); });
}

void Try(HostOf& host) {
    host.Wanted().dryRun = true;
}

TEST(GrowthTest, WayBackToAnEntryLooksAtEachFileOnce) {
    const auto prepare = [](HostOf& host) {
        SetParamIn(host, "file", "2");
        Try(host);
    };
    ExpectGrowthOfSize(prepare, [](Product& product, const HostOf&) { RollBackTo(product, 1); });
}

TEST(GrowthTest, RollbackOfAllTargetsLooksAtEachFileOnce) {
    ExpectGrowthOfSize(Try, [](Product& product, const HostOf&) { RollBack(product); });
}

TEST(GrowthTest, RollbackOfNamedTargetsLooksAtEachFileOnce) {
    ExpectGrowthOfSize(Try, [](Product& product, const HostOf& host) { RollBack(product, host.Targets()); });
}

TEST(GrowthTest, RollbackOfWhatLeftTheListLooksAtEachFileOnce) {
    const auto prepare = [](HostOf& host) {
        host.Write("templates/targets.toml", "");
        Try(host);
    };
    ExpectGrowthOfSize(prepare, [](Product& product, const HostOf&) { RollBack(product); });
}

TEST(GrowthTest, DifferenceBetweenEntriesFindsEachFileOnce) {
    const auto prepare = [](HostOf& host) {
        host.CommitTexts("second");
        host.CommitTexts("third");
    };
    ExpectGrowthOfSize(prepare, [](Product& product, const HostOf& host) {
        DiffHistory(product, 1, 3, host.Targets().front());
    });
}

TEST(GrowthTest, CopiesOfSecretTextsAreFoundByOneLookAtEach) {
    const auto prepare = [](HostOf& host) { host.WriteList("secret = true\n"); };
    ExpectGrowthOfSize(prepare, [](Product& product, const HostOf&) { ListHistory(product); });
}

TEST(GrowthTest, TemplatesThatNoListHasAreLookedUpTogether) {
    const auto prepare = [](HostOf& host) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < host.Targets().size(); ++i) {
            names.push_back("unlisted" + HostOf::NameOf(i));
            host.Write("templates/" + names.back(), "text of " + names.back() + "\n");
        }
        Observer observer;
        Deployment deployment(host.At("zet.conf"), host.Wanted(), observer);
        InstallTemplates(deployment, names, false);
    };
    ExpectGrowthOfSize(prepare, [](Product& product, const HostOf&) { ListHistory(product); });
}

TEST(GrowthTest, WordsOfACommandAreNotHeldAgainstEachOfItsFiles) {
    const auto prepare = [](HostOf& host) {
        host.Wanted().words = {{"rollback-config"}};
        for (const std::string& path : host.Targets())
            host.Wanted().words.push_back({path});
        host.Use([](Product& product) { RollBack(product); });
    };
    ExpectGrowthOfSize(prepare, [](Product& product, const HostOf&) { ListHistory(product, "", 1); });
}

/// What the call takes for each commit must not depend on how many other targets that wrote.
void ExpectNoLookAtOtherFiles(const ProductCall& call) {
    const auto stepsOf = [&](std::size_t targets, std::size_t commits) {
        HostOf host(targets);
        host.CommitTimes(commits);
        return EffortOn(host, call).steps;
    };
    const auto stepsOfCommits = [&](std::size_t targets) {
        return stepsOf(targets, 3) - stepsOf(targets, 1);
    };
    EXPECT_LT(stepsOfCommits(60), stepsOfCommits(30) * 3 / 2);
}

TEST(GrowthTest, AgesOfLinesTakeNoLookAtOtherFilesOfTheEntries) {
    ExpectNoLookAtOtherFiles(
        [](Product& product, const HostOf& host) { Explain(product, host.Targets().front()); });
}

TEST(GrowthTest, ChangesOfOneFileTakeNoLookAtOtherFilesOfTheEntries) {
    ExpectNoLookAtOtherFiles(
        [](Product& product, const HostOf& host) { ListHistory(product, host.Targets().front()); });
}

TEST(GrowthTest, ErasureOfTextsThatAnotherFileHasLooksAtEachFileOnce) {
    ExpectGrowthOfSize(10, [](std::size_t edits) {
        HostOf host(1);
        for (std::size_t i = 0; i < edits; ++i)
            for (const std::string name : {"file", "other"})
                SetParamIn(host, name, std::to_string(i));
        return EffortOn(host,
                        [](Product& product, const HostOf& of) { EraseHistory(product, of.At("file")); });
    });
}

}  // namespace
}  // namespace ZET::Growth
