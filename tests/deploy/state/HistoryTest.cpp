#include "deploy/state/History.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <utility>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/state/Lock.h"
#include "deploy/state/store/LastNumber.h"

namespace ZET::Deploy {
namespace {

class HistoryTest : public HostFixture {
  protected:
    bool IsDamageFound() {
        return !MessageOf<Failure>([&] { TheHost().HostHistory().ToLook(); }).empty();
    }

    LockSeeker m_seeker{"zet-client param set", m_told};
};

TEST_F(HistoryTest, ThatNoneIsBegunIsKnownUntilTheLockEnds) {
    std::optional<WriteLock> lock(std::in_place, State(), m_seeker);
    EXPECT_FALSE(TheHost().HostHistory().IsBegun(*lock));
    Write("state/state.db-wal", "of a store that is gone");
    EXPECT_FALSE(IsDamageFound());
    EXPECT_FALSE(TheHost().HostHistory().IsDenied());
    lock.reset();
    EXPECT_TRUE(IsDamageFound());
}

TEST_F(HistoryTest, WhatAnotherRunBeganAfterTheLockEndedIsRecordedInto) {
    std::optional<WriteLock> lock(std::in_place, State(), m_seeker);
    EXPECT_FALSE(TheHost().HostHistory().IsBegun(*lock));
    lock.reset();
    FileToRecord file;
    file.file.path = At("out/a");
    file.file.after.exists = true;
    std::int64_t number = 0;
    {
        Store others(State().Store(), Store::Access::Record, {}, false);
        number = others.Open({}, {file});
        others.Close(number, EntryOutcome::Done);
    }
    const WriteLock next(State(), m_seeker);
    EXPECT_TRUE(TheHost().HostHistory().ToRecord().Find(number));
    EXPECT_EQ(LastNumberBeside(State().Store()), number);
}

TEST_F(HistoryTest, WhatBeginsUnderTheLockIsSeen) {
    const WriteLock lock(State(), m_seeker);
    EXPECT_FALSE(TheHost().HostHistory().IsBegun(lock));
    EXPECT_EQ(TheHost().HostHistory().ToLook(), nullptr);
    Store* const begun = &TheHost().HostHistory().ToRecord();
    EXPECT_EQ(TheHost().HostHistory().ToLook(), begun);
}

}  // namespace
}  // namespace ZET::Deploy
