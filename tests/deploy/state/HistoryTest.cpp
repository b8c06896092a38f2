#include "deploy/state/History.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/state/Lock.h"

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
    EXPECT_FALSE(TheHost().HostHistory().IsBegun());
    Write("state/state.db-wal", "of a store that is gone");
    EXPECT_FALSE(IsDamageFound());
    EXPECT_FALSE(TheHost().HostHistory().IsDenied());
    lock.reset();
    EXPECT_TRUE(IsDamageFound());
}

TEST_F(HistoryTest, WhatBeginsUnderTheLockIsSeen) {
    const WriteLock lock(State(), m_seeker);
    EXPECT_FALSE(TheHost().HostHistory().IsBegun());
    EXPECT_EQ(TheHost().HostHistory().ToLook(), nullptr);
    Store* const begun = &TheHost().HostHistory().ToRecord();
    EXPECT_EQ(TheHost().HostHistory().ToLook(), begun);
}

}  // namespace
}  // namespace ZET::Deploy
