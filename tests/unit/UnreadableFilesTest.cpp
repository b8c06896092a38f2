#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "ChildProcess.h"
#include "ModuleTest.h"
#include "SystemCalls.h"

namespace ZET {
namespace {

using namespace std::chrono_literals;

/// What cannot be read as a file is logged and refused, without waiting for it and without keeping any of it.
class UnreadableFilesTest : public ModuleTest {
  protected:
    void ExpectRefused(const std::string& path) {
        ExpectChildPasses(5s, [&] {
            CZETConfigFile file(m_core);
            EXPECT_FALSE(file.Open(path, "server", false));
            EXPECT_EQ(Log(), (Strings{"2 Process config file '" + Shown(path) + "'...",
                                      "0 Failed to open file '" + Shown(path) + "'."}));
            StringMap none;
            ExpectError<EZETCheckError>("Invalid config object '" + Shown(path) + "'.",
                                        [&] { file.ApplyTemplates(none); });
        });
    }

    std::string LinkTo(const std::string& target) const {
        const std::string path = Path("link");
        EXPECT_EQ(::symlink(target.c_str(), path.c_str()), 0);
        return path;
    }
};

TEST_F(UnreadableFilesTest, MissingFileIsRefused) {
    ExpectRefused(Path("missing"));
}

TEST_F(UnreadableFilesTest, FileBelowAFileIsRefused) {
    ExpectRefused(Write("file", "x") + "/below");
}

TEST_F(UnreadableFilesTest, NameThatHoldsANulByteIsNotThatOfAShorterOne) {
    CZETConfigFile file(m_core);
    EXPECT_FALSE(file.Open(Write("file", "x") + std::string("\0y", 2), "server", false));
}

TEST_F(UnreadableFilesTest, DirectoryIsRefused) {
    ExpectRefused(Path("cfg"));
}

TEST_F(UnreadableFilesTest, LinkToADirectoryIsRefused) {
    ExpectRefused(LinkTo("cfg"));
}

TEST_F(UnreadableFilesTest, DanglingLinkIsRefused) {
    ExpectRefused(LinkTo("missing"));
}

TEST_F(UnreadableFilesTest, LinkToItselfIsRefused) {
    ExpectRefused(LinkTo("link"));
}

TEST_F(UnreadableFilesTest, PipeWithoutAWriterIsRefusedAtOnce) {
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
    ExpectRefused(Path("pipe"));
}

TEST_F(UnreadableFilesTest, PipeWithAWriterKeepsWhatIsInIt) {
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
    const int pipe = ::open(Path("pipe").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(::write(pipe, "x=1\n", 4), 4);
    ExpectRefused(Path("pipe"));
    char bytes[8] = "";
    EXPECT_EQ(::read(pipe, bytes, sizeof bytes), 4);
    ::close(pipe);
}

TEST_F(UnreadableFilesTest, LinkToAPipeIsRefusedAtOnce) {
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
    ExpectRefused(LinkTo("pipe"));
}

TEST_F(UnreadableFilesTest, SocketIsRefused) {
    const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(Path("socket").size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, Path("socket").c_str());
    ASSERT_EQ(::bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ExpectRefused(Path("socket"));
    ::close(server);
}

TEST_F(UnreadableFilesTest, EmptyDeviceIsRefused) {
    ExpectRefused("/dev/null");
}

TEST_F(UnreadableFilesTest, EndlessDeviceIsRefused) {
    ExpectRefused("/dev/zero");
}

TEST_F(UnreadableFilesTest, FileWhoseFirstReadFailsIsRefused) {
    ExpectRefused("/proc/self/mem");
}

TEST_F(UnreadableFilesTest, FileWhoseReadingBreaksOffIsRefusedAsAWhole) {
    const std::string path = Write("a.conf", "x=1\ny=2\n");
    CZETConfigFile file(m_core);
    {
        const SystemCalls lies({.atMost = 4, .readError = EIO});
        EXPECT_FALSE(file.Open(path, "server", false));
        EXPECT_GT(lies.Record().reads, 1U);
    }
    EXPECT_EQ(Log().back(), "0 Failed to open file 'D/a.conf'.");
    StringMap none;
    ExpectError<EZETCheckError>("Invalid config object 'D/a.conf'.", [&] { file.ApplyTemplates(none); });
}

TEST_F(UnreadableFilesTest, FileThatDoesNotKnowItsSizeIsReadAsAWhole) {
    // Every second page of a different kind makes each a line of its own, long before that of the stack.
    constexpr std::size_t kPages = 256;
    const auto page = static_cast<std::size_t>(::getpagesize());
    void* memory = ::mmap(nullptr, kPages * page, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    for (std::size_t i = 0; i < kPages; i += 2)
        ASSERT_EQ(::mprotect(static_cast<char*>(memory) + i * page, page, PROT_NONE), 0);
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open("/proc/self/maps", "", true));
    m_core.SetMatcher([](const std::string&, const std::string& line) { return line.ends_with("[stack]"); });
    EXPECT_NE(file.GetLine("the stack"), "");
    EXPECT_GT(Journal({"MatchRegEx"}).size(), kPages);
    ::munmap(memory, kPages * page);
}

TEST_F(UnreadableFilesTest, FileWithoutPermissionIsRefused) {
    const std::string path = Write("secret", "x=1\n", 0000);
    ASSERT_EQ(::chmod(m_directory.c_str(), 0755), 0);
    const auto code = ExitOfChild(5s, [&] {
        if (::geteuid() == 0 && ::seteuid(65534) != 0) return kNotPossible;
        CZETConfigFile file(m_core);
        EXPECT_FALSE(file.Open(path, "server", false));
        EXPECT_EQ(Log().back(), "0 Failed to open file 'D/secret'.");
        return 0;
    });
    if (code == kNotPossible) GTEST_SKIP() << "cannot become an ordinary user";
    EXPECT_EQ(code, 0);
}

TEST_F(UnreadableFilesTest, NoDescriptorIsLeftOpen) {
    const auto count = [] {
        const auto entries = std::filesystem::directory_iterator("/proc/self/fd");
        return std::distance(begin(entries), end(entries));
    };
    const std::string good = Write("a.conf", "x\n");
    const auto before = count();
    for (const std::string& path : {good, Path("missing"), Path("cfg"), std::string("/proc/self/mem")}) {
        CZETConfigFile file(m_core);
        if (file.Open(path, "", false)) file.Save(false);
        EXPECT_EQ(count(), before) << path;
    }
}

}  // namespace
}  // namespace ZET
