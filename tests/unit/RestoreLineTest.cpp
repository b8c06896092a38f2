#include "ModuleTest.h"

namespace ZET {
namespace {

constexpr char kPattern[] = "^\\s*kdc=";

std::string Block(const std::string& line) {
    return kBegin + line + "\n" + kEnd;
}

/// Restores lines "kdc=...".
class RestoreLineTest : public ModuleTest, public testing::WithParamInterface<TextCase> {
  protected:
    std::string Restored(const std::string& text, const std::string& pattern = kPattern,
                         bool noMarkers = false) {
        return Edited(
            text, [&](IZETConfigFile& file) { file.RestoreLine(pattern); }, noMarkers);
    }
};

TEST_P(RestoreLineTest, GivesThisText) {
    EXPECT_EQ(Restored(GetParam().before), GetParam().after);
}

TEST_P(RestoreLineTest, GivesThisTextWithoutMarkersToo) {
    EXPECT_EQ(Restored(GetParam().before, kPattern, true), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Text, RestoreLineTest,
    testing::Values(
        TextCase{"FormerLineComesBackAndItsBlockVanishes",
                 "realms\n" + kFormer + "kdc=old\n" + Block("kdc=new"), "realms\nkdc=old\n"},
        TextCase{"BlockOfAnotherPatternVanishesButItsFormerLineStays",
                 kFormer + "a=1\n" + Block("a=2") + kFormer + "kdc=old\n" + Block("kdc=new"),
                 kFormer + "a=1\nkdc=old\n"},
        TextCase{"EmptyTextStaysEmpty", "", ""}, TextCase{"OtherTextStays", "a\n\nb", "a\n\nb"},
        TextCase{"LineFeedsStay", "\n\n", "\n\n"},
        TextCase{"AppendedBlockLeavesItsEmptyLine", "a\n\n" + Block("kdc=new"), "a\n\n"},
        TextCase{"BlockThatEndsTheTextWithoutLineFeedLeavesTheOneBeforeIt",
                 kFormer + "kdc=old\n" + kBegin + "kdc=new\n# ----ZET_END----", "kdc=old\n"},
        TextCase{"EveryFormerLineComesBack",
                 kFormer + "kdc=1\n" + Block("x") + kFormer + "kdc=2\n" + Block("y"), "kdc=1\nkdc=2\n"},
        TextCase{"FormerLineWithoutBlockComesBack", kFormer + "kdc=1\nb\n", "kdc=1\nb\n"},
        TextCase{"FormerLineAtTheEndStaysWithoutLineFeed", "a\n" + kFormer + "kdc=1", "a\nkdc=1"},
        TextCase{"BlanksOfTheFormerLineComeBack", kFormer + "  kdc=1 \r\n", "  kdc=1 \r\n"},
        TextCase{"MatchOnlyFromTheStartOfTheFormerText", kFormer + "my kdc=1\n", kFormer + "my kdc=1\n"},
        TextCase{"FormerLineInsideABlockVanishes", "a\n" + kBegin + kFormer + "kdc=1\n" + kEnd, "a\n"},
        TextCase{"UnendedBlockVanishesToTheEnd", "a\n" + kBegin + "x\ny", "a\n"},
        TextCase{"StrayEndStays", "a\nb\nc\n" + kEnd + "d\n", "a\nb\nc\n" + kEnd + "d\n"},
        TextCase{"NestedBeginVanishesAndTheFirstEndCloses", kBegin + kBegin + "x\n" + kEnd + "a\n" + kEnd,
                 "a\n" + kEnd},
        TextCase{"BlockAtTheTopLeavesNoEmptyLine", Block("x") + "a\n", "a\n"},
        TextCase{"WholeTextOfABlockBecomesNothing", Block("x"), ""},
        TextCase{"MarkersMayContinue", "# ---ZET_BEGIN---x\na\n# ----ZET_END----x\nb\n", "b\n"},
        TextCase{"MarkersBehindBlanksAreOrdinary", " " + Block("x"), " # ---ZET_BEGIN---\nx\n" + kEnd},
        TextCase{"LineKeptTwiceStays", kFormer + kFormer + "kdc=1\n", kFormer + kFormer + "kdc=1\n"},
        TextCase{"NoticeStays", kPartialNotice + kFormer + "kdc=1\n" + Block("x"),
                 kPartialNotice + "kdc=1\n"},
        TextCase{"NullBytesStay", std::string("\0\na\0\n", 5) + kFormer + "kdc=\n",
                 std::string("\0\na\0\n", 5) + "kdc=\n"}),
    NameOfTextCase);

TEST_F(RestoreLineTest, SetAndRestoreGiveTheTextBack) {
    for (const std::string text : {"realms\nkdc=old\n", "kdc=1\n\nkdc=2\nx"}) {
        const std::string result = Edited(text, [](IZETConfigFile& file) {
            file.SetLine(kPattern, "kdc=new");
            file.SetLine(kPattern, "kdc=newer");
            file.RestoreLine(kPattern);
        });
        EXPECT_EQ(result, text);
    }
}

TEST_F(RestoreLineTest, SetOfTheLastLineWithoutLineFeedComesBackWithOne) {
    const std::string result = Edited("kdc=old", [](IZETConfigFile& file) {
        file.SetLine(kPattern, "kdc=new");
        file.RestoreLine(kPattern);
    });
    EXPECT_EQ(result, "kdc=old\n");
}

TEST_F(RestoreLineTest, PatternGetsThePrefixInsteadOfItsAnchor) {
    Restored("a\n", "^\\s*kdc=");
    EXPECT_EQ(Journal({"MatchRegEx"}), Strings{"MatchRegEx ^# --PRE-ZET-- \\s*kdc= in a"});
    Restored("a\n", "kdc=");
    EXPECT_EQ(Journal({"MatchRegEx"}), Strings{"MatchRegEx ^# --PRE-ZET-- kdc= in a"});
}

TEST_F(RestoreLineTest, OnlyOneAnchorIsDropped) {
    Restored("a\n", "^^a");
    EXPECT_EQ(Journal({"MatchRegEx"}), Strings{"MatchRegEx ^# --PRE-ZET-- ^a in a"});
    Restored("a\n", "^");
    EXPECT_EQ(Journal({"MatchRegEx"}), Strings{"MatchRegEx ^# --PRE-ZET--  in a"});
}

TEST_F(RestoreLineTest, EveryLineButAClosingEndIsMatched) {
    Restored("a\n" + kBegin + "x\n" + kEnd + kEnd, "^k");
    EXPECT_EQ(
        Journal({"MatchRegEx"}),
        (Strings{"MatchRegEx ^# --PRE-ZET-- k in a", "MatchRegEx ^# --PRE-ZET-- k in # ---ZET_BEGIN---",
                 "MatchRegEx ^# --PRE-ZET-- k in x", "MatchRegEx ^# --PRE-ZET-- k in # ----ZET_END----"}));
}

TEST_F(RestoreLineTest, UnbalancedMarkersAreReportedBeforeTheirLineIsMatched) {
    Restored(kBegin + kBegin + kEnd + kEnd, "^x");
    const std::string begin = "Unexpected token '# ---ZET_BEGIN---' in line 2.";
    const std::string end = "Unexpected token '# ----ZET_END----' in line 4.";
    EXPECT_EQ(Journal({"MatchRegEx", "Put"}),
              (Strings{"MatchRegEx ^# --PRE-ZET-- x in # ---ZET_BEGIN---", "Put 1 " + begin,
                       "MatchRegEx ^# --PRE-ZET-- x in # ---ZET_BEGIN---", "Put 1 " + end,
                       "MatchRegEx ^# --PRE-ZET-- x in # ----ZET_END----"}));
    EXPECT_EQ(Messages(),
              (Strings{"libzet-config src/interfaces/zet-config/ZETConfigFile RestoreLine 2: " + begin,
                       "libzet-config src/interfaces/zet-config/ZETConfigFile RestoreLine 2: " + end}));
}

TEST_F(RestoreLineTest, StrayEndIsReportedWithItsLineAndKept) {
    const std::string text = "a\nb\nc\n" + kEnd;
    EXPECT_EQ(Restored(text), text);
    EXPECT_EQ(Log(), Strings{"1 Unexpected token '# ----ZET_END----' in line 4."});
}

TEST_F(RestoreLineTest, WhateverTheCoreMatchesLosesFourteenCharacters) {
    m_core.SetMatcher([](const std::string&, const std::string& line) { return line[0] != '-'; });
    EXPECT_EQ(Restored("12345678901234rest\n-other\n"), "rest\n-other\n");
}

TEST_F(RestoreLineTest, ShorterLineThatMatchesBecomesEmpty) {
    m_core.SetMatcher([](const std::string&, const std::string&) { return true; });
    EXPECT_EQ(Restored("short\n12345678901234\n"), "\n\n");
    EXPECT_EQ(Restored("a\nshort"), "\n\n");
}

TEST_F(RestoreLineTest, FormerLineOfNothingAtTheEndGetsALineFeed) {
    EXPECT_EQ(Restored("a\n" + kFormer, "^"), "a\n\n");
}

TEST_F(RestoreLineTest, EmptyPatternIsRefusedAndTheTextStays) {
    const std::string before = "a\n" + Block("x");
    const std::string text = Edited(before, [&](IZETConfigFile& file) {
        ExpectError<EZETCheckError>("Argument is empty for 'RestoreLine'.", [&] { file.RestoreLine(""); });
        EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/ZETConfigFile RestoreLine 1: "
                                      "Argument is empty for 'RestoreLine'."});
    });
    EXPECT_EQ(text, before);
}

TEST_F(RestoreLineTest, FailureOfTheMatchLeavesTheText) {
    const std::string before = kFormer + "kdc=1\n" + Block("x") + "b";
    const std::string text = Edited(before, [&](IZETConfigFile& file) {
        m_core.FailAt("MatchRegEx", 4);
        ExpectScriptedFailure("MatchRegEx", [&] { file.RestoreLine(kPattern); });
        EXPECT_EQ(file.GetLine("^b"), "b");
    });
    EXPECT_EQ(text, before);
}

TEST_F(RestoreLineTest, FailureOfTheLogLeavesTheText) {
    const std::string before = kFormer + "kdc=1\n" + kEnd;
    const std::string text = Edited(before, [&](IZETConfigFile& file) {
        m_core.FailAt("Put");
        ExpectScriptedFailure("Put", [&] { file.RestoreLine(kPattern); });
    });
    EXPECT_EQ(text, before);
}

}  // namespace
}  // namespace ZET
