#include "posix/ReadWrite.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>

#include "posix/Descriptor.h"

namespace ZET {
namespace {

TEST(ReadWriteTest, InterruptedCallIsRepeatedUntilItIsNot) {
    int calls = 0;
    const int result = Uninterrupted([&] {
        errno = EINTR;
        return ++calls < 3 ? -1 : 7;
    });
    EXPECT_EQ(result, 7);
    EXPECT_EQ(calls, 3);
}

TEST(ReadWriteTest, OtherFailureIsNotRepeated) {
    int calls = 0;
    const int result = Uninterrupted([&] {
        errno = EIO;
        ++calls;
        return -1;
    });
    EXPECT_EQ(result, -1);
    EXPECT_EQ(calls, 1);
}

TEST(ReadWriteTest, WrittenBytesAreReadBack) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const Descriptor from(ends[0]);
    Descriptor to(ends[1]);
    EXPECT_TRUE(WriteAll(to, std::string("a\0b", 3)));
    EXPECT_TRUE(to.Close());
    char bytes[10];
    EXPECT_EQ(ReadSome(from, bytes, sizeof bytes), 3);
    EXPECT_EQ(std::string(bytes, 3), std::string("a\0b", 3));
    EXPECT_EQ(ReadSome(from, bytes, sizeof bytes), 0);
}

TEST(ReadWriteTest, WhatCannotBeWrittenIsTold) {
    const Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
    ASSERT_TRUE(full.IsOpen());
    EXPECT_FALSE(WriteAll(full, "x"));
    EXPECT_EQ(errno, ENOSPC);
}

}  // namespace
}  // namespace ZET
