#include "ModuleTest.h"

namespace ZET {
namespace {

constexpr char kPattern[] = "^\\s*kdc=";

/// The block of a new line.
std::string Block(const std::string& line) {
    return kBegin + line + "\n" + kEnd;
}

/// Sets lines "kdc=..." to "kdc=new".
class SetLineTest : public ModuleTest, public testing::WithParamInterface<TextCase> {
  protected:
    std::string WithLineSet(const std::string& text, const std::string& pattern = kPattern,
                            const std::string& line = "kdc=new", bool noMarkers = false) {
        return Edited(
            text, [&](IZETConfigFile& file) { file.SetLine(pattern, line); }, noMarkers);
    }

    static std::string Warning(const std::string& marker, int line) {
        return "1 Unexpected token '" + marker + "' in line " + std::to_string(line) + ".";
    }
};

TEST_P(SetLineTest, GivesThisText) {
    EXPECT_EQ(WithLineSet(GetParam().before), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    WithMarkers, SetLineTest,
    testing::Values(
        TextCase{"FormerLineIsKeptBeforeABlock", "realms\nkdc=old\n",
                 "realms\n" + kFormer + "kdc=old\n" + Block("kdc=new")},
        TextCase{"LinesBelowStay", "kdc=old\n\nrest\n",
                 kFormer + "kdc=old\n" + Block("kdc=new") + "\nrest\n"},
        TextCase{"LastLineWithoutLineFeedEndsWithTheEndMarker", "realms\nkdc=old",
                 "realms\n" + kFormer + "kdc=old\n" + kBegin + "kdc=new\n# ----ZET_END----"},
        TextCase{"BlanksOfTheFormerLineAreKept", "  kdc=old \n", kFormer + "  kdc=old \n" + Block("kdc=new")},
        TextCase{"LineInABlockIsReplacedInPlace", kFormer + "kdc=older\n" + Block("kdc=old"),
                 kFormer + "kdc=older\n" + Block("kdc=new")},
        TextCase{"LineInABlockOfOthersIsReplacedInPlace", kBegin + "a=1\nkdc=old\nb=1\n" + kEnd,
                 kBegin + "a=1\nkdc=new\nb=1\n" + kEnd},
        TextCase{"LineInAnUnendedBlockIsReplacedInPlace", kBegin + "kdc=old", kBegin + "kdc=new"},
        TextCase{"EveryMatchingLineGetsABlock", "kdc=1\nother\nkdc=2\n",
                 kFormer + "kdc=1\n" + Block("kdc=new") + "other\n" + kFormer + "kdc=2\n" + Block("kdc=new")},
        TextCase{"NeighboursGetABlockEach", "kdc=1\nkdc=2",
                 kFormer + "kdc=1\n" + Block("kdc=new") + kFormer + "kdc=2\n" + kBegin +
                     "kdc=new\n# ----ZET_END----"},
        TextCase{"MatchesInsideAndOutsideAreAllSet", Block("kdc=1") + "kdc=2\n",
                 Block("kdc=new") + kFormer + "kdc=2\n" + Block("kdc=new")},
        TextCase{"EqualLineGetsABlockToo", "kdc=new\n", kFormer + "kdc=new\n" + Block("kdc=new")},
        TextCase{"MissingLineIsAppendedBehindAnEmptyLine", "realms\n", "realms\n\n" + Block("kdc=new")},
        TextCase{"MissingLineEndsTheLastLine", "realms", "realms\n" + Block("kdc=new")},
        TextCase{"EmptyTextBecomesALineFeedAndABlock", "", "\n" + Block("kdc=new")},
        TextCase{"EmptyLinesAtTheEndStayBeforeTheNewBlock", "realms\n\n", "realms\n\n\n" + Block("kdc=new")},
        TextCase{"LineBehindABlockIsOutside", Block("a") + "kdc=old\n",
                 Block("a") + kFormer + "kdc=old\n" + Block("kdc=new")},
        TextCase{"MarkersMayContinue", "# ---ZET_BEGIN--- x\nkdc=old\n# ----ZET_END---- y\n",
                 "# ---ZET_BEGIN--- x\nkdc=new\n# ----ZET_END---- y\n"},
        TextCase{"MarkersBehindBlanksAreOrdinary", " # ---ZET_BEGIN---\nkdc=old\n",
                 " # ---ZET_BEGIN---\n" + kFormer + "kdc=old\n" + Block("kdc=new")},
        TextCase{"NestedBeginStaysInsideToTheFirstEnd", kBegin + kBegin + "kdc=1\n" + kEnd + "kdc=2\n",
                 kBegin + kBegin + "kdc=new\n" + kEnd + kFormer + "kdc=2\n" + Block("kdc=new")},
        TextCase{"StrayEndStaysOutside", kEnd + "kdc=1\n", kEnd + kFormer + "kdc=1\n" + Block("kdc=new")},
        TextCase{"CarriageReturnIsKeptWithTheFormerLine", "kdc=old\r\n",
                 kFormer + "kdc=old\r\n" + Block("kdc=new")},
        TextCase{"NullBytesStay", std::string("a\0b\n\0\nkdc=1\n", 12),
                 std::string("a\0b\n\0\n", 6) + kFormer + "kdc=1\n" + Block("kdc=new")},
        TextCase{"FormerLinesAreNotSet", kFormer + "kdc=1\n", kFormer + "kdc=1\n\n" + Block("kdc=new")}),
    NameOfTextCase);

TEST_F(SetLineTest, SecondCallChangesOnlyTheLineInTheBlock) {
    const std::string text = Edited("realms\nkdc=old\n", [](IZETConfigFile& file) {
        file.SetLine(kPattern, "kdc=new");
        file.SetLine(kPattern, "kdc=newer");
    });
    EXPECT_EQ(text, "realms\n" + kFormer + "kdc=old\n" + Block("kdc=newer"));
}

TEST_F(SetLineTest, BlockThatWasAppendedIsFoundByTheNextCall) {
    const std::string text = Edited("realms\n", [](IZETConfigFile& file) {
        file.SetLine(kPattern, "kdc=new");
        file.SetLine(kPattern, "kdc=newer");
    });
    EXPECT_EQ(text, "realms\n\n" + Block("kdc=newer"));
}

TEST_F(SetLineTest, PatternIsSearchedForInTheLine) {
    EXPECT_EQ(WithLineSet("a kdc b\n", "kdc", "x"), kFormer + "a kdc b\n" + Block("x"));
}

TEST_F(SetLineTest, EmptyLineIsALineToo) {
    EXPECT_EQ(WithLineSet("a\n\nb\n", "^$", "x"), "a\n" + kFormer + "\n" + Block("x") + "b\n");
    EXPECT_EQ(WithLineSet("a\n", "^a", ""), kFormer + "a\n" + Block(""));
    EXPECT_EQ(WithLineSet("a\n", "^b", ""), "a\n\n" + Block(""));
}

TEST_F(SetLineTest, EmptyLineForTheLastOneInABlockGetsALineFeed) {
    EXPECT_EQ(WithLineSet(kBegin + "a", "^a", ""), kBegin + "\n");
}

TEST_F(SetLineTest, BeginMarkerThatMatchesIsReplacedAsInsideItsBlock) {
    EXPECT_EQ(WithLineSet(Block("a"), "ZET_BEGIN", "x"), "x\na\n" + kEnd);
}

TEST_F(SetLineTest, EndMarkerThatMatchesIsOutsideItsBlock) {
    EXPECT_EQ(WithLineSet(Block("a"), "ZET_END", "x"), kBegin + "a\n" + kFormer + kEnd + Block("x"));
}

TEST_F(SetLineTest, FormerLineThatMatchesIsKeptOnceMore) {
    EXPECT_EQ(WithLineSet(kFormer + "kdc=1\n", "kdc=", "x"), kFormer + kFormer + "kdc=1\n" + Block("x"));
}

TEST_F(SetLineTest, LineWithLineFeedsIsWrittenAsItStands) {
    EXPECT_EQ(WithLineSet("a\n", "^a", "x\ny"), kFormer + "a\n" + Block("x\ny"));
}

TEST_F(SetLineTest, EachLineIsMatchedOnceInOrder) {
    WithLineSet("a\n\n" + Block("kdc=1") + "b", kPattern);
    EXPECT_EQ(Journal({"MatchRegEx"}),
              (Strings{"MatchRegEx ^\\s*kdc= in a", "MatchRegEx ^\\s*kdc= in ",
                       "MatchRegEx ^\\s*kdc= in # ---ZET_BEGIN---", "MatchRegEx ^\\s*kdc= in kdc=1",
                       "MatchRegEx ^\\s*kdc= in # ----ZET_END----", "MatchRegEx ^\\s*kdc= in b"}));
}

TEST_F(SetLineTest, UnbalancedMarkersAreReportedBeforeTheirLineIsMatched) {
    WithLineSet(kBegin + kBegin + kEnd + kEnd, "^x");
    const std::string begin = "Unexpected token '# ---ZET_BEGIN---' in line 2.";
    const std::string end = "Unexpected token '# ----ZET_END----' in line 4.";
    EXPECT_EQ(
        Journal(),
        (Strings{"MatchRegEx ^x in # ---ZET_BEGIN---",
                 "Translate libzet-config: Unexpected token '%s' in line %d.", "Format SetLine: " + begin,
                 "Put 1 " + begin, "MatchRegEx ^x in # ---ZET_BEGIN---", "MatchRegEx ^x in # ----ZET_END----",
                 "Translate libzet-config: Unexpected token '%s' in line %d.", "Format SetLine: " + end,
                 "Put 1 " + end, "MatchRegEx ^x in # ----ZET_END----", "RenameFile D/edited.tmp D/edited"}));
    EXPECT_EQ(Messages(),
              (Strings{"libzet-config src/interfaces/zet-config/ZETConfigFile SetLine 2: " + begin,
                       "libzet-config src/interfaces/zet-config/ZETConfigFile SetLine 2: " + end}));
}

TEST_F(SetLineTest, WarningsChangeNothingInTheText) {
    const std::string text = "a\n" + kBegin + kBegin + "b\n" + kEnd + kEnd + "c=1";
    EXPECT_EQ(WithLineSet(text, "^c=", "c=1"), "a\n" + kBegin + kBegin + "b\n" + kEnd + kEnd + kFormer +
                                                   "c=1\n" + kBegin + "c=1\n# ----ZET_END----");
    EXPECT_EQ(Log(), (Strings{Warning("# ---ZET_BEGIN---", 3), Warning("# ----ZET_END----", 6)}));
}

TEST_F(SetLineTest, StrayEndIsReportedWithItsLine) {
    WithLineSet("a\nb\n\n" + kEnd + "kdc=1\n");
    EXPECT_EQ(Log(), Strings{Warning("# ----ZET_END----", 4)});
}

TEST_F(SetLineTest, BlocksThatAreWrittenDoNotCountAsMarkersOfTheText) {
    WithLineSet("kdc=1\nkdc=2\n" + kEnd);
    EXPECT_EQ(Log(), Strings{Warning("# ----ZET_END----", 3)});
}

TEST_F(SetLineTest, EmptyPatternIsRefusedAndTheTextStays) {
    const std::string text = Edited("kdc=1\n", [&](IZETConfigFile& file) {
        ExpectError<EZETCheckError>("Argument is empty for 'SetLine'.", [&] { file.SetLine("", "x"); });
        EXPECT_EQ(Messages(), Strings{"libzet-core src/interfaces/zet-config/ZETConfigFile SetLine 1: "
                                      "Argument is empty for 'SetLine'."});
        EXPECT_EQ(Journal({"MatchRegEx", "Put"}), Strings{});
    });
    EXPECT_EQ(text, "kdc=1\n");
}

TEST_F(SetLineTest, FailureOfTheMatchLeavesTheText) {
    const std::string text = Edited("kdc=1\nb\nc", [&](IZETConfigFile& file) {
        m_core.FailAt("MatchRegEx", 3);
        ExpectScriptedFailure("MatchRegEx", [&] { file.SetLine(kPattern, "kdc=2"); });
        EXPECT_EQ(file.GetLine("^kdc"), "kdc=1");
    });
    EXPECT_EQ(text, "kdc=1\nb\nc");
}

TEST_F(SetLineTest, FailureOfTheLogLeavesTheText) {
    const std::string before = "kdc=1\n" + kEnd;
    const std::string text = Edited(before, [&](IZETConfigFile& file) {
        m_core.FailAt("Put");
        ExpectScriptedFailure("Put", [&] { file.SetLine(kPattern, "kdc=2"); });
    });
    EXPECT_EQ(text, before);
}

/// The same without markers.
class BareSetLineTest : public SetLineTest {};

TEST_P(BareSetLineTest, GivesThisText) {
    EXPECT_EQ(WithLineSet(GetParam().before, kPattern, "kdc=new", true), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    WithoutMarkers, BareSetLineTest,
    testing::Values(TextCase{"LineIsReplacedInPlace", "a\nkdc=old\nb\n", "a\nkdc=new\nb\n"},
                    TextCase{"EveryMatchingLineIsReplaced", "kdc=1\na\nkdc=2", "kdc=new\na\nkdc=new"},
                    TextCase{"LineInABlockIsReplaced", Block("kdc=1"), Block("kdc=new")},
                    TextCase{"MissingLineIsAppendedBehindAnEmptyLine", "a\n", "a\n\nkdc=new\n"},
                    TextCase{"MissingLineEndsTheLastLine", "a", "a\nkdc=new\n"},
                    TextCase{"EmptyTextBecomesALineFeedAndTheLine", "", "\nkdc=new\n"},
                    TextCase{"LastLineStaysWithoutLineFeed", "a\nkdc=old", "a\nkdc=new"}),
    NameOfTextCase);

TEST_F(SetLineTest, EmptyLineWithoutMarkersIsWrittenWithALineFeed) {
    EXPECT_EQ(WithLineSet("a\nkdc=old", kPattern, "", true), "a\n\n");
    EXPECT_EQ(WithLineSet("a\n", kPattern, "", true), "a\n\n\n");
}

TEST_F(SetLineTest, UnbalancedMarkersAreReportedWithoutMarkersToo) {
    WithLineSet(kEnd + kBegin + kBegin, kPattern, "kdc=1", true);
    EXPECT_EQ(Log(), (Strings{Warning("# ----ZET_END----", 1), Warning("# ---ZET_BEGIN---", 3)}));
}

}  // namespace
}  // namespace ZET
