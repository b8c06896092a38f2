#include "ModuleTest.h"

namespace ZET {
namespace {

std::string Block(const std::string& line) {
    return kBegin + line + "\n" + kEnd;
}

class ParamEditingTest : public ModuleTest {
  protected:
    std::string WithParamSet(const std::string& text, const std::string& name = "kdc",
                             const std::string& value = "new", bool noMarkers = false) {
        return Edited(
            text, [&](IZETConfigFile& file) { file.SetParamValue(name, value); }, noMarkers);
    }

    std::string WithParamRestored(const std::string& text, const std::string& name = "kdc") {
        return Edited(text, [&](IZETConfigFile& file) { file.RestoreParamValue(name); });
    }

    std::string ParamOf(const std::string& text, const std::string& name = "kdc") {
        CZETConfigFile file(m_core);
        EXPECT_TRUE(file.Open(Write("a.conf", text), "", false));
        m_core.Forget();
        return file.GetParamValue(name);
    }
};

class SetParamValueTest : public ParamEditingTest, public testing::WithParamInterface<TextCase> {};

TEST_P(SetParamValueTest, GivesThisText) {
    EXPECT_EQ(WithParamSet(GetParam().before), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Text, SetParamValueTest,
    testing::Values(
        TextCase{"FormerLineIsKept", "kdc=old\n", kFormer + "kdc=old\n" + Block("kdc=new")},
        TextCase{"CommentedOutLineIsKept", "#kdc=old\n", kFormer + "#kdc=old\n" + Block("kdc=new")},
        TextCase{"ManyHashesAndBlanksAreAComment", "###  \tkdc=old\n",
                 kFormer + "###  \tkdc=old\n" + Block("kdc=new")},
        TextCase{"BlanksBeforeTheNameAreAllowed", " \tkdc=old\n",
                 kFormer + " \tkdc=old\n" + Block("kdc=new")},
        TextCase{"BlanksBeforeAHashAreNot", " #kdc=old\n", " #kdc=old\n\n" + Block("kdc=new")},
        TextCase{"BlankBeforeTheEqualsSignIsNot", "kdc = old\n", "kdc = old\n\n" + Block("kdc=new")},
        TextCase{"LongerNameIsAnother", "kdc_port=1\nmykdc=1\n",
                 "kdc_port=1\nmykdc=1\n\n" + Block("kdc=new")},
        TextCase{"NamesDifferByCase", "KDC=1\n", "KDC=1\n\n" + Block("kdc=new")},
        TextCase{"FormerLineOfAnEarlierChangeIsNotSeen", kFormer + "kdc=1\n" + Block("kdc=2"),
                 kFormer + "kdc=1\n" + Block("kdc=new")},
        TextCase{"CommentedOutLineInABlockIsReplaced", Block("#kdc=1"), Block("kdc=new")},
        TextCase{"EveryLineOfTheNameIsSet", "kdc=1\n#kdc=2\n",
                 kFormer + "kdc=1\n" + Block("kdc=new") + kFormer + "#kdc=2\n" + Block("kdc=new")},
        TextCase{"MissingParameterIsAppended", "a=1\n", "a=1\n\n" + Block("kdc=new")}),
    NameOfTextCase);

TEST_F(ParamEditingTest, WithoutMarkersCommentedOutLinesAreReplacedToo) {
    EXPECT_EQ(WithParamSet("kdc=1\n# kdc=2\na=1\n", "kdc", "new", true), "kdc=new\nkdc=new\na=1\n");
    EXPECT_EQ(WithParamSet("a=1\n", "kdc", "new", true), "a=1\n\nkdc=new\n");
}

TEST_F(ParamEditingTest, EmptyValueIsWrittenAsNameAndEqualsSign) {
    EXPECT_EQ(WithParamSet("a\n", "kdc", ""), "a\n\n" + Block("kdc="));
}

TEST_F(ParamEditingTest, ValueIsWrittenAsItStands) {
    EXPECT_EQ(WithParamSet("kdc=1\n", "kdc", " a = b \\1 $& "),
              kFormer + "kdc=1\n" + Block("kdc= a = b \\1 $& "));
}

TEST_F(ParamEditingTest, NameIsPartOfThePatternUnescaped) {
    EXPECT_EQ(WithParamSet("axb=1\n", "a.b", "2"), kFormer + "axb=1\n" + Block("a.b=2"));
    EXPECT_EQ(ParamOf("axb=1\n", "a.b"), "1");
    EXPECT_EQ(WithParamRestored(kFormer + "axb=1\n", "a.b"), "axb=1\n");
}

TEST_F(ParamEditingTest, PatternsAreTheseExactly) {
    WithParamSet("x\n");
    EXPECT_EQ(Journal({"MatchRegEx"}), Strings{"MatchRegEx ^#*\\s*kdc= in x"});
    ParamOf("x\n");
    EXPECT_EQ(Journal({"MatchRegEx"}), Strings{"MatchRegEx ^\\s*kdc= in x"});
    WithParamRestored("x\n");
    EXPECT_EQ(Journal({"MatchRegEx"}), Strings{"MatchRegEx ^# --PRE-ZET-- #*\\s*kdc= in x"});
}

TEST_F(ParamEditingTest, ValueIsEverythingBehindTheFirstEqualsSign) {
    EXPECT_EQ(ParamOf("kdc=a=b\n"), "a=b");
    EXPECT_EQ(ParamOf("kdc=\n"), "");
    EXPECT_EQ(ParamOf("kdc= a \t\r\n"), " a \t\r");
    EXPECT_EQ(ParamOf("  kdc=1"), "1");
    EXPECT_EQ(ParamOf("kdc==\n"), "=");
}

TEST_F(ParamEditingTest, FirstOfSeveralLinesGivesTheValue) {
    EXPECT_EQ(ParamOf("kdc=1\nkdc=2\n"), "1");
}

TEST_F(ParamEditingTest, CommentedOutAndFormerLinesHaveNoValue) {
    EXPECT_EQ(ParamOf("#kdc=old\n"), "");
    EXPECT_EQ(ParamOf(kFormer + "kdc=old\n"), "");
    EXPECT_EQ(ParamOf("kdc = old\n"), "");
    EXPECT_EQ(ParamOf("a\n"), "");
}

TEST_F(ParamEditingTest, ValueInABlockIsTheValue) {
    EXPECT_EQ(ParamOf(kFormer + "kdc=1\n" + Block("kdc=2")), "2");
}

TEST_F(ParamEditingTest, EmptyValueThatIsThereLeavesTheTextReadable) {
    const std::string text = Edited(
        "kdc=\na=1\n",
        [](IZETConfigFile& file) {
            EXPECT_EQ(file.GetParamValue("kdc"), "");
            EXPECT_EQ(file.GetParamValue("a"), "1");
        },
        true);
    EXPECT_EQ(text, "kdc=\na=1\n");
}

TEST_F(ParamEditingTest, SetGetAndRestoreFitTogether) {
    const std::string text = Edited("kdc=old\n", [](IZETConfigFile& file) {
        file.SetParamValue("kdc", "new");
        EXPECT_EQ(file.GetParamValue("kdc"), "new");
        file.RestoreParamValue("kdc");
    });
    EXPECT_EQ(text, "kdc=old\n");
}

TEST_F(ParamEditingTest, RestoringBringsPlainAndCommentedOutLinesBack) {
    EXPECT_EQ(
        WithParamRestored(kFormer + "kdc=1\n" + Block("kdc=3") + kFormer + "#  kdc=2\n" + Block("kdc=3")),
        "kdc=1\n#  kdc=2\n");
}

TEST_F(ParamEditingTest, RestoringRemovesTheBlocksOfAllParametersButKeepsTheirFormerLines) {
    EXPECT_EQ(WithParamRestored(kFormer + "a=1\n" + Block("a=2") + kFormer + "kdc=1\n" + Block("kdc=2")),
              kFormer + "a=1\nkdc=1\n");
}

TEST_F(ParamEditingTest, FormerLineWithABlankBeforeAHashStays) {
    EXPECT_EQ(WithParamRestored(kFormer + " #kdc=1\n"), kFormer + " #kdc=1\n");
    EXPECT_EQ(WithParamRestored(kFormer + "kdc = old\n"), kFormer + "kdc = old\n");
}

TEST_F(ParamEditingTest, EmptyNameIsRefusedByEachOperationItself) {
    const std::string text = Edited("kdc=1\n", [&](IZETConfigFile& file) {
        ExpectError<EZETCheckError>("Argument is empty for 'SetParamValue'.",
                                    [&] { file.SetParamValue("", "x"); });
        ExpectError<EZETCheckError>("Argument is empty for 'GetParamValue'.",
                                    [&] { file.GetParamValue(""); });
        ExpectError<EZETCheckError>("Argument is empty for 'RestoreParamValue'.",
                                    [&] { file.RestoreParamValue(""); });
        const std::string unit = "libzet-core src/interfaces/zet-config/ZETConfigFile ";
        EXPECT_EQ(Messages(),
                  (Strings{unit + "SetParamValue 1: Argument is empty for 'SetParamValue'.",
                           unit + "GetParamValue 1: Argument is empty for 'GetParamValue'.",
                           unit + "RestoreParamValue 1: Argument is empty for 'RestoreParamValue'."}));
        EXPECT_EQ(Journal({"MatchRegEx", "Put"}), Strings{});
    });
    EXPECT_EQ(text, "kdc=1\n");
}

}  // namespace
}  // namespace ZET
