#include "ModuleTest.h"

namespace ZET {
namespace {

/// Known: ${realm} R, ${empty} nothing, ${nested} a value with a placeholder, and some odd ones.
const StringMap kValues = {{"${realm}", "R"},
                           {"${empty}", ""},
                           {"${nested}", "<${realm}>"},
                           {"${twice}", "${nested}${nested}"},
                           {"${unknown_inside}", "[${no}]"},
                           {"${open}", "${rea"},
                           {"${brace}", "{realm}"},
                           {"${hash}", "#"},
                           {"${lines}", "1\n2"},
                           {"${line}", "1\n"},
                           {"${}", "nameless"},
                           {"${a b}", "blank"},
                           {"${a{b}", "inner"},
                           {"${dollar}", "$"},
                           {"realm", "wrong"},
                           {"${null}", std::string("\0", 1)}};

class ApplyTemplatesTest : public ModuleTest, public testing::WithParamInterface<TextCase> {
  protected:
    std::string Applied(const std::string& text) {
        StringMap values = kValues;
        return Edited(
            text, [&](IZETConfigFile& file) { file.ApplyTemplates(values); }, true);
    }

    static std::string Warning(const std::string& placeholder) {
        return "1 Template parameter '" + placeholder + "' not found.";
    }
};

TEST_P(ApplyTemplatesTest, GivesThisText) {
    EXPECT_EQ(Applied(GetParam().before), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Text, ApplyTemplatesTest,
    testing::Values(
        TextCase{"EmptyTextStaysEmpty", "", ""}, TextCase{"LineFeedsStay", "\n\n", "\n\n"},
        TextCase{"TextWithoutPlaceholdersStays", "a\n$b {c}\n", "a\n$b {c}\n"},
        TextCase{"PlaceholderIsReplacedButNotInAComment", "realm = ${realm}\n# ${realm}\n",
                 "realm = R\n# ${realm}\n"},
        TextCase{"LinesAroundACommentAreReplaced",
                 "${realm}\n# ${realm} ${realm}\n${realm} #${realm}\n#${realm}\n\n${realm}",
                 "R\n# ${realm} ${realm}\nR #R\n#${realm}\n\nR"},
        TextCase{"CommentBehindBlanksIsReplaced", "  # ${realm}\n\t# ${realm}\n", "  # R\n\t# R\n"},
        TextCase{"CommentWithoutBlankIsKept", "#${realm}\n", "#${realm}\n"},
        TextCase{"SeveralInALineAreReplaced", "${realm}${realm} ${realm}\n", "RR R\n"},
        TextCase{"UnknownOneIsMarked", "a ${server_id} ${realm}\n", "a !{server_id} R\n"},
        TextCase{"NamesAreComparedByteForByte", "${REALM}${realm }${ realm}\n",
                 "!{REALM}!{realm }!{ realm}\n"},
        TextCase{"ValueWithPlaceholdersIsExpanded", "${nested} ${twice}\n", "<R> <R><R>\n"},
        TextCase{"UnknownOneInAValueIsMarked", "${unknown_inside}\n", "[!{no}]\n"},
        TextCase{"FirstClosingBraceEndsIt", "${max${realm}}\n", "!{maxR}\n"},
        TextCase{"OpeningBracesInsideBelongToTheName", "${a{b}}\n", "inner}\n"},
        TextCase{"ClosingBraceBeforeItDoesNotCount", "}${realm}\n", "}R\n"},
        TextCase{"NamelessOneIsLookedUp", "${}\n", "nameless\n"},
        TextCase{"BlanksBelongToTheName", "${a b}\n", "blank\n"},
        TextCase{"DollarBeforeItStays", "$${realm}\n", "$R\n"},
        TextCase{"ValueJoinsWithTheTextBehindIt", "${open}lm}\n", "R\n"},
        TextCase{"ValueDoesNotJoinWithTheTextBeforeIt", "$${brace}\n", "${realm}\n"},
        TextCase{"DollarFromAValueJoinsWithTheTextBehindIt", "${dollar}{realm}\n", "R\n"},
        TextCase{"DollarFromAValueAtTheEndOfALineIsOrdinary", "${dollar}\n{realm}\n${dollar}",
                 "$\n{realm}\n$"},
        TextCase{"DollarFromAValueBeforeAnotherPlaceholderIsOrdinary", "${dollar}${brace}\n", "${realm}\n"},
        TextCase{"DollarWithoutBraceIsOrdinary", "$realm $ {realm} ${realm}$\n", "$realm $ {realm} R$\n"},
        TextCase{"LineThatBecomesACommentIsReplacedToItsEnd", "${hash} ${realm}\n", "# R\n"},
        TextCase{"EmptyValueLeavesAnEmptyLine", "a\n${empty}\nb\n", "a\n\nb\n"},
        TextCase{"MissingFinalLineFeedStaysMissing", "a ${realm}", "a R"},
        TextCase{"LastCommentWithoutLineFeedStaysSo", "# ${realm}", "# ${realm}"},
        TextCase{"LastLineThatBecomesEmptyGetsALineFeed", "a\n${empty}", "a\n\n"},
        TextCase{"OnlyLineThatBecomesEmptyGetsALineFeed", "${empty}", "\n"},
        TextCase{"LineFeedsInAValueAreWritten", "${lines}\n${lines}", "1\n2\n1\n2"},
        TextCase{"ValueThatEndsWithALineFeedGetsNoOtherAtTheEnd", "${line}", "1\n"},
        TextCase{"CarriageReturnBelongsToTheLine", "${realm}\r\n", "R\r\n"},
        TextCase{"PlaceholderDoesNotReachOverALineInAComment", "# ${realm\nlm}\n", "# ${realm\nlm}\n"},
        TextCase{"NullBytesAreOrdinary", std::string("\0${realm}${null}\n", 17), std::string("\0R\0\n", 4)},
        TextCase{"MarkerLinesAreComments", kBegin + "x=${realm}\n" + kEnd, kBegin + "x=R\n" + kEnd},
        TextCase{"OrdinaryLinesInATemplateCommentAreReplaced",
                 kTemplateComment + "x ${realm}\n" + kCommentEnd, kTemplateComment + "x R\n" + kCommentEnd}),
    NameOfTextCase);

TEST_F(ApplyTemplatesTest, UnknownPlaceholderIsAWarningThatNamesItWhole) {
    Applied("${server_id} ${realm}\n");
    EXPECT_EQ(Journal(), (Strings{"Translate libzet-config: Template parameter '%s' not found.",
                                  "Format ApplyTemplates: Template parameter '${server_id}' not found.",
                                  "Put " + Warning("${server_id}"), "RenameFile D/edited.tmp D/edited"}));
    EXPECT_EQ(Messages(), Strings{"libzet-config src/interfaces/zet-config/ZETConfigFile ApplyTemplates 1: "
                                  "Template parameter '${server_id}' not found."});
}

TEST_F(ApplyTemplatesTest, EachUnknownPlaceholderIsReportedInOrder) {
    Applied("${b}${a}\n# ${comment}\n${b} ${realm}\n${max${realm}}");
    EXPECT_EQ(Log(), (Strings{Warning("${b}"), Warning("${a}"), Warning("${b}"), Warning("${max${realm}")}));
}

TEST_F(ApplyTemplatesTest, ValuesAreOnlyRead) {
    StringMap values = kValues;
    Edited(
        "${realm}${no}\n", [&](IZETConfigFile& file) { file.ApplyTemplates(values); }, true);
    EXPECT_EQ(values, kValues);
}

TEST_F(ApplyTemplatesTest, NoValuesMarkEverything) {
    StringMap none;
    EXPECT_EQ(Edited(
                  "${realm}\n", [&](IZETConfigFile& file) { file.ApplyTemplates(none); }, true),
              "!{realm}\n");
}

TEST_F(ApplyTemplatesTest, MarkedPlaceholderIsNotMetAgain) {
    StringMap values = kValues;
    EXPECT_EQ(Edited(
                  "${no}\n",
                  [&](IZETConfigFile& file) {
                      file.ApplyTemplates(values);
                      values["${no}"] = "yes";
                      file.ApplyTemplates(values);
                  },
                  true),
              "!{no}\n");
    EXPECT_EQ(Log().size(), 1U);
}

TEST_F(ApplyTemplatesTest, ValueAsLongAsTheWholeTemplateTakesItsPlace) {
    // Nothing but one placeholder; a value that holds "$" is searched again.
    StringMap values = {{"${a}", "$1 b"}, {"${b}", "${c}"}, {"${c}", "cost $ 1"}};
    const auto apply = [&](IZETConfigFile& file) { file.ApplyTemplates(values); };
    EXPECT_EQ(Edited("${a}", apply, true), "$1 b");
    EXPECT_EQ(Edited("${b}", apply, true), "cost $ 1");
}

TEST_F(ApplyTemplatesTest, RunOfTheSameLengthFromElsewhereIsNotTakenForTheText) {
    Buffer bytes;
    bytes.Append("a=1\n");
    TextReader text(std::move(bytes));
    const std::string other = "b=2\n";
    TextBuilder result(text, Buffer());
    result.Copy(other);
    result.Install();
    EXPECT_EQ(text.Bytes(), other);
}

TEST_F(ApplyTemplatesTest, TextCanBeReadAndEditedAfterwards) {
    StringMap values = kValues;
    EXPECT_EQ(Edited(
                  "x=${realm}\ny=1",
                  [&](IZETConfigFile& file) {
                      file.ApplyTemplates(values);
                      EXPECT_EQ(file.GetLine("^x="), "x=R");
                      file.SetLine("^y=", "y=2");
                  },
                  true),
              "x=R\ny=2");
}

TEST_F(ApplyTemplatesTest, FailureOfTheLogLeavesTheText) {
    StringMap values = kValues;
    const std::string text = "${realm}\n${no}\n${realm}";
    EXPECT_EQ(Edited(
                  text,
                  [&](IZETConfigFile& file) {
                      m_core.FailAt("Put");
                      ExpectScriptedFailure("Put", [&] { file.ApplyTemplates(values); });
                      EXPECT_EQ(file.GetLine("no"), "${no}");
                  },
                  true),
              text);
}

TEST_F(ApplyTemplatesTest, FailureInTheLastLineLeavesTheTextReadable) {
    StringMap values = kValues;
    const std::string text = "${realm}\n${no}";
    EXPECT_EQ(Edited(
                  text,
                  [&](IZETConfigFile& file) {
                      m_core.FailAt("Format");
                      ExpectScriptedFailure("Format", [&] { file.ApplyTemplates(values); });
                  },
                  true),
              text);
}

TEST_F(ApplyTemplatesTest, ObjectWithoutTextIsRefused) {
    CZETConfigFile file(m_core);
    file.Open(Path("missing"), "", false);
    m_core.Forget();
    StringMap values = kValues;
    ExpectError<EZETCheckError>("Invalid config object 'D/missing'.", [&] { file.ApplyTemplates(values); });
    EXPECT_EQ(Messages(), Strings{"libzet-config src/interfaces/zet-config/ZETConfigFile ApplyTemplates 1: "
                                  "Invalid config object 'D/missing'."});
    EXPECT_EQ(Log(), Strings{});
}

}  // namespace
}  // namespace ZET
