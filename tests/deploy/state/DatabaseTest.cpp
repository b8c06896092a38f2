#include "deploy/state/store/Database.h"

#include <cerrno>

#include "StoreFixture.h"

namespace ZET::Deploy {
namespace {

class DatabaseTest : public StoreFixture {};

TEST_F(DatabaseTest, WhatFailedBeforeIsNoReason) {
    std::ofstream(Name()) << "";
    Database database(Name(), Database::Access::Write);
    const Database::Transaction outer(database);
    errno = EDQUOT;
    try {
        const Database::Transaction inner(database);
        ADD_FAILURE() << "a transaction in another one";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.ErrorNumber(), 0) << error.what();
        EXPECT_FALSE(error.IsFull());
    }
}

}  // namespace
}  // namespace ZET::Deploy
