#include <sys/stat.h>
#include <unistd.h>

#include "ModuleTest.h"
#include "ZETConfig.h"

namespace ZET {
namespace {

constexpr char kStatus[] = "var/zet-client-fs.status";

class FileServerStatusTest : public ModuleTest {
  protected:
    FileServerStatusTest() {
        m_core.SetParam("NETWORK_FS_TYPE", "nfs4");
        m_core.Forget();
    }

    std::string StatusIn(const std::string& content) {
        Write(kStatus, content);
        return m_config.GetFileServerStatus();
    }

    void ExpectOpenFailure(const std::string& function, const std::function<void()>& act) {
        m_core.Forget();
        ExpectError<EZETError>("Failed to open file 'D/var/zet-client-fs.status'.", act);
        EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/ZETConfig " + function +
                                      " 1: Failed to open file 'D/var/zet-client-fs.status'."});
    }

    CZETConfig m_config{m_core};
};

TEST_F(FileServerStatusTest, SavedStatusIsOneLine) {
    m_config.SaveFileServerStatus();
    EXPECT_EQ(Read(kStatus), "NETWORK_FS_TYPE=nfs4\n");
    EXPECT_EQ(Journal(), (Strings{"GetParam ZET_VAR_LIB_DIR", "GetParam NETWORK_FS_TYPE"}));
}

TEST_F(FileServerStatusTest, SavingAgainReplacesTheStatus) {
    Write(kStatus, "# a much longer former status\nNETWORK_FS_TYPE=cifs\n", 0640);
    m_config.SaveFileServerStatus();
    EXPECT_EQ(Read(kStatus), "NETWORK_FS_TYPE=nfs4\n");
    EXPECT_EQ(Mode(kStatus), 0640U);
}

TEST_F(FileServerStatusTest, NewStatusHasTheModeOfTheCreationMask) {
    const mode_t before = ::umask(027);
    m_config.SaveFileServerStatus();
    ::umask(before);
    EXPECT_EQ(Mode(kStatus), 0640U);
}

TEST_F(FileServerStatusTest, EmptyTypeIsWrittenAndReadBackEmpty) {
    m_core.SetParam("NETWORK_FS_TYPE", "");
    m_config.SaveFileServerStatus();
    EXPECT_EQ(Read(kStatus), "NETWORK_FS_TYPE=\n");
    EXPECT_EQ(m_config.GetFileServerStatus(), "");
}

TEST_F(FileServerStatusTest, TypeIsNeitherCheckedNorEscaped) {
    m_core.SetParam("NETWORK_FS_TYPE", " a=b\nc ");
    m_config.SaveFileServerStatus();
    EXPECT_EQ(Read(kStatus), "NETWORK_FS_TYPE= a=b\nc \n");
    EXPECT_EQ(m_config.GetFileServerStatus(), " a=b");
}

TEST_F(FileServerStatusTest, FileIsEmptiedBeforeTheCoreIsAskedForTheType) {
    Write(kStatus, "NETWORK_FS_TYPE=cifs\n");
    m_core.FailAt("GetParam NETWORK_FS_TYPE");
    ExpectScriptedFailure("GetParam NETWORK_FS_TYPE", [&] { m_config.SaveFileServerStatus(); });
    EXPECT_EQ(Read(kStatus), "");
}

TEST_F(FileServerStatusTest, StatusThatCannotBeOpenedForWritingIsAnErrorBeforeTheCoreIsAsked) {
    ASSERT_EQ(::mkdir(Path(kStatus).c_str(), 0755), 0);
    ExpectOpenFailure("SaveFileServerStatus", [&] { m_config.SaveFileServerStatus(); });
    EXPECT_EQ(Journal({"GetParam"}), Strings{"GetParam ZET_VAR_LIB_DIR"});
}

TEST_F(FileServerStatusTest, SavedStatusIsReadBack) {
    m_config.SaveFileServerStatus();
    m_core.Forget();
    EXPECT_EQ(m_config.GetFileServerStatus(), "nfs4");
    EXPECT_EQ(Journal(), (Strings{"GetParam ZET_VAR_LIB_DIR", "IsFileExist D/var/zet-client-fs.status"}));
}

TEST_F(FileServerStatusTest, MissingStatusIsEmptyAndNoError) {
    EXPECT_EQ(m_config.GetFileServerStatus(), "");
    EXPECT_EQ(Journal(), (Strings{"GetParam ZET_VAR_LIB_DIR", "IsFileExist D/var/zet-client-fs.status"}));
}

TEST_F(FileServerStatusTest, LaterLineWins) {
    EXPECT_EQ(StatusIn("NETWORK_FS_TYPE=a\nx=1\nNETWORK_FS_TYPE=b"), "b");
    EXPECT_EQ(StatusIn("NETWORK_FS_TYPE=a\nNETWORK_FS_TYPE=\n"), "");
}

TEST_F(FileServerStatusTest, OtherLinesAreIgnored) {
    EXPECT_EQ(StatusIn("# c\n\nx=1\nno equals sign\nNETWORK_FS_TYPE= nfs4 \r\n"), " nfs4 \r");
    EXPECT_EQ(StatusIn("#NETWORK_FS_TYPE=nfs4\n"), "");
    EXPECT_EQ(StatusIn(" NETWORK_FS_TYPE=nfs4\nNETWORK_FS_TYPE =x\nnetwork_fs_type=y\n"), "");
    EXPECT_EQ(StatusIn(""), "");
}

TEST_F(FileServerStatusTest, StatusThatIsThereButCannotBeOpenedIsAnError) {
    ASSERT_EQ(::symlink("missing", Path(kStatus).c_str()), 0);
    ExpectOpenFailure("GetFileServerStatus", [&] { m_config.GetFileServerStatus(); });
}

TEST_F(FileServerStatusTest, DirectoryCannotBeRead) {
    ASSERT_EQ(::mkdir(Path(kStatus).c_str(), 0755), 0);
    ExpectOpenFailure("GetFileServerStatus", [&] { m_config.GetFileServerStatus(); });
}

TEST_F(FileServerStatusTest, StatusWhoseReadingFailsIsAnError) {
    ASSERT_EQ(::symlink("/proc/self/mem", Path(kStatus).c_str()), 0);
    ExpectOpenFailure("GetFileServerStatus", [&] { m_config.GetFileServerStatus(); });
}

TEST_F(FileServerStatusTest, StatusIsRemovedWhenItIsThere) {
    Write(kStatus, "x");
    m_config.RemoveFileServerStatus();
    EXPECT_EQ(Journal(), (Strings{"GetParam ZET_VAR_LIB_DIR", "IsFileExist D/var/zet-client-fs.status",
                                  "RemoveFile D/var/zet-client-fs.status"}));
    EXPECT_FALSE(Exists(kStatus));
}

TEST_F(FileServerStatusTest, MissingStatusIsNotRemoved) {
    m_config.RemoveFileServerStatus();
    EXPECT_EQ(Journal({"RemoveFile"}), Strings{});
}

TEST_F(FileServerStatusTest, DirectoryIsAskedForEachTimeAndTakenAsItStands) {
    m_core.SetParam("ZET_VAR_LIB_DIR", Path("var/"));
    m_config.RemoveFileServerStatus();
    EXPECT_EQ(Journal().back(), "IsFileExist D/var//zet-client-fs.status");
    m_core.SetParam("ZET_VAR_LIB_DIR", Path("cfg"));
    m_config.SaveFileServerStatus();
    EXPECT_TRUE(Exists("cfg/zet-client-fs.status"));
}

TEST_F(FileServerStatusTest, FailuresOfTheHelpersPassThrough) {
    m_core.FailAt("IsFileExist");
    ExpectScriptedFailure("IsFileExist", [&] { m_config.GetFileServerStatus(); });
    Write(kStatus, "x");
    m_core.FailAt("RemoveFile");
    ExpectScriptedFailure("RemoveFile", [&] { m_config.RemoveFileServerStatus(); });
    m_core.FailAt("GetParam ZET_VAR_LIB_DIR");
    ExpectScriptedFailure("GetParam ZET_VAR_LIB_DIR", [&] { m_config.SaveFileServerStatus(); });
}

}  // namespace
}  // namespace ZET
