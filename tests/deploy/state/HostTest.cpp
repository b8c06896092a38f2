#include "deploy/state/Host.h"

#include <gmock/gmock.h>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "zet/ZETErrors.h"

namespace ZET::Deploy {
namespace {

using testing::HasSubstr;

class HostTest : public HostFixture {};

TEST_F(HostTest, ParametersAreThoseOfTheMainFile) {
    EXPECT_EQ(TheHost().Param("DOMAIN"), "example.org");
    EXPECT_EQ(TheHost().Param("ZET_CFG"), At("zet.conf"));
    EXPECT_EQ(TheHost().CoreParams().at("ZET_CFG_DIR"), At("etc"));
    EXPECT_EQ(TheHost().State().Path(), At("state"));
}

TEST_F(HostTest, CallerIsNamedByProgramAndCommand) {
    m_options.program = "zet-init";
    m_options.command = "commit-config";
    EXPECT_EQ(TheHost().Caller(), "zet-init commit-config");
}

TEST_F(HostTest, MissingMainFileIsAnErrorOnlyWhereItIsNeeded) {
    const auto start = [&] { Host(At("missing.conf"), m_options, m_told); };
    EXPECT_THROW(start(), EZETError);
    m_options.needsConfigFile = false;
    EXPECT_NO_THROW(start());
}

TEST_F(HostTest, DirectoryThatIsNoneIsAFailureThatNamesTheFile) {
    Write("zet.conf", "ZET_VAR_LIB_DIR=state\n");
    EXPECT_THAT(MessageOf<Failure>([&] { TheHost(); }),
                AllOf(HasSubstr(At("zet.conf")), HasSubstr("ZET_VAR_LIB_DIR")));
}

TEST_F(HostTest, DirectoryThatIsNoneHasItsDefaultWhileItIsMended) {
    Write("zet.conf", "ZET_VAR_LIB_DIR=state\n");
    m_options.mendsParameters = true;
    EXPECT_TRUE(TheHost().Param("ZET_VAR_LIB_DIR").starts_with("/"));
}

TEST_F(HostTest, DirectoriesOfATreeAreBelowItsRoot) {
    Write("zet.conf", "ZET_CFG_DIR=/etc\nZET_VAR_LIB_DIR=/state\nZET_CFG_TEMPL_DIR=/link\n");
    std::filesystem::create_symlink("/templates", At("link"));
    m_options.root = At(".");
    Host host("/zet.conf", m_options, m_told);
    EXPECT_EQ(host.Param("ZET_CFG_DIR"), At("etc"));
    EXPECT_EQ(host.Param("ZET_CFG_TEMPL_DIR"), At("templates"));
    EXPECT_EQ(host.State().Lock(), At("state/zet.lock"));
    EXPECT_EQ(host.FilePath("/out/x"), At("out/x"));
}

TEST_F(HostTest, GoesOnUntilTheObserverWantsNoMore) {
    EXPECT_NO_THROW(TheHost().RequireGoOn());
    m_told.isCancelled = true;
    EXPECT_THROW(TheHost().RequireGoOn(), Interrupted);
}

TEST_F(HostTest, OwnDirectoriesAreTheThree) {
    for (const char* name : {"ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR", "ZET_VAR_LIB_DIR"})
        EXPECT_TRUE(IsOwnDirectory(name)) << name;
    EXPECT_FALSE(IsOwnDirectory("ZET_CFG"));
}

}  // namespace
}  // namespace ZET::Deploy
