#include "ModuleTest.h"

namespace ZET {
namespace {

/// Takes regions from lines "(" to lines ")" out of a text.
class RemoveMarkersTest : public ModuleTest, public testing::WithParamInterface<TextCase> {
  protected:
    std::string WithoutRegions(const std::string& text, const std::string& begin = "(",
                               const std::string& end = ")") {
        return Edited(
            text, [&](IZETConfigFile& file) { file.RemoveMarkers(begin, end); }, true);
    }

    static std::string Warning(const std::string& marker, int line) {
        return "1 Unexpected token '" + marker + "' in line " + std::to_string(line) + ".";
    }
};

TEST_P(RemoveMarkersTest, GivesThisText) {
    EXPECT_EQ(WithoutRegions(GetParam().before), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Text, RemoveMarkersTest,
    testing::Values(TextCase{"TextWithoutMarkersStays", "a\nb\n", "a\nb\n"},
                    TextCase{"TextWithoutMarkersAndFinalLineFeedStays", "a\nb", "a\nb"},
                    TextCase{"EmptyLinesStay", "\n\na\n\n\n", "\n\na\n\n\n"},
                    TextCase{"EmptyTextBecomesALineFeed", "", "\n"}, TextCase{"LineFeedStays", "\n", "\n"},
                    TextCase{"RegionInTheMiddleVanishes", "a\n(\nx\n)\nb\n", "a\nb\n"},
                    TextCase{"RegionAtTheEndVanishes", "a\n(\nx\n)\n", "a\n"},
                    TextCase{"RegionAtTheEndWithoutLineFeedTakesTheFinalOneAlong", "a\n(\nx\n)", "a"},
                    TextCase{"RegionAtTheTopLeavesAnEmptyLine", "(\nx\n)\nb\n", "\nb\n"},
                    TextCase{"RegionAtTheTopLeavesAnEmptyLineWithoutFinalLineFeedToo", "(\nx\n)\nb", "\nb"},
                    TextCase{"RegionOfAWholeTextBecomesALineFeed", "(\nx\n)\n", "\n"},
                    TextCase{"RegionOfAWholeTextWithoutFinalLineFeedBecomesNothing", "(\nx\n)", ""},
                    TextCase{"EmptyRegionVanishes", "a\n(\n)\nb\n", "a\nb\n"},
                    TextCase{"TwoRegionsVanish", "a\n(\nx\n)\nb\n(\ny\n)\nc\n", "a\nb\nc\n"},
                    TextCase{"RegionsAtTheTopLeaveOneEmptyLine", "(\n)\n(\n)\nb\n", "\nb\n"},
                    TextCase{"RegionWithoutEndRunsToTheEnd", "a\n(\nx\ny\n", "a\n"},
                    TextCase{"RegionWithoutEndAndFinalLineFeedLeavesNoLineFeed", "a\n(\nx", "a"},
                    TextCase{"MarkerAsLastLineWithoutLineFeedOpens", "a\n(", "a"},
                    TextCase{"EmptyLastLineInARegionLeavesALineFeed", "a\n(\nx\n\n", "a\n"},
                    TextCase{"StrayEndStays", "a\n)\nb\n", "a\n)\nb\n"},
                    TextCase{"StrayEndAtTheTopStays", ")\nb\n", ")\nb\n"},
                    TextCase{"SecondEndStays", "a\n(\n)\n)\nb\n", "a\n)\nb\n"},
                    TextCase{"NestedBeginVanishesAndTheFirstEndCloses", "a\n(\n(\nx\n)\nb\n)\n", "a\nb\n)\n"},
                    TextCase{"LineThatOnlyBeginsWithTheMarkersCounts", "a\n(rest\nx\n)rest\nb\n", "a\nb\n"},
                    TextCase{"MarkersBehindBlanksAreOrdinaryLines", "a\n (\nx\n )\n", "a\n (\nx\n )\n"},
                    TextCase{"MarkersInsideALineAreOrdinary", "a(\nx)\n", "a(\nx)\n"},
                    TextCase{"EndBehindBlanksDoesNotClose", "(\nx\n )\ny\n)\nb\n", "\nb\n"},
                    TextCase{"EmptyLinesInARegionVanish", "a\n(\n\n\n)\n\nb\n", "a\n\nb\n"},
                    TextCase{"CarriageReturnsBelongToTheLines", "a\r\n(\r\nx\r\n)\r\nb\r\n", "a\r\nb\r\n"},
                    TextCase{"NullBytesStay", std::string("a\0\n(\n\0\n)\n\0b\n", 12),
                             std::string("a\0\n\0b\n", 6)}),
    NameOfTextCase);

TEST_F(RemoveMarkersTest, ManagedBlockVanishes) {
    EXPECT_EQ(WithoutRegions("a\n" + kBegin + "x\n" + kEnd + "b\n", "# ---ZET_BEGIN---", "# ----ZET_END----"),
              "a\nb\n");
}

TEST_F(RemoveMarkersTest, ManagedBlockAtTheTopLeavesAnEmptyLine) {
    EXPECT_EQ(WithoutRegions(kBegin + "x\n" + kEnd + "b\n", "# ---ZET_BEGIN---", "# ----ZET_END----"),
              "\nb\n");
}

TEST_F(RemoveMarkersTest, ManagedBlockWithoutEndAndFinalLineFeedLeavesASingleCharacter) {
    EXPECT_EQ(WithoutRegions("a\n" + kBegin + "x", "# ---ZET_BEGIN---", "# ----ZET_END----"), "a");
}

TEST_F(RemoveMarkersTest, LineThatBeginsWithBothMarkersOpensARegion) {
    EXPECT_EQ(WithoutRegions("a\n##\nx\n#\nb\n", "##", "#"), "a\nb\n");
    EXPECT_EQ(WithoutRegions("a\n##\nx\n#\nb\n", "#", "##"), "a\n");
}

TEST_F(RemoveMarkersTest, EqualMarkersOnlyEverOpen) {
    EXPECT_EQ(WithoutRegions("a\n#\nx\n#\nb\n", "#", "#"), "a\n");
    EXPECT_EQ(Log(), Strings{Warning("#", 4)});
}

TEST_F(RemoveMarkersTest, NestedBeginIsReportedWithItsLine) {
    WithoutRegions("a\n(\n(\nx\n(\n)\n");
    EXPECT_EQ(Log(), (Strings{Warning("(", 3), Warning("(", 5)}));
    EXPECT_EQ(Messages().at(0),
              "libzet-config src/interfaces/zet-config/ZETConfigFile RemoveMarkers 2: "
              "Unexpected token '(' in line 3.");
    EXPECT_EQ(m_core.Messages().at(0).format, "Unexpected token '%s' in line %d.");
}

TEST_F(RemoveMarkersTest, ReportNamesTheMarkerAndNotTheLine) {
    WithoutRegions(kBegin + "# ---ZET_BEGIN--- and more\n", "# ---ZET_BEGIN---", "# ----ZET_END----");
    EXPECT_EQ(Log(), Strings{Warning("# ---ZET_BEGIN---", 2)});
}

TEST_F(RemoveMarkersTest, LinesAreCountedKeptOrNot) {
    WithoutRegions("(\nx\n)\n\nb\n(\n(\n");
    EXPECT_EQ(Log(), Strings{Warning("(", 7)});
}

TEST_F(RemoveMarkersTest, StrayEndAndUnendedRegionAreNotReported) {
    WithoutRegions(")\na\n)\n(\nx\n");
    EXPECT_EQ(Journal({"Translate", "Format", "Put"}), Strings{});
}

TEST_F(RemoveMarkersTest, FailureOfTheLogLeavesTheText) {
    EXPECT_EQ(Edited(
                  "a\n(\n(\nb\n",
                  [&](IZETConfigFile& file) {
                      m_core.FailAt("Put");
                      ExpectScriptedFailure("Put", [&] { file.RemoveMarkers("(", ")"); });
                      EXPECT_EQ(file.GetLine("b"), "b");
                  },
                  true),
              "a\n(\n(\nb\n");
}

TEST_F(RemoveMarkersTest, ObjectWithoutTextIsRefused) {
    CZETConfigFile file(m_core);
    file.Open(Path("missing"), "", false);
    m_core.Forget();
    ExpectError<EZETCheckError>("Invalid config object 'D/missing'.", [&] { file.RemoveMarkers("(", ")"); });
    EXPECT_EQ(Messages(), Strings{"libzet-config src/interfaces/zet-config/ZETConfigFile RemoveMarkers 1: "
                                  "Invalid config object 'D/missing'."});
    EXPECT_EQ(Log(), Strings{});
}

/// Takes the system's blocks out of a text.
class RemoveZETMarkersTest : public ModuleTest, public testing::WithParamInterface<TextCase> {
  protected:
    std::string WithoutBlocks(const std::string& text) {
        return Edited(text, [](IZETConfigFile& file) { file.RemoveZETMarkers(); });
    }
};

TEST_P(RemoveZETMarkersTest, GivesThisText) {
    EXPECT_EQ(WithoutBlocks(GetParam().before), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Text, RemoveZETMarkersTest,
    testing::Values(TextCase{"NoticeBlockAndManagedBlockVanishButTheFormerLineStays",
                             kPartialNotice + "a\n" + kFormer + "x=1\n" + kBegin + "x=2\n" + kEnd + "b\n",
                             "\na\n" + kFormer + "x=1\nb\n"},
                    TextCase{"GeneratedNoticeVanishes", GeneratedNotice("/t", "zet-init") + "a\n", "\na\n"},
                    TextCase{"NoticeBelowVanishes", "a\n" + kNotice + "x\n" + kCommentEnd + "b\n", "a\nb\n"},
                    TextCase{"TemplateCommentStays", "a\n" + kTemplateComment + "x\n" + kCommentEnd,
                             "a\n" + kTemplateComment + "x\n" + kCommentEnd},
                    TextCase{"NoticeMarkerInsideAManagedBlockVanishesWithIt",
                             "a\n" + kBegin + kNotice + kEnd + "b\n", "a\nb\n"},
                    TextCase{"OtherTextStays", "a\n\nb", "a\n\nb"},
                    TextCase{"EmptyTextBecomesALineFeed", "", "\n"},
                    TextCase{"BlockAtTheTopLeavesAnEmptyLine", kBegin + kEnd + "a\n", "\na\n"}),
    NameOfTextCase);

TEST_F(RemoveZETMarkersTest, ObjectWithoutTextIsRefusedByTheFirstCall) {
    CZETConfigFile file(m_core);
    ExpectError<EZETCheckError>("Invalid config object ''.", [&] { file.RemoveZETMarkers(); });
    EXPECT_EQ(m_core.Messages().size(), 1U);
    EXPECT_EQ(m_core.Messages().at(0).function, "RemoveMarkers");
}

TEST_F(RemoveZETMarkersTest, UnbalancedMarkersOfBothKindsAreReported) {
    WithoutBlocks("a\n" + kBegin + kBegin + kEnd + kNotice + kNotice + kCommentEnd);
    EXPECT_EQ(Log(), (Strings{"1 Unexpected token '# ---ZET_BEGIN---' in line 3.",
                              "1 Unexpected token '# --ZET_CONFIG_COMMENT--' in line 3."}));
}

}  // namespace
}  // namespace ZET
