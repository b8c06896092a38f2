#include "deploy/edit/RestoreRules.h"

#include <gmock/gmock.h>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {
namespace {

using testing::HasSubstr;

std::string Former(const std::string& line) {
    return std::string(ZETFormerLinePrefix) + line + "\n";
}

std::string Block(const std::string& line) {
    return std::string(ZETBeginMarker) + "\n" + line + "\n" + ZETEndMarker + "\n";
}

class RestoreRulesTest : public testing::Test {
  protected:
    /// Of the parameter "a", as "param restore" asks.
    bool Ask(const std::string& text, bool allBlocks = false, const std::string& pattern = "^#*\\s*a=") {
        return HasSomethingToRestore(m_core.GetCore(), {"/f", text, pattern, "^\\s*a=", allBlocks});
    }

    CZETHost m_core;
};

TEST_F(RestoreRulesTest, WithoutABlockThereIsNothing) {
    EXPECT_FALSE(Ask(""));
    EXPECT_FALSE(Ask("a=1\nb=2\n"));
}

TEST_F(RestoreRulesTest, BlockWithItsFormerLineIsSomething) {
    EXPECT_TRUE(Ask("x\n" + Former("a=0") + Block("a=1")));
    EXPECT_TRUE(Ask(Block("a=1"))) << "there was no such line before";
    EXPECT_TRUE(Ask(Former("a=0"))) << "its block is lost";
}

TEST_F(RestoreRulesTest, BlocksOfOthersKeepTheRestoreFromBeingMade) {
    const std::string text = Former("a=0") + Block("a=1") + "x\n" + Block("b=1");
    EXPECT_EQ(
        MessageOf<Failure>([&] { Ask(text); }),
        "/f: the restore would also drop managed blocks of others, in lines 6-8 (--all-blocks drops them "
        "too, \"explain\" tells what they are)");
    EXPECT_TRUE(Ask(text, true));
}

TEST_F(RestoreRulesTest, AllBlocksOfOthersAreNamed) {
    EXPECT_THAT(MessageOf<Failure>([&] { Ask(Block("b=1") + Block("a=1") + Block("c=1")); }),
                HasSubstr("in lines 1-3, 7-9 ("));
}

TEST_F(RestoreRulesTest, BlocksOfOthersAloneAreSomethingOnlyForWhoDropsAll) {
    EXPECT_FALSE(Ask(Block("b=1")));
    EXPECT_TRUE(Ask(Block("b=1"), true));
}

TEST_F(RestoreRulesTest, FormerLineSaysWhoseABlockIs) {
    EXPECT_THROW(Ask(Former("b=0") + Block("a=1")), Failure) << "another's line would be lost";
    EXPECT_TRUE(Ask(Former("a=0") + Block("b=1") + Former("a=0")))
        << "what was set in place of the line is part of it";
}

TEST_F(RestoreRulesTest, BlockThatHoldsAnotherLineTooIsOfOthers) {
    const std::string block = std::string(ZETBeginMarker) + "\na=1\nb=1\n" + ZETEndMarker + "\n";
    EXPECT_THROW(Ask(block), Failure);
    EXPECT_TRUE(Ask(block, true));
}

TEST_F(RestoreRulesTest, PatternThatSelectsLinesThatKeepNothingIsRefused) {
    EXPECT_THAT(MessageOf<UsageError>([&] { Ask("x\nb=1\n", false, "^a=|b="); }),
                AllOf(HasSubstr("\"^a=|b=\" also selects line 2 of /f, which keeps no former line"),
                      HasSubstr("(put alternatives in parentheses)")));
    EXPECT_TRUE(Ask("x\nb=1\n" + Former("b=0"), false, "^(a=|b=)"));
}

}  // namespace
}  // namespace ZET::Deploy
