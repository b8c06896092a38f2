#include "ChildProcess.h"
#include "ModuleTest.h"

namespace ZET {
namespace {

using namespace std::chrono_literals;

/// Templates that are never done, and their harmless neighbours.
class EndlessExpansionTest : public ModuleTest {
  protected:
    bool IsEndless(const std::string& text) {
        return StillRunsAfter(400ms, [&] { Apply(text); });
    }

    void ExpectEnds(const std::string& text) {
        ExpectChildPasses(10s, [&] { Apply(text); });
    }

    void Apply(const std::string& text) {
        StringMap values = {{"${self}", "${self}"},  {"${grows}", "a${grows}"}, {"${ping}", "${pong}"},
                            {"${pong}", "${ping}"},  {"${open}", "${"},         {"${realm}", "R"},
                            {"${first}", "${two\n"}, {"${two\nlines}", ""}};
        CZETConfigFile file(m_core);
        EXPECT_TRUE(file.Open(Write("a.conf", text), "", true));
        file.ApplyTemplates(values);
    }
};

TEST_F(EndlessExpansionTest, PlaceholderWithoutEndNeverReturns) {
    EXPECT_TRUE(IsEndless("a ${realm\n"));
}

TEST_F(EndlessExpansionTest, PlaceholderEndedInTheNextLineNeverReturns) {
    EXPECT_TRUE(IsEndless("${realm\n}\n"));
}

TEST_F(EndlessExpansionTest, PlaceholderWithoutEndBehindAnotherNeverReturns) {
    EXPECT_TRUE(IsEndless("${realm} ${no} ${"));
}

TEST_F(EndlessExpansionTest, PlaceholderWithoutEndInAValueNeverReturns) {
    EXPECT_TRUE(IsEndless("${open}\n"));
}

TEST_F(EndlessExpansionTest, PlaceholderWithoutEndBehindBlanksAndAHashNeverReturns) {
    EXPECT_TRUE(IsEndless(" # ${realm\n"));
}

TEST_F(EndlessExpansionTest, ValueThatIsItsOwnPlaceholderNeverReturns) {
    EXPECT_TRUE(IsEndless("${self}\n"));
}

TEST_F(EndlessExpansionTest, ValueThatHoldsItsOwnPlaceholderNeverReturns) {
    EXPECT_TRUE(IsEndless("${grows}\n"));
}

TEST_F(EndlessExpansionTest, ValuesThatHoldEachOtherNeverReturn) {
    EXPECT_TRUE(IsEndless("x ${ping}\n"));
}

TEST_F(EndlessExpansionTest, PlaceholderWithoutEndInACommentIsHarmless) {
    ExpectEnds("# ${realm\n#${\n# ${self}\n");
}

TEST_F(EndlessExpansionTest, OpenedByAValueAndClosedByTheLineIsHarmless) {
    ExpectEnds("${open}realm}\n");
}

TEST_F(EndlessExpansionTest, EmptyValueOfAPlaceholderThatReachesOverALineFeedOfAValueIsHarmless) {
    ExpectEnds("a${first}lines}b\n");
}

}  // namespace
}  // namespace ZET
