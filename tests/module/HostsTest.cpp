#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "zet/IZETConfig.h"
#include "zet/ZETErrors.h"
#include "zet/ZETHost.h"

namespace ZET {
namespace {

namespace fs = std::filesystem;

class HostsTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "zet-XXXXXX").string();
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        m_directory = name;
        std::ofstream(m_directory / "zet.conf") << "DOMAIN=example.org\nMY_KEY=mine\n";
        // As it is installed: nobody else may write it.
        fs::copy_file(ZET_MODULE_FILE, m_directory / "libzet-config.so");
        fs::permissions(m_directory / "libzet-config.so", fs::perms(0755));
    }
    void TearDown() override { fs::remove_all(m_directory); }

    std::unique_ptr<CZETHost> MakeHost() const {
        return std::make_unique<CZETHost>((m_directory / "zet.conf").string());
    }
    void Load(CZETHost& host) const { host.LoadModule((m_directory / "libzet-config.so").string()); }

    static std::shared_ptr<IZETConfig> ConfigOf(const CZETHost& host) {
        return std::dynamic_pointer_cast<IZETConfig>(host.FindInterface("zet-config"));
    }

    fs::path m_directory;
};

/// Whoever plants a link at the name of a target is given nothing by module and core together.
TEST_F(HostsTest, TextSavedOverALinkIsNotGivenToTheOwnerOfWhatItLeadsTo) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root";
    constexpr uid_t kUser = 1234;
    std::ofstream(m_directory / "zet.conf", std::ios::app)
        << "ZET_CFG_DIR=" << m_directory.string() << "\nZET_SYNC=no\n";
    std::ofstream(m_directory / "secret.conf") << "key\n";
    fs::permissions(m_directory / "secret.conf", fs::perms(0600));
    std::ofstream(m_directory / "users") << "a user's own\n";
    ASSERT_EQ(::chown((m_directory / "users").c_str(), kUser, kUser), 0);
    const auto host = MakeHost();
    Load(*host);
    const std::string target = (m_directory / "target").string();
    for (const bool noBackup : {true, false}) {
        ASSERT_EQ(::symlink("users", target.c_str()), 0);
        ConfigOf(*host)->OpenConfigFileTemplate("secret.conf", target, "server", false)->Save(noBackup);
        struct stat status = {};
        ASSERT_EQ(::lstat(target.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0600));
        EXPECT_EQ(status.st_uid, 0U) << noBackup;
        ASSERT_EQ(::unlink(target.c_str()), 0);
    }
}

TEST_F(HostsTest, ModuleServesOneHostAfterTheOther) {
    const auto first = MakeHost();
    const auto second = MakeHost();
    for (int i = 0; i < 2; i++) {
        Load(*first);
        EXPECT_NE(ConfigOf(*first), nullptr);
        EXPECT_THROW(Load(*second), EZETError);
        EXPECT_EQ(ConfigOf(*second), nullptr);
        second->UnloadModules();
        EXPECT_NE(ConfigOf(*first), nullptr);
        first->UnloadModules();
        EXPECT_EQ(ConfigOf(*first), nullptr);
        Load(*second);
        EXPECT_NE(ConfigOf(*second), nullptr);
        second->UnloadModules();
    }
}

TEST_F(HostsTest, NameThatIsTakenKeepsTheModuleOutOnlyAsLongAsItIs) {
    const auto host = MakeHost();
    host->GetCore().RegisterInterface(std::make_shared<CZETInterface>("zet-config"));
    EXPECT_THROW(Load(*host), EZETError);
    EXPECT_EQ(ConfigOf(*host), nullptr);
    EXPECT_NE(host->FindInterface("zet-config"), nullptr);
    host->GetCore().RemoveInterface("zet-config");
    Load(*host);
    EXPECT_NE(ConfigOf(*host), nullptr);
}

TEST_F(HostsTest, FileThatOutlivesTheModuleWorksAsLongAsItsHost) {
    const auto host = MakeHost();
    Load(*host);
    const std::string path = (m_directory / "zet.conf").string();
    std::shared_ptr<IZETConfigFile> file = ConfigOf(*host)->OpenConfigFile(path, "client", true);
    ASSERT_NE(file, nullptr);
    host->UnloadModules();
    EXPECT_EQ(file->GetParamValue("MY_KEY"), "mine");
    file.reset();
}

TEST_F(HostsTest, FileCanBeLetGoAfterItsHost) {
    auto host = MakeHost();
    Load(*host);
    const std::string path = (m_directory / "zet.conf").string();
    std::shared_ptr<IZETConfigFile> file = ConfigOf(*host)->OpenConfigFile(path, "client", true);
    ASSERT_NE(file, nullptr);
    host.reset();
    file.reset();
}

}  // namespace
}  // namespace ZET
