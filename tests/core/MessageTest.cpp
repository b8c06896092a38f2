#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>

#include "zet/ZETErrors.h"
#include "zet/ZETFiles.h"
#include "zet/ZETHost.h"

namespace ZET {
namespace {

int g_calls = 0;

/// Setting a language may fail on the way.
void CountAndLeaveAnError(const std::function<void()>& make) {
    ++g_calls;
    errno = EIO;
    make();
    errno = EIO;
}

class ReadersLanguage : public testing::Test {
  protected:
    ReadersLanguage() { g_calls = 0; }
    ~ReadersLanguage() override { MakeMessagesBy(nullptr); }
};

std::string MessageOfCopy() {
    try {
        CopyFile("/nowhere/one", "/nowhere/other");
        return "";
    } catch (const EZETError& error) {
        return error.GetMessage();
    }
}

TEST_F(ReadersLanguage, IsSetForEachMessageThatIsMade) {
    EXPECT_EQ(MakeMessagesBy(&CountAndLeaveAnError), nullptr);
    EXPECT_TRUE(ProblemOfParam("MINIMUM_UID", "x"));
    const int calls = g_calls;
    EXPECT_GE(calls, 3);  // the kind, what is wrong, and how to write it
    EXPECT_FALSE(ProblemOfParam("MINIMUM_UID", "1000"));
    EXPECT_EQ(g_calls, calls);
    EXPECT_EQ(MakeMessagesBy(nullptr), &CountAndLeaveAnError);
    EXPECT_TRUE(ProblemOfParam("MINIMUM_UID", "x"));
    EXPECT_EQ(g_calls, calls);
}

TEST_F(ReadersLanguage, DoesNotChangeWhatTheMessageIsAbout) {
    const std::string expected = MessageOfCopy();
    EXPECT_THAT(expected, testing::HasSubstr("No such file or directory"));
    MakeMessagesBy(&CountAndLeaveAnError);
    EXPECT_EQ(MessageOfCopy(), expected);
    EXPECT_EQ(g_calls, 1);
}

}  // namespace
}  // namespace ZET
