#include "deploy/state/Lock.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>
#include <functional>
#include <optional>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr uid_t kNobody = 65534;

/// Does something when it is told who holds the lock.
class Waiter : public Told {
  public:
    explicit Waiter(std::function<void()> reaction) : m_reaction(std::move(reaction)) {}

    void Remark(const std::string& text) override {
        Told::Remark(text);
        m_reaction();
    }

  private:
    std::function<void()> m_reaction;
};

/// For as long as it lives, the process has no more rights than any user.
class RightsOfAnyone {
  public:
    RightsOfAnyone() : m_isTaken(geteuid() == 0 && seteuid(kNobody) == 0) {}
    ~RightsOfAnyone() { EXPECT_TRUE(!m_isTaken || seteuid(0) == 0); }
    RightsOfAnyone(const RightsOfAnyone&) = delete;
    RightsOfAnyone& operator=(const RightsOfAnyone&) = delete;

  private:
    bool m_isTaken;
};

class WriteLockTest : public HostFixture {
  protected:
    LockSeeker SeekerFor(Observer& observer) { return {"zet-client status", observer}; }

    /// Gives up at once.
    LockSeeker Impatient() { return {"zet-client status", m_told, std::chrono::seconds(0)}; }

    const LockSeeker m_holder{"zet-init commit-config", m_told};
    const std::string m_ownName = "process " + std::to_string(getpid()) + " (zet-init commit-config)";
};

TEST_F(WriteLockTest, HolderWritesHisNameForThoseWhoWait) {
    Write("state/zet.lock", "99999999 (a former holder with a longer name)\n");
    const WriteLock lock(State(), m_holder);
    EXPECT_TRUE(lock.IsProducts());
    EXPECT_EQ(Read("state/zet.lock"), std::to_string(getpid()) + " (zet-init commit-config)\n");
    EXPECT_THAT(m_told.remarks, IsEmpty());
}

TEST_F(WriteLockTest, WhereTheNameDoesNotFitNobodyIsNamed) {
    Write("state/zet.lock", "1 (zet-init)\n\n");
    const pid_t child = fork();
    if (child == 0) {
        const struct rlimit noLonger = {fs::file_size(At("state/zet.lock")), RLIM_INFINITY};
        std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &noLonger);
        new WriteLock(State(), m_holder);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(Read("state/zet.lock"), "");
}

TEST_F(WriteLockTest, LockIsForItsOwnerAlone) {
    const WriteLock lock(State(), m_holder);
    EXPECT_EQ(fs::status(At("state/zet.lock")).permissions(), fs::perms(0600));
}

TEST_F(WriteLockTest, WaitsUntilTheHolderLetsGoAndTellsOnceWhoItIs) {
    std::optional<WriteLock> former(std::in_place, State(), m_holder);
    Waiter waiter([&] { former.reset(); });
    const WriteLock lock(State(), SeekerFor(waiter));
    EXPECT_THAT(waiter.remarks, ElementsAre("waiting for " + m_ownName + ", which holds " +
                                            At("state/zet.lock") + ", for 30 s at most"));
    EXPECT_THAT(Read("state/zet.lock"), HasSubstr("(zet-client status)"));
}

TEST_F(WriteLockTest, WhoHasWaitedLongEnoughIsToldWhoHoldsIt) {
    const WriteLock former(State(), m_holder);
    const LockSeeker seeker{"zet-client status", m_told, std::chrono::seconds(1)};
    EXPECT_EQ(
        MessageOf<Failure>([&] { WriteLock(State(), seeker); }),
        At("state/zet.lock") + ": " + m_ownName + " has held the lock for 1 s (let it end, then try again)");
    EXPECT_THAT(m_told.remarks, SizeIs(1)) << "however often it tries";
}

TEST_F(WriteLockTest, LockGoesWithTheProcessThatHeldIt) {
    const pid_t child = fork();
    if (child == 0) {
        new WriteLock(State(), m_holder);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    const WriteLock lock(State(), m_holder);
    EXPECT_THAT(m_told.remarks, IsEmpty());
}

TEST_F(WriteLockTest, LockFileOfTwoNamesIsNotWritten) {
    Write("out/other", "text");
    fs::create_hard_link(At("out/other"), At("state/zet.lock"));
    EXPECT_THAT(MessageOf<Failure>([&] { WriteLock(State(), m_holder); }),
                HasSubstr("is no regular file of one name (move it away)"));
    EXPECT_EQ(Read("out/other"), "text");
}

TEST_F(WriteLockTest, LinkInThePlaceOfTheLockFileIsNotFollowed) {
    fs::create_symlink(At("out/other"), At("state/zet.lock"));
    EXPECT_THAT(MessageOf<Failure>([&] { WriteLock(State(), m_holder); }), HasSubstr("cannot be opened"));
    EXPECT_THAT(MessageOf<Failure>([&] { WriteLock(State(), m_holder, At("out/x")); }),
                HasSubstr("cannot be opened"))
        << "no reason to do without it";
    EXPECT_FALSE(fs::exists(At("out/other")));
}

TEST_F(WriteLockTest, WithoutTheProductsDirectoryThereIsNoLockForTheProduct) {
    fs::remove(At("state"));
    EXPECT_THAT(MessageOf<Failure>([&] { WriteLock(State(), m_holder); }),
                HasSubstr("(create the directory ZET_VAR_LIB_DIR, or run as a user who may write there)"));
}

TEST_F(WriteLockTest, WithoutTheProductsDirectoryAnEditLocksThatOfItsFile) {
    fs::remove(At("state"));
    const WriteLock lock(State(), m_holder, At("out/x"));
    EXPECT_FALSE(lock.IsProducts());
    EXPECT_THAT(MessageOf<Failure>([&] { WriteLock(State(), Impatient(), At("out/y")); }),
                HasSubstr(At("out") + ": another process has held the lock"));
    EXPECT_NO_THROW(WriteLock(State(), Impatient(), At("etc/y"))) << "another directory";
}

TEST_F(WriteLockTest, WhoMayNotWriteTheProductsDirectoryLocksThatOfHisFile) {
    fs::permissions(At("."), fs::perms(0755));
    fs::permissions(At("state"), fs::perms(0555));
    const RightsOfAnyone rights;
    const WriteLock lock(State(), m_holder, At("out/x"));
    EXPECT_FALSE(lock.IsProducts());
    EXPECT_FALSE(fs::exists(At("state/zet.lock")));
    EXPECT_THAT(MessageOf<Failure>([&] { WriteLock(State(), Impatient(), At("out/x")); }),
                HasSubstr(At("out") + ": another process has held the lock"));
    EXPECT_THROW(WriteLock(State(), m_holder), Failure) << "the product's own";
}

TEST_F(WriteLockTest, DirectoryThatMayNotBeReadCannotBeLocked) {
    fs::permissions(At("."), fs::perms(0755));
    fs::permissions(At("state"), fs::perms(0555));
    fs::permissions(At("out"), fs::perms(0311));
    {
        const RightsOfAnyone rights;
        EXPECT_THAT(
            MessageOf<Failure>([&] { WriteLock(State(), m_holder, At("out/x")); }),
            AllOf(HasSubstr(At("out") + ": cannot be locked"), HasSubstr("let the user read the directory")));
    }
    fs::permissions(At("out"), fs::perms(0755));
}

TEST_F(WriteLockTest, DirectoryThatOthersMayWriteIsLockedBesides) {
    fs::permissions(At("out"), fs::perms(0775));
    const Descriptor held(open(At("out").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(flock(held, LOCK_EX), 0);
    EXPECT_THROW(WriteLock(State(), Impatient(), At("out/x")), Failure);
    fs::permissions(At("out"), fs::perms(0755));
    const WriteLock lock(State(), Impatient(), At("out/x"));
    EXPECT_TRUE(lock.IsProducts()) << "of a directory of one's own, nobody else's lock matters";
}

}  // namespace
}  // namespace ZET::Deploy
