#include <array>
#include <cstring>
#include <iostream>
#include <sstream>

#include "ChildProcess.h"
#include "ModuleTest.h"
#include "ZETConfig.h"
#include "zet/ZETModule.h"

namespace ZET {
namespace {

using namespace std::chrono_literals;

ZETModuleRecord Host(std::uint32_t type) {
    ZETModuleRecord host = {};
    host.type = type;
    return host;
}

/// What is written to standard error as long as it lives; tells what was flushed.
class CapturedStandardError : public std::stringbuf {
  public:
    CapturedStandardError() : m_before(std::cerr.rdbuf(this)) { std::cerr.unsetf(std::ios::unitbuf); }
    ~CapturedStandardError() override {
        std::cerr.clear();
        std::cerr.setf(std::ios::unitbuf);
        std::cerr.rdbuf(m_before);
    }
    std::string Flushed() const { return m_flushed; }

  protected:
    int sync() override {
        m_flushed = str();
        return 0;
    }

  private:
    std::streambuf* m_before;
    std::string m_flushed;
};

/// The entry points keep state for the life of the process, so that each test has a process of its own.
class EntryPointsTest : public ModuleTest {
  protected:
    static void InFreshProcess(const std::function<void()>& body) { ExpectChildPasses(10s, body); }
};

TEST_F(EntryPointsTest, RecordHoldsVersionNameKindAndDescription) {
    InFreshProcess([&] {
        const ZETModuleRecord host = Host(0);
        const ZETModuleRecord* record = get_module_info(&host);
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(record->version, 0x10725U);
        EXPECT_STREQ(record->name, "zet-config");
        EXPECT_STREQ(record->versionText, "1.7.37");
        EXPECT_EQ(record->type, 1U);
        EXPECT_STREQ(record->description, "ZET config interface");
        EXPECT_EQ(record->reserved, nullptr);
        EXPECT_EQ(Journal(), Strings{"Translate libzet-config: ZET config interface"});
    });
}

TEST_F(EntryPointsTest, DescriptionIsTranslatedOnceAndKept) {
    InFreshProcess([&] {
        m_core.SetTranslation("ZET config interface", "ZET-Konfiguration");
        const ZETModuleRecord host = Host(0);
        const ZETModuleRecord* first = get_module_info(&host);
        const char* description = first->description;
        m_core.SetTranslation("ZET config interface", "something else");
        const ZETModuleRecord* second = get_module_info(&host);
        EXPECT_EQ(first, second);
        EXPECT_EQ(second->description, description);
        EXPECT_STREQ(description, "ZET-Konfiguration");
        EXPECT_EQ(Journal().size(), 1U);
    });
}

TEST_F(EntryPointsTest, DescriptionIsACopyOfTheTranslation) {
    InFreshProcess([&] {
        m_core.SetTranslation("ZET config interface", "first");
        const ZETModuleRecord host = Host(0);
        const char* description = get_module_info(&host)->description;
        m_core.SetTranslation("ZET config interface", "other");
        EXPECT_STREQ(description, "first");
    });
}

TEST_F(EntryPointsTest, WrongHostTypeIsReportedOnStandardErrorAndRefused) {
    InFreshProcess([&] {
        const CapturedStandardError captured;
        const ZETModuleRecord host = Host(5);
        EXPECT_EQ(get_module_info(&host), nullptr);
        EXPECT_EQ(captured.str(), "Invalid host type 5.\n");
        EXPECT_EQ(captured.Flushed(), "Invalid host type 5.\n");
        EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/zet-config get_module_info 1: "
                                      "Invalid host type 5."});
        EXPECT_EQ(m_core.Messages().at(0).line, 17U);
        EXPECT_EQ(Log(), Strings{});
    });
}

TEST_F(EntryPointsTest, WrongHostTypeIsReportedInTheReadersLanguage) {
    InFreshProcess([&] {
        m_core.SetTranslation("Invalid host type %d.", "Host %d?");
        const CapturedStandardError captured;
        const ZETModuleRecord host = Host(1);
        EXPECT_EQ(get_module_info(&host), nullptr);
        EXPECT_EQ(captured.str(), "Host 1?\n");
    });
}

TEST_F(EntryPointsTest, RightHostAfterAWrongOneGetsTheRecord) {
    InFreshProcess([&] {
        {
            const CapturedStandardError captured;
            const ZETModuleRecord wrong = Host(5);
            EXPECT_EQ(get_module_info(&wrong), nullptr);
        }
        EXPECT_EQ(Journal({"Translate"}), Strings{"Translate libzet-core: Invalid host type %d."});
        const ZETModuleRecord host = Host(0);
        const ZETModuleRecord* record = get_module_info(&host);
        ASSERT_NE(record, nullptr);
        EXPECT_STREQ(record->description, "ZET config interface");
        EXPECT_EQ(Journal({"Translate"}).size(), 2U);
    });
}

TEST_F(EntryPointsTest, MessageThatCannotBeFormattedFailsStandardError) {
    InFreshProcess([&] {
        m_core.RefuseToFormat();
        const CapturedStandardError captured;
        const ZETModuleRecord host = Host(5);
        EXPECT_EQ(get_module_info(&host), nullptr);
        EXPECT_TRUE(std::cerr.bad());
        EXPECT_EQ(captured.str(), "");
    });
}

TEST_F(EntryPointsTest, OnlyThirtyTwoBitsOfTheHostTypeAreRead) {
    InFreshProcess([&] {
        std::array<std::uintptr_t, 6> words = {1, 2, 3, 0, 5, 6};
        reinterpret_cast<unsigned char*>(&words[3])[4] = 0xFF;
        ZETModuleRecord host = {};
        std::memcpy(static_cast<void*>(&host), words.data(), sizeof host);
        EXPECT_NE(get_module_info(&host), nullptr);
    });
}

TEST_F(EntryPointsTest, InitRegistersOneObjectThatTheCoreAloneOwns) {
    InFreshProcess([&] {
        EXPECT_TRUE(module_init(m_core));
        ASSERT_EQ(m_core.Interfaces().size(), 1U);
        const auto& object = m_core.Interfaces()[0];
        EXPECT_EQ(object.use_count(), 1);
        EXPECT_EQ(object->GetName(), "zet-config");
        EXPECT_NE(dynamic_cast<CZETConfig*>(object.get()), nullptr);
        EXPECT_EQ(Journal({"RegisterInterface"}), Strings{"RegisterInterface zet-config"});
        EXPECT_EQ(m_core.OwnersWhenOffered(), 2) << "the module and the core";
    });
}

TEST_F(EntryPointsTest, InitBuildsTheTemplateValuesBeforeItRegisters) {
    InFreshProcess([&] {
        module_init(m_core);
        EXPECT_EQ(Journal().front(), "GetParam REALM");
        EXPECT_EQ(Journal().back(), "RegisterInterface zet-config");
    });
}

TEST_F(EntryPointsTest, SecondInitCreatesNothing) {
    InFreshProcess([&] {
        EXPECT_TRUE(module_init(m_core));
        m_core.Forget();
        EXPECT_TRUE(module_init(m_core));
        EXPECT_EQ(Journal(), Strings{});
    });
}

TEST_F(EntryPointsTest, RefusedRegistrationStillCountsAsInitialised) {
    InFreshProcess([&] {
        m_core.RefuseInterfaces();
        EXPECT_TRUE(module_init(m_core));
        EXPECT_EQ(m_core.LastOffered(), nullptr);
        m_core.Forget();
        EXPECT_TRUE(module_init(m_core));
        EXPECT_EQ(Journal(), Strings{});
    });
}

TEST_F(EntryPointsTest, DoneAsksTheCoreToRemoveTheInterface) {
    InFreshProcess([&] {
        module_init(m_core);
        m_core.Forget();
        module_done(m_core);
        EXPECT_EQ(Journal(), Strings{"RemoveInterface zet-config"});
        EXPECT_EQ(m_core.LastOffered(), nullptr);
    });
}

TEST_F(EntryPointsTest, DoneWithoutInitStillAsksTheCore) {
    InFreshProcess([&] {
        module_done(m_core);
        EXPECT_EQ(Journal(), Strings{"RemoveInterface zet-config"});
    });
}

TEST_F(EntryPointsTest, ObjectLivesAsLongAsSomebodyHoldsIt) {
    InFreshProcess([&] {
        module_init(m_core);
        const std::shared_ptr<CZETInterface> held = m_core.Interfaces()[0];
        module_done(m_core);
        EXPECT_EQ(held->GetName(), "zet-config");
    });
}

TEST_F(EntryPointsTest, InitAfterDoneRegistersANewObject) {
    InFreshProcess([&] {
        module_init(m_core);
        const std::shared_ptr<CZETInterface> first = m_core.Interfaces()[0];
        module_done(m_core);
        EXPECT_TRUE(module_init(m_core));
        ASSERT_EQ(m_core.Interfaces().size(), 1U);
        EXPECT_NE(m_core.Interfaces()[0], first);
        EXPECT_EQ(Journal({"RegisterInterface"}).size(), 2U);
    });
}

TEST_F(EntryPointsTest, FailureOfTheConstructorLeavesTheModuleUninitialised) {
    InFreshProcess([&] {
        m_core.FailAt("GetParam REALM");
        ExpectScriptedFailure("GetParam REALM", [&] { module_init(m_core); });
        EXPECT_EQ(Journal({"RegisterInterface"}), Strings{});
        EXPECT_TRUE(module_init(m_core));
        EXPECT_EQ(m_core.Interfaces().size(), 1U);
    });
}

TEST_F(EntryPointsTest, FailureOfTheRegistrationReleasesTheObjectAndAllowsAnotherTry) {
    InFreshProcess([&] {
        m_core.FailAt("RegisterInterface");
        ExpectScriptedFailure("RegisterInterface", [&] { module_init(m_core); });
        EXPECT_EQ(m_core.LastOffered(), nullptr);
        EXPECT_TRUE(module_init(m_core));
        EXPECT_EQ(m_core.Interfaces().size(), 1U);
    });
}

TEST_F(EntryPointsTest, FailureOfTheRemovalPassesThrough) {
    InFreshProcess([&] {
        module_init(m_core);
        m_core.FailAt("RemoveInterface");
        ExpectScriptedFailure("RemoveInterface", [&] { module_done(m_core); });
    });
}

}  // namespace
}  // namespace ZET
