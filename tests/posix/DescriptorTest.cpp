#include "posix/Descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

namespace ZET {
namespace {

int OpenSomething() {
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool IsOpen(int number) {
    return ::fcntl(number, F_GETFD) >= 0;
}

TEST(DescriptorTest, NoneIsNotOpen) {
    EXPECT_FALSE(Descriptor().IsOpen());
    EXPECT_FALSE(Descriptor(-1).IsOpen());
    EXPECT_TRUE(Descriptor().Close());
}

TEST(DescriptorTest, FirstNumberOfAllIsOpenToo) {
    Descriptor zero(0);
    EXPECT_TRUE(zero.IsOpen());
    EXPECT_EQ(zero.Release(), 0);
}

TEST(DescriptorTest, IsClosedAtTheEndOfItsLife) {
    const int number = OpenSomething();
    {
        const Descriptor owner(number);
        EXPECT_EQ(owner.Number(), number);
        EXPECT_TRUE(IsOpen(number));
    }
    EXPECT_FALSE(IsOpen(number));
}

TEST(DescriptorTest, ChangesItsOwner) {
    const int number = OpenSomething();
    Descriptor first(number);
    Descriptor second(std::move(first));
    EXPECT_FALSE(first.IsOpen());
    EXPECT_EQ(second.Number(), number);
    Descriptor third(OpenSomething());
    const int former = third.Number();
    third = std::move(second);
    EXPECT_FALSE(IsOpen(former));
    EXPECT_FALSE(second.IsOpen());
    EXPECT_EQ(third.Number(), number);
    EXPECT_TRUE(IsOpen(number));
}

TEST(DescriptorTest, OwnerThatIsGivenItsOwnKeepsIt) {
    Descriptor owner(OpenSomething());
    Descriptor& same = owner;
    owner = std::move(same);
    EXPECT_TRUE(IsOpen(owner.Number()));
}

TEST(DescriptorTest, AnotherNumberTakesThePlaceOfTheFormer) {
    const int former = OpenSomething();
    const int next = OpenSomething();
    Descriptor owner(former);
    owner.Reset(next);
    EXPECT_FALSE(IsOpen(former));
    EXPECT_EQ(owner.Number(), next);
}

TEST(DescriptorTest, ReleasedNumberIsTheCallers) {
    const int number = OpenSomething();
    {
        Descriptor owner(number);
        EXPECT_EQ(owner.Release(), number);
        EXPECT_FALSE(owner.IsOpen());
    }
    EXPECT_TRUE(IsOpen(number));
    ::close(number);
}

TEST(DescriptorTest, FailureToCloseIsTold) {
    const int number = OpenSomething();
    Descriptor owner(number);
    ::close(number);
    EXPECT_FALSE(owner.Close());
    EXPECT_EQ(errno, EBADF);
    EXPECT_TRUE(owner.Close()) << "there is nothing left to close";
}

}  // namespace
}  // namespace ZET
