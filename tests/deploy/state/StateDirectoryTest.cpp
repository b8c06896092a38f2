#include "deploy/state/StateDirectory.h"

#include <gmock/gmock.h>

#include <map>
#include <optional>

namespace ZET::Deploy {
namespace {

using testing::UnorderedElementsAre;

TEST(StateDirectoryTest, FilesAreThoseOfBothRoles) {
    EXPECT_THAT(StateDirectory("/s").Files(),
                UnorderedElementsAre("/s/zet.lock", "/s/state.db", "/s/state.db-wal", "/s/state.db-shm",
                                     "/s/state.db-journal", "/s/state.db-last", "/s/zet-server.status",
                                     "/s/zet-client.status", "/s/zet-client-fs.status"));
}

TEST(RoleTest, NameLeadsBackToTheRole) {
    for (const Role role : kRoles)
        EXPECT_EQ(RoleNamed(NameOf(role)), role);
    EXPECT_EQ(RoleNamed("server"), Role::Server);
    EXPECT_EQ(RoleNamed("client"), Role::Client);
}

TEST(RoleTest, OtherWordsNameNoRole) {
    for (const char* word : {"", "both", "Server", "client ", "clien"})
        EXPECT_EQ(RoleNamed(word), std::nullopt) << word;
}

TEST(RoleTest, OtherRoleOfTheOtherIsTheRole) {
    EXPECT_EQ(OtherRole(Role::Server), Role::Client);
    EXPECT_EQ(OtherRole(Role::Client), Role::Server);
}

}  // namespace
}  // namespace ZET::Deploy
