#include "ModuleTest.h"

namespace ZET {
namespace {

class GetLineTest : public ModuleTest {
  protected:
    std::string LineOf(const std::string& text, const std::string& pattern) {
        CZETConfigFile file(m_core);
        EXPECT_TRUE(file.Open(Write("a.conf", text), "", false));
        m_core.Forget();
        return file.GetLine(pattern);
    }
};

TEST_F(GetLineTest, FirstMatchingLineIsReturnedAsItStands) {
    EXPECT_EQ(LineOf("a\n  kdc=1 \nkdc=2\n", "^\\s*kdc="), "  kdc=1 ");
}

TEST_F(GetLineTest, NoMatchIsEmpty) {
    EXPECT_EQ(LineOf("a\nb\n", "^c"), "");
    EXPECT_EQ(LineOf("", "^c"), "");
}

TEST_F(GetLineTest, LastLineWithoutLineFeedIsFound) {
    EXPECT_EQ(LineOf("a\nb", "b"), "b");
}

TEST_F(GetLineTest, CarriageReturnBelongsToTheLine) {
    EXPECT_EQ(LineOf("a\r\n", "a"), "a\r");
    EXPECT_EQ(LineOf("a\r\n", "a\\r$"), "a\r");
}

TEST_F(GetLineTest, NullBytesBelongToTheLine) {
    EXPECT_EQ(LineOf(std::string("a\0b\n", 4), "^a"), std::string("a\0b", 3));
}

TEST_F(GetLineTest, MarkersPlayNoPart) {
    const std::string text = kFormer + "kdc=1\n" + kBegin + "kdc=2\n" + kEnd + "kdc=3\n";
    EXPECT_EQ(LineOf(text, "kdc="), kFormer + "kdc=1");
    EXPECT_EQ(LineOf(text, "^kdc="), "kdc=2");
    EXPECT_EQ(LineOf(text, "ZET_END"), "# ----ZET_END----");
}

TEST_F(GetLineTest, LinesAreMatchedUpToTheFirstThatMatches) {
    LineOf("a\n\nb\nc\n", "b");
    EXPECT_EQ(Journal(), (Strings{"MatchRegEx b in a", "MatchRegEx b in ", "MatchRegEx b in b"}));
}

TEST_F(GetLineTest, EmptyLineCanBeTheAnswerAndLeavesTheTextReadable) {
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("a.conf", "a\n\nb\n"), "", false));
    EXPECT_EQ(file.GetLine("^$"), "");
    EXPECT_EQ(file.GetLine("^a"), "a");
}

TEST_F(GetLineTest, TextStaysReadableAfterAMatch) {
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("a.conf", "a\nb"), "", false));
    EXPECT_EQ(file.GetLine("b"), "b");
    EXPECT_EQ(file.GetLine("a"), "a");
    EXPECT_EQ(file.GetLine("b"), "b");
}

TEST_F(GetLineTest, EmptyPatternIsRefusedAndTheTextStaysReadable) {
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("a.conf", "a\n"), "", false));
    m_core.Forget();
    ExpectError<EZETCheckError>("Argument is empty for 'GetLine'.", [&] { file.GetLine(""); });
    EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/ZETConfigFile GetLine 1: "
                                  "Argument is empty for 'GetLine'."});
    EXPECT_EQ(file.GetLine("a"), "a");
}

TEST_F(GetLineTest, FailureOfTheMatchLeavesTheTextReadable) {
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("a.conf", "a\nb"), "", false));
    m_core.FailAt("MatchRegEx", 2);
    ExpectScriptedFailure("MatchRegEx", [&] { file.GetLine("x"); });
    EXPECT_EQ(file.GetLine("a"), "a");
}

TEST_F(GetLineTest, BrokenPatternIsTheCoresFailure) {
    EXPECT_THROW(LineOf("a\n", "("), EZETError);
}

}  // namespace
}  // namespace ZET
