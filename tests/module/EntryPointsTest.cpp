#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "LoadedModule.h"
#include "SlotCore.h"

namespace ZET {
namespace {

using Strings = std::vector<std::string>;
using Words = std::array<std::uintptr_t, 6>;

/// A host's record as raw machine words; the type is the lower half of the fourth on this kind of machine,
/// and the first four bytes of it everywhere.
Words HostOfType(std::uint32_t type) {
    Words words = {};
    std::memcpy(&words[3], &type, sizeof type);
    return words;
}

class EntryPointsTest : public testing::Test {
  protected:
    const ZETModuleRecord* InfoFor(const Words& host) {
        return m_module.info(reinterpret_cast<const ZETModuleRecord*>(host.data()));
    }

    Words RecordFor(const Words& host) {
        Words words = {};
        const ZETModuleRecord* record = InfoFor(host);
        if (record != nullptr) std::memcpy(words.data(), static_cast<const void*>(record), sizeof words);
        return words;
    }

    LoadedModule m_module;
};

TEST_F(EntryPointsTest, ExactlyThreeNamesLeaveTheModule) {
    Strings names;
    for (const std::string& line :
         OutputOf("nm -D --defined-only --format=just-symbols '" + LoadedModule::Path() + "'"))
        names.push_back(line);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Strings{"get_module_info", "module_done", "module_init"}));
}

TEST_F(EntryPointsTest, ModuleNeedsOnlyTheRuntimeAndTheCore) {
    bool needsCore = false;
    for (const std::string& need : NeedsOf(LoadedModule::Path())) {
        const Strings allowed = {"libzet-core.so", "libstdc++.so", "libgcc_s.so", "libc.so",    "libm.so",
                                 "ld-linux",       "libasan.so",   "libubsan.so", "libtsan.so", "libgcov"};
        EXPECT_TRUE(std::any_of(allowed.begin(), allowed.end(), [&](const std::string& each) {
            return need.starts_with(each);
        })) << need;
        needsCore = needsCore || need.starts_with("libzet-core.so");
    }
    EXPECT_TRUE(needsCore);
}

TEST_F(EntryPointsTest, RecordIsSixWordsInThisOrder) {
    const Words record = RecordFor(HostOfType(0));
    EXPECT_EQ(record[0], 0x10725U);
    EXPECT_STREQ(reinterpret_cast<const char*>(record[1]), "zet-config");
    EXPECT_STREQ(reinterpret_cast<const char*>(record[2]), "1.7.37");
    EXPECT_EQ(record[3], 1U);
    EXPECT_STREQ(reinterpret_cast<const char*>(record[4]), "ZET config interface");
    EXPECT_EQ(record[5], 0U);
    static_assert(sizeof(ZETModuleRecord) == sizeof(Words));
}

TEST_F(EntryPointsTest, RecordAndDescriptionStayTheSame) {
    const ZETModuleRecord* first = InfoFor(HostOfType(0));
    const char* description = first->description;
    EXPECT_EQ(InfoFor(HostOfType(0)), first);
    EXPECT_EQ(first->description, description);
}

TEST_F(EntryPointsTest, WrongHostTypeIsReportedAndRefused) {
    testing::internal::CaptureStderr();
    const ZETModuleRecord* record = InfoFor(HostOfType(5));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Invalid host type 5.\n");
    EXPECT_EQ(record, nullptr);
    EXPECT_NE(InfoFor(HostOfType(0)), nullptr);
}

TEST_F(EntryPointsTest, OnlyTheTypeIsReadOfTheHostsRecord) {
    Words host = HostOfType(0);
    for (const std::size_t i : {0U, 1U, 2U, 4U, 5U})
        host[i] = UINTPTR_MAX;
    const std::uint32_t garbage = UINT32_MAX;
    std::memcpy(reinterpret_cast<char*>(&host[3]) + 4, &garbage, sizeof garbage);
    EXPECT_NE(InfoFor(host), nullptr);
}

TEST_F(EntryPointsTest, InitRegistersOnceAndDoneAllowsAnother) {
    SlotCore core;
    EXPECT_TRUE(m_module.init(core.Core()));
    EXPECT_TRUE(m_module.init(core.Core()));
    ASSERT_EQ(core.interfaces.size(), 1U);
    EXPECT_EQ(core.interfaces[0].use_count(), 1);
    m_module.done(core.Core());
    EXPECT_TRUE(core.interfaces.empty());
    EXPECT_TRUE(m_module.init(core.Core()));
    EXPECT_EQ(core.interfaces.size(), 1U);
    EXPECT_EQ(std::count(core.calls.begin(), core.calls.end(), "5 zet-config"), 2);
    m_module.done(core.Core());
    EXPECT_EQ(std::count(core.calls.begin(), core.calls.end(), "6 zet-config"), 2);
}

TEST_F(EntryPointsTest, CoreIsAskedInItsOwnPlaces) {
    SlotCore core;
    m_module.init(core.Core());
    EXPECT_EQ(core.calls,
              (Strings{"7 REALM", "7 TICKET_MAX_RENEWABLE_LIFE", "7 TICKET_MAX_LIFE", "3", "7 SERVER_ID",
                       "7 MINIMUM_UID", "7 DOMAIN_DN", "2", "7 SERVER_EXPORT_DIR", "7 VALID_USER_NAMES",
                       "7 VALID_GROUP_NAMES", "4", "3", "3", "3", "5 zet-config"}));
    core.calls.clear();
    m_module.done(core.Core());
    EXPECT_EQ(core.calls, Strings{"6 zet-config"});
}

bool IsLoaded() {
    void* handle = ::dlopen(LoadedModule::Path().c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) ::dlclose(handle);
    return handle != nullptr;
}

TEST(ModuleFileTest, CanBeUnloadedAgain) {
    {
        SlotCore core;
        const LoadedModule module;
        EXPECT_TRUE(IsLoaded());
        module.init(core.Core());
        module.done(core.Core());
    }
    EXPECT_FALSE(IsLoaded());
}

}  // namespace
}  // namespace ZET
