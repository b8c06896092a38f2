#include "ModuleTest.h"

namespace ZET {
namespace {

std::string Block(const std::string& line) {
    return kBegin + line + "\n" + kEnd;
}

/// A lookup that finds nothing exhausts the text; what every operation makes of that.
class ExhaustedTextTest : public ModuleTest {
  protected:
    void Miss(IZETConfigFile& file) {
        EXPECT_EQ(file.GetLine("no such line"), "");
        m_core.Forget();
    }

    std::string EditedAfterMiss(const std::function<void(IZETConfigFile&)>& edit, bool noMarkers = false) {
        return Edited(
            "a=1\nb=2\n",
            [&](IZETConfigFile& file) {
                Miss(file);
                edit(file);
            },
            noMarkers);
    }

    std::string SavedAfterMiss(bool noMarkers) {
        CZETConfigFile file(m_core);
        EXPECT_TRUE(file.Open(Write("target", "a=1\nb=2\n"), "", noMarkers));
        Miss(file);
        file.Save(false);
        return Read("target");
    }

    std::string SavedTemplateAfterMiss(bool noMarkers) {
        Write("cfg/t.conf", "a=1\nb=2\n");
        CZETConfigFile file(m_core);
        EXPECT_TRUE(file.OpenTemplate("t.conf", Path("target"), "", noMarkers));
        Miss(file);
        file.Save(false);
        return Read("target");
    }
};

TEST_F(ExhaustedTextTest, SaveInPlaceWritesAnEmptyFileWithoutNotice) {
    EXPECT_EQ(SavedAfterMiss(false), "");
    EXPECT_EQ(Read("target.before_zet"), "a=1\nb=2\n");
}

TEST_F(ExhaustedTextTest, SaveInPlaceWithoutMarkersWritesAnEmptyFile) {
    EXPECT_EQ(SavedAfterMiss(true), "");
}

TEST_F(ExhaustedTextTest, SaveOfATemplateWritesOneLineFeed) {
    EXPECT_EQ(SavedTemplateAfterMiss(false), "\n");
}

TEST_F(ExhaustedTextTest, SaveOfATemplateWithoutMarkersWritesOneLineFeed) {
    EXPECT_EQ(SavedTemplateAfterMiss(true), "\n");
}

TEST_F(ExhaustedTextTest, SecondSaveWritesTheSameEmptyFile) {
    for (const bool noMarkers : {false, true}) {
        CZETConfigFile file(m_core);
        ASSERT_TRUE(file.Open(Write("target", "a=1\n"), "", noMarkers));
        Miss(file);
        file.Save(true);
        file.Save(true);
        EXPECT_EQ(Read("target"), "");
    }
}

TEST_F(ExhaustedTextTest, SaveDoesNotBringTheTextBack) {
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("target", "a=1\n"), "", true));
    Miss(file);
    file.Save(true);
    EXPECT_EQ(file.GetLine("a"), "");
    file.SetLine("^x", "x=1");
    file.Save(true);
    EXPECT_EQ(Read("target"), "\nx=1\n");
}

TEST_F(ExhaustedTextTest, LaterLookupFindsNothingAndMatchesNothing) {
    EditedAfterMiss([&](IZETConfigFile& file) {
        EXPECT_EQ(file.GetLine("a"), "");
        EXPECT_EQ(file.GetParamValue("a"), "");
        EXPECT_EQ(Journal(), Strings{});
    });
}

TEST_F(ExhaustedTextTest, SetLineLeavesOnlyWhatItAppends) {
    const auto set = [](IZETConfigFile& file) { file.SetLine("^a=", "a=3"); };
    EXPECT_EQ(EditedAfterMiss(set), "\n" + Block("a=3"));
    EXPECT_EQ(EditedAfterMiss(set, true), "\na=3\n");
}

TEST_F(ExhaustedTextTest, SetParamValueLeavesOnlyWhatItAppends) {
    EXPECT_EQ(Edited("a=1\nb=2\n",
                     [](IZETConfigFile& file) {
                         EXPECT_EQ(file.GetParamValue("missing"), "");
                         file.SetParamValue("a", "3");
                     }),
              "\n" + Block("a=3"));
}

TEST_F(ExhaustedTextTest, RestoreLineLeavesNothing) {
    EXPECT_EQ(EditedAfterMiss([](IZETConfigFile& file) { file.RestoreLine("^a="); }), "");
    EXPECT_EQ(EditedAfterMiss([](IZETConfigFile& file) { file.RestoreParamValue("a"); }), "");
}

TEST_F(ExhaustedTextTest, ApplyTemplatesLeavesNothing) {
    StringMap values;
    EXPECT_EQ(EditedAfterMiss([&](IZETConfigFile& file) { file.ApplyTemplates(values); }), "");
}

TEST_F(ExhaustedTextTest, RemoveMarkersLeavesOneLineFeed) {
    EXPECT_EQ(EditedAfterMiss([](IZETConfigFile& file) { file.RemoveMarkers("(", ")"); }), "\n");
    EXPECT_EQ(EditedAfterMiss([](IZETConfigFile& file) { file.RemoveZETMarkers(); }), "\n");
}

TEST_F(ExhaustedTextTest, InsertHeaderLeavesNothing) {
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("target", "a=1\n"), "", true));
    Miss(file);
    file.InsertHeader("# H");
    file.Save(true);
    EXPECT_EQ(Read("target"), "");
}

TEST_F(ExhaustedTextTest, TextThatAnEditBuiltReadsAfresh) {
    EXPECT_EQ(EditedAfterMiss([](IZETConfigFile& file) {
                  file.SetLine("^a=", "a=3");
                  EXPECT_EQ(file.GetLine("^a="), "a=3");
                  file.SetLine("^a=", "a=4");
              }),
              "\n" + Block("a=4"));
    EXPECT_EQ(EditedAfterMiss([](IZETConfigFile& file) {
                  file.RemoveMarkers("(", ")");
                  file.SetLine("^$", "x");
              }),
              kFormer + "\n" + Block("x"));
}

TEST_F(ExhaustedTextTest, RefusedArgumentsAreRefusedAllTheSame) {
    EditedAfterMiss([&](IZETConfigFile& file) {
        ExpectError<EZETCheckError>("Argument is empty for 'SetLine'.", [&] { file.SetLine("", ""); });
        ExpectError<EZETCheckError>("Argument is empty for 'GetLine'.", [&] { file.GetLine(""); });
    });
}

TEST_F(ExhaustedTextTest, MissInATextWithoutFinalLineFeedExhaustsToo) {
    EXPECT_EQ(Edited("a=1\nb",
                     [](IZETConfigFile& file) {
                         EXPECT_EQ(file.GetLine("c"), "");
                         EXPECT_EQ(file.GetLine("a"), "");
                     }),
              "");
}

TEST_F(ExhaustedTextTest, EditsThatMatchNothingDoNotExhaust) {
    EXPECT_EQ(Edited("a=1\n",
                     [](IZETConfigFile& file) {
                         file.RestoreLine("^x");
                         EXPECT_EQ(file.GetLine("a"), "a=1");
                         file.RemoveZETMarkers();
                         EXPECT_EQ(file.GetLine("a"), "a=1");
                     }),
              "a=1\n");
}

TEST_F(ExhaustedTextTest, FailedOperationsOnAnExhaustedTextLeaveItSo) {
    EXPECT_EQ(EditedAfterMiss([&](IZETConfigFile& file) {
                  ExpectError<EZETCheckError>("Argument is empty for 'RestoreLine'.",
                                              [&] { file.RestoreLine(""); });
                  EXPECT_EQ(file.GetLine("a"), "");
              }),
              "");
}

}  // namespace
}  // namespace ZET
