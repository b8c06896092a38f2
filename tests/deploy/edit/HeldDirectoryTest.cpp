#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "deploy/edit/FileEdit.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileVersion.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/Deployment.h"
#include "posix/ModeBits.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace {

/// Another user acts right before a file gets its name.
std::function<void(const std::string& from)> g_beforeRename;

}  // namespace

/// Stands before the library's.
extern "C" int rename(const char* from, const char* to) {
    if (g_beforeRename) g_beforeRename(from);
    return renameat(AT_FDCWD, from, AT_FDCWD, to);
}

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;

constexpr uid_t kHolder = 65534;  // "nobody": one whom the system knows has his own groups only
constexpr uid_t kOther = 12346;

void Write(const std::string& path, const std::string& text, mode_t mode = 0644, uid_t owner = kHolder) {
    std::ofstream(path, std::ios::binary) << text;
    ASSERT_EQ(chown(path.c_str(), owner, owner), 0);
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
}

std::string Read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct stat StatusAt(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

mode_t ModeAt(const std::string& path) {
    return StatusAt(path).st_mode & kModeBits;
}

std::string MessageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "nothing was thrown";
}

/// A directory "home" of another user's with his file "conf" in it, which root is about to write; and
/// "decoy", which he puts in its place when `Swap` is called, while root holds "home".
class HeldDirectory : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "needs root";
        std::string name = testing::TempDir() + "zet-held.XXXXXX";
        m_directory = fs::canonical(mkdtemp(name.data())).string();
        chmod(m_directory.c_str(), 0755);
        for (const char* directory : {"etc", "templates", "state", "home", "decoy"})
            fs::create_directory(At(directory));
        for (const char* directory : {"home", "decoy"})
            ASSERT_EQ(chown(At(directory).c_str(), kHolder, kHolder), 0);
        Write(At("home/conf"), "a=1\n");
        Write(At("zet.conf"),
              "ZET_SYNC=no\nZET_CFG_DIR=" + At("etc") + "\nZET_CFG_TEMPL_DIR=" + At("templates") +
                  "\nZET_VAR_LIB_DIR=" + At("state") + "\n",
              0644, 0);
        Options options;
        options.moduleFile = ZET_MODULE;
        m_product = std::make_unique<Deployment>(At("zet.conf"), options, m_observer);
    }

    void TearDown() override {
        m_product.reset();
        if (!m_directory.empty()) fs::remove_all(m_directory);
    }

    std::string At(const std::string& name) const { return m_directory + "/" + name; }

    FileInPlace Place() { return FileInPlace(m_product->HostPaths().Find(At("home/conf")), At("home/conf")); }

    /// From now on the name leads to the decoy; what is held is "moved".
    void Swap() {
        fs::rename(At("home"), At("moved"));
        fs::rename(At("decoy"), At("home"));
    }

    void SwapBack() {
        fs::rename(At("home"), At("decoy"));
        fs::rename(At("moved"), At("home"));
    }

    /// A group and a mode that the holder may not give his file himself.
    void GiveWhatOnlyRootCan() {
        ASSERT_EQ(chown(At("home/conf").c_str(), kHolder, kOther), 0);
        ASSERT_EQ(chmod(At("home/conf").c_str(), 02755), 0);
    }

    /// What the module would do: a new text, saved.
    static void Save(const std::string& name) {
        std::ofstream(name + ZETTemporarySuffix) << "a=2\n";
        RenameFile(name + ZETTemporarySuffix, name);
    }

    std::string m_directory;
    Observer m_observer;
    std::unique_ptr<Deployment> m_product;
};

TEST_F(HeldDirectory, FormerFileIsTheOneThatIsHeld) {
    ASSERT_EQ(chmod(At("home/conf").c_str(), 0600), 0);
    Write(At("decoy/conf"), "decoy\n", 0666, kOther);
    const FileInPlace place = Place();
    Swap();
    const Replacement replacement(*m_product, place, place.Version());
    EXPECT_EQ(replacement.Former().owner, kHolder);
    EXPECT_EQ(replacement.Former().mode & kModeBits, 0600U);
}

TEST_F(HeldDirectory, FileThatWasWrittenBeforeItWasFoundIsRefused) {
    const FileVersion version = Place().Version();
    Write(At("home/conf"), "theirs\n");
    const FileInPlace place = Place();
    EXPECT_THAT(MessageOf([&] {
                    const Replacement replacement(*m_product, place, version, Replacement::Look::WasFound);
                }),
                HasSubstr("another program wrote it at the same time, and nothing was changed"));
}

TEST_F(HeldDirectory, WriteAfterTheFileWasFoundIsSeenBeforeTheRename) {
    const FileInPlace place = Place();
    Replacement replacement(*m_product, place, place.Version(), Replacement::Look::WasFound);
    Write(At("home/conf"), "theirs\n");
    EXPECT_THAT(MessageOf([&] { replacement.MakeOf(0644, Save, [](int, const std::string&) {}); }),
                HasSubstr("another program wrote it at the same time, and nothing was changed"));
    EXPECT_EQ(Read(At("home/conf")), "theirs\n");
    EXPECT_FALSE(fs::exists(At(std::string("home/conf") + ZETTemporarySuffix)));
}

TEST_F(HeldDirectory, VisitsComeBackToTheStart) {
    const FileInPlace place = Place();
    const fs::path former = fs::current_path();
    fs::current_path(At("decoy"));
    {
        const FileInPlace::Start start;
        for (int i = 0; i < 2; ++i) {
            place.Within([&](const std::string&) { EXPECT_EQ(fs::current_path(), At("home")); });
            EXPECT_EQ(fs::current_path(), At("decoy"));
        }
    }
    fs::current_path(At("etc"));
    place.Within([](const std::string&) {});
    EXPECT_EQ(fs::current_path(), At("etc")) << "after the start has ended, from where it is called";
    fs::current_path(former);
}

TEST_F(HeldDirectory, FileOfAnotherOwnerThatTookItsPlaceIsRefused) {
    const FileInPlace place = Place();
    Write(At("home/conf"), "other\n", 0644, kOther);
    EXPECT_EQ(MessageOf([&] { const Replacement replacement(*m_product, place, place.Version()); }),
              At("home/conf") +
                  ": was replaced at the same time, and nothing was changed (look at it, and run the command "
                  "again)");
}

TEST_F(HeldDirectory, VersionIsThatOfTheHeldFile) {
    Write(At("decoy/conf"), "decoy\n");
    const FileInPlace place = Place();
    const FileVersion version = place.Version();
    Swap();
    Replacement replacement(*m_product, place, version);
    replacement.Make(0644, Save, [](const std::string&) {});
    EXPECT_EQ(Read(At("moved/conf")), "a=2\n");
    EXPECT_EQ(Read(At("home/conf")), "decoy\n");
}

TEST_F(HeldDirectory, WriteIntoTheHeldFileIsSeenThoughItsNameLeadsElsewhere) {
    const FileInPlace place = Place();
    const FileVersion version = place.Version();
    // The decoy's is the file as it was: the same one under two names, until the held one is another.
    fs::create_hard_link(At("home/conf"), At("decoy/conf"));
    const FileVersion linked = place.Version();
    EXPECT_FALSE(linked == version);
    fs::remove(At("home/conf"));
    Write(At("home/conf"), "theirs\n");
    const FileVersion ofDecoy = VersionOf(At("decoy/conf"));
    Swap();
    Replacement replacement(*m_product, place, ofDecoy);
    EXPECT_THAT(MessageOf([&] { replacement.Make(0644, Save, [](const std::string&) {}); }),
                HasSubstr("another program wrote it at the same time, and nothing was changed"));
    EXPECT_EQ(Read(At("moved/conf")), "theirs\n");
}

TEST_F(HeldDirectory, ReserveIsThatOfTheHeldFile) {
    GiveWhatOnlyRootCan();
    Write(At("decoy/conf"), "decoy\n");
    Write(At(std::string("decoy/conf") + ZETReserveSuffix), "decoy\n", 0600);
    const FileInPlace place = Place();
    const FileVersion version = place.Version();
    Swap();
    Replacement replacement(*m_product, place, version);
    replacement.KeepOriginal();
    replacement.LeaveFile();
    EXPECT_EQ(Read(At(std::string("moved/conf") + ZETReserveSuffix)), "a=1\n");
    EXPECT_EQ(StatusAt(At(std::string("moved/conf") + ZETReserveSuffix)).st_gid, kOther);
    EXPECT_EQ(ModeAt(At(std::string("moved/conf") + ZETReserveSuffix)), 02755U);
    EXPECT_EQ(StatusAt(At(std::string("home/conf") + ZETReserveSuffix)).st_gid, kHolder);
    EXPECT_EQ(ModeAt(At(std::string("home/conf") + ZETReserveSuffix)), 0600U);
}

TEST_F(HeldDirectory, ReserveThatTheHeldFileHadIsNotTakenBack) {
    Write(At(std::string("home/conf") + ZETReserveSuffix), "original\n");
    Write(At("decoy/conf"), "decoy\n");
    const FileInPlace place = Place();
    const FileVersion version = place.Version();
    Swap();
    {
        Replacement replacement(*m_product, place, version);
        replacement.KeepOriginal();
        EXPECT_EQ(MessageOf([&] {
                      replacement.Make(0644, Save,
                                       [](const std::string&) { throw Failure({.text = "refused"}); });
                  }),
                  "refused");
    }
    EXPECT_EQ(Read(At(std::string("moved/conf") + ZETReserveSuffix)), "original\n");
    EXPECT_EQ(Read(At("moved/conf")), "a=1\n");
}

TEST_F(HeldDirectory, ReserveWithAnotherNameGetsNoRights) {
    GiveWhatOnlyRootCan();
    const FileInPlace place = Place();
    g_beforeRename = [&](const std::string& from) { fs::create_hard_link(from, At("home/his")); };
    Replacement replacement(*m_product, place, place.Version());
    const std::string message = MessageOf([&] { replacement.KeepOriginal(); });
    g_beforeRename = nullptr;
    EXPECT_THAT(message,
                HasSubstr("conf.before_zet: was replaced at the same time, and nothing was changed"));
    EXPECT_EQ(StatusAt(At("home/his")).st_gid, kHolder);
    EXPECT_EQ(ModeAt(At("home/his")) & (S_ISUID | S_ISGID), 0U);
}

TEST_F(HeldDirectory, FileThatWasNotThereBeforeGoesThoughTheDecoyHasAReserve) {
    Write(At(std::string("home/conf") + ZETAbsenceSuffix), "");
    Write(At("decoy/conf"), "decoy\n");
    Write(At(std::string("decoy/conf") + ZETReserveSuffix), "decoy\n");
    const FileInPlace place = Place();
    const FileVersion version = place.Version();
    Swap();
    PutBackAsItWas(*m_product, place, version);
    EXPECT_TRUE(fs::is_empty(At("moved")));
    EXPECT_EQ(Read(At("home/conf")), "decoy\n");
}

TEST_F(HeldDirectory, EditTakesVersionAndModeOfTheHeldFile) {
    ASSERT_EQ(chmod(At("home/conf").c_str(), 0600), 0);
    Write(At("decoy/conf"), "decoy\n", 0666);
    m_product->HostPaths().Find(At("home/conf"));  // by which the directory is held for the run
    Swap();
    FileEdit change(*m_product, At("home/conf"));
    const auto edit = [&](const std::string& name) {
        FileInPlace::Outside([&] { SwapBack(); });
        Save(name);
    };
    EXPECT_EQ(MessageOf([&] { EXPECT_TRUE(change.Make(edit, true).IsChange()); }), "nothing was thrown");
    EXPECT_EQ(Read(At("home/conf")), "a=2\n");
    EXPECT_EQ(ModeAt(At("home/conf")), 0600U);
    EXPECT_EQ(Read(At("decoy/conf")), "decoy\n");
}

void DropCapability(int capability) {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2] = {};
    ASSERT_EQ(syscall(SYS_capget, &header, data), 0);
    data[0].effective &= ~(1U << static_cast<unsigned>(capability));
    ASSERT_EQ(syscall(SYS_capset, &header, data), 0);
}

/// In a thread of its own, whose rights and directory are not those of the others.
class HeldDirectoryWithout : public HeldDirectory, public testing::WithParamInterface<int> {};

TEST_P(HeldDirectoryWithout, RightsThatCannotBeTakenLeaveDirectoryAndRightsAsTheyWere) {
    const FileInPlace place = Place();
    std::thread([&] {
        const fs::path before = fs::read_symlink("/proc/thread-self/cwd");
        const int groups = getgroups(0, nullptr);
        DropCapability(GetParam());
        bool isCalled = false;
        EXPECT_THAT(MessageOf([&] { place.Within([&](const std::string&) { isCalled = true; }); }),
                    HasSubstr("the rights of nobody cannot be taken: Operation not permitted"));
        EXPECT_FALSE(isCalled);
        EXPECT_EQ(fs::read_symlink("/proc/thread-self/cwd"), before);
        EXPECT_EQ(setfsuid(static_cast<uid_t>(-1)), 0);
        EXPECT_EQ(setfsgid(static_cast<gid_t>(-1)), 0);
        EXPECT_EQ(getgroups(0, nullptr), groups);
    }).join();
}

TEST_P(HeldDirectoryWithout, RightsThatCannotBeTakenAgainLeaveDirectoryAndRightsAsTheyWere) {
    const FileInPlace place = Place();
    std::thread([&] {
        const fs::path before = fs::read_symlink("/proc/thread-self/cwd");
        const auto visit = [&](const std::string&) {
            FileInPlace::Outside([] { DropCapability(GetParam()); });
        };
        EXPECT_THAT(MessageOf([&] { place.Within(visit); }), HasSubstr("cannot be taken"));
        EXPECT_EQ(fs::read_symlink("/proc/thread-self/cwd"), before);
        EXPECT_EQ(setfsuid(static_cast<uid_t>(-1)), 0);
        EXPECT_EQ(setfsgid(static_cast<gid_t>(-1)), 0);
    }).join();
}

INSTANTIATE_TEST_SUITE_P(Capability, HeldDirectoryWithout, testing::Values(CAP_SETGID, CAP_SETUID));

}  // namespace
}  // namespace ZET::Deploy
