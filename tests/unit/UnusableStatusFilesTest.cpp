#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ostream>

#include "ModuleTest.h"
#include "SystemCalls.h"
#include "ZETConfig.h"

namespace ZET {
namespace {

/// The two operations on a status file that open it.
struct StatusFile {
    const char* name;
    const char* file;
    const char* saver;
    std::function<void(CZETConfig&)> save;
    const char* loader;
    std::function<void(CZETConfig&)> load;
};

void PrintTo(const StatusFile& each, std::ostream* stream) {
    *stream << each.name;
}

/// What stands at the name of a status file and is none: refused at once, whatever it is, and left alone.
class UnusableStatusFilesTest : public ModuleTest, public testing::WithParamInterface<StatusFile> {
  protected:
    UnusableStatusFilesTest() {
        m_core.SetParam("NETWORK_FS_TYPE", "nfs4");
        m_core.SetStatusWriter([](std::ostream& stream) { stream << "NETWORK_FS_TYPE=nfs4\n"; });
    }

    void ExpectRefused(const std::string& function, const std::function<void(CZETConfig&)>& act) {
        const std::string text = "Failed to open file 'D/" + m_name + "'.";
        m_core.Forget();
        ExpectError<EZETError>(text, [&] { act(m_config); });
        EXPECT_EQ(Messages(),
                  Strings{"libzet-core src/interfaces/zet-config/ZETConfig " + function + " 1: " + text});
        EXPECT_EQ(Journal({"WriteStatus"}), Strings{});
    }

    void ExpectNoSave() { ExpectRefused(GetParam().saver, GetParam().save); }
    void ExpectNoLoad() { ExpectRefused(GetParam().loader, GetParam().load); }

    const std::string m_name = GetParam().file;
    CZETConfig m_config{m_core};
};

TEST_P(UnusableStatusFilesTest, PipeIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(Path(m_name).c_str(), 0600), 0);
    ExpectNoSave();
    ExpectNoLoad();
}

TEST_P(UnusableStatusFilesTest, PipeWithAReaderGetsNothing) {
    ASSERT_EQ(::mkfifo(Path(m_name).c_str(), 0600), 0);
    const int reader = ::open(Path(m_name).c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    ExpectNoSave();
    ExpectNoLoad();
    char byte = 0;
    EXPECT_EQ(::read(reader, &byte, 1), -1);
    ::close(reader);
}

TEST_P(UnusableStatusFilesTest, LinkToAPipeIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
    ASSERT_EQ(::symlink(Path("pipe").c_str(), Path(m_name).c_str()), 0);
    ExpectNoSave();
    ExpectNoLoad();
}

TEST_P(UnusableStatusFilesTest, DirectoryIsRefused) {
    ASSERT_EQ(::mkdir(Path(m_name).c_str(), 0755), 0);
    ExpectNoSave();
    ExpectNoLoad();
}

TEST_P(UnusableStatusFilesTest, LinkToADeviceIsRefused) {
    ASSERT_EQ(::symlink("/dev/zero", Path(m_name).c_str()), 0);
    ExpectNoSave();
    ExpectNoLoad();
}

TEST_P(UnusableStatusFilesTest, SocketIsRefused) {
    const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(Path(m_name).size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, Path(m_name).c_str());
    ASSERT_EQ(::bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ExpectNoSave();
    ExpectNoLoad();
    ::close(server);
}

TEST_P(UnusableStatusFilesTest, NameThatHoldsANulByteIsNotThatOfAShorterOne) {
    const std::string other = Write("other", "precious\n");
    m_core.SetParam("ZET_VAR_LIB_DIR", other + std::string("\0", 1));
    EXPECT_THROW(GetParam().save(m_config), EZETError);
    EXPECT_EQ(Read("other"), "precious\n");
}

TEST_P(UnusableStatusFilesTest, LinkToAFileIsFollowed) {
    Write("other", "a much longer former status\n", 0640);
    ASSERT_EQ(::symlink(Path("other").c_str(), Path(m_name).c_str()), 0);
    GetParam().save(m_config);
    EXPECT_EQ(Read("other"), "NETWORK_FS_TYPE=nfs4\n");
    EXPECT_EQ(Mode("other"), 0640U);
}

TEST_P(UnusableStatusFilesTest, StatusThatCannotBeToldToBeAFileIsNotLoaded) {
    Write(m_name, "NETWORK_FS_TYPE=nfs4\n");
    const SystemCalls lies({.failing = {{"fstat", EIO}}});
    ExpectNoLoad();
    EXPECT_EQ(lies.Record().counts.at("fstat"), 1U);
}

TEST_P(UnusableStatusFilesTest, StatusThatCannotBeEmptiedIsRefused) {
    Write(m_name, "former\n");
    {
        const SystemCalls lies({.failing = {{"ftruncate", EIO}}});
        ExpectNoSave();
        EXPECT_EQ(lies.Record().counts.at("ftruncate"), 1U);
    }
    EXPECT_EQ(Read(m_name), "former\n");
}

TEST_P(UnusableStatusFilesTest, ShortAndInterruptedWritesAreContinued) {
    {
        const SystemCalls lies({.interrupts = true, .atMost = 3});
        GetParam().save(m_config);
        EXPECT_GT(lies.Record().interruptions, 1U);
    }
    EXPECT_EQ(Read(m_name), "NETWORK_FS_TYPE=nfs4\n");
}

INSTANTIATE_TEST_SUITE_P(
    Each, UnusableStatusFilesTest,
    testing::Values(StatusFile{"Server", "var/zet-server.status", "SaveConfigStatus",
                               [](CZETConfig& config) { config.SaveConfigStatus("server"); },
                               "LoadConfigStatus",
                               [](CZETConfig& config) {
                                   StringMap values;
                                   config.LoadConfigStatus("server", values);
                               }},
                    StatusFile{"FileServer", "var/zet-client-fs.status", "SaveFileServerStatus",
                               [](CZETConfig& config) { config.SaveFileServerStatus(); },
                               "GetFileServerStatus",
                               [](CZETConfig& config) { config.GetFileServerStatus(); }}),
    [](const testing::TestParamInfo<StatusFile>& info) { return info.param.name; });

/// The stream that the core writes its status into.
class StatusStreamTest : public ModuleTest {
  protected:
    void Save(const std::function<void(std::ostream&)>& writer) {
        m_core.SetStatusWriter(writer);
        m_config.SaveConfigStatus("server");
    }

    std::string Saved() const { return Read("var/zet-server.status"); }

    CZETConfig m_config{m_core};
};

TEST_F(StatusStreamTest, LongStatusIsWrittenWhole) {
    std::string expected;
    for (int i = 0; i < 20000; ++i)
        expected += std::to_string(i) + "=value\n";
    Save([&](std::ostream& stream) {
        for (int i = 0; i < 20000; ++i)
            stream << i << "=value" << '\n';
    });
    EXPECT_TRUE(Saved() == expected);
    Save([&](std::ostream& stream) { stream << expected; });
    EXPECT_TRUE(Saved() == expected);
}

TEST_F(StatusStreamTest, WhatIsFlushedIsThereAtOnce) {
    Save([&](std::ostream& stream) {
        stream << "a=1\n" << std::flush;
        EXPECT_EQ(Saved(), "a=1\n");
        stream << "b=2\n";
    });
    EXPECT_EQ(Saved(), "a=1\nb=2\n");
}

TEST_F(StatusStreamTest, WriteThatFailsIsSeenByTheWriter) {
    const SystemCalls lies({.writesNothing = true});
    Save([](std::ostream& stream) {
        stream << "a=1\n";
        EXPECT_TRUE(stream.good());
        stream.flush();
        EXPECT_TRUE(stream.bad());
    });
}

TEST_F(StatusStreamTest, WriteThatFailsBeforeTheFlushIsSeenToo) {
    const SystemCalls lies({.writesNothing = true});
    Save([](std::ostream& stream) {
        stream << std::string(100000, 'x');
        EXPECT_TRUE(stream.bad());
    });
}

TEST_F(StatusStreamTest, NoDescriptorOutlivesIt) {
    const auto save = [&] { Save([](std::ostream&) {}); };
    const SystemCalls seen({});
    save();
    EXPECT_EQ(seen.Record().closes, 1U);
}

}  // namespace
}  // namespace ZET
