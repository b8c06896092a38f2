#include "deploy/edit/ParamEdits.h"

#include <gmock/gmock.h>

#include <chrono>
#include <random>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "text/LineEnds.h"
#include "text/WithoutBlocks.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::string Block(const std::string& line) {
    return std::string(ZETBeginMarker) + "\n" + line + "\n" + ZETEndMarker + "\n";
}

std::string Replaced(const std::string& former, const std::string& line) {
    return ZETFormerLinePrefix + former + "\n" + Block(line);
}

/// A file "conf" of which sections and parameters are asked, without a history.
class ParamEditsTest : public HostFixture {
  protected:
    ParamEditsTest() {
        Write("zet.conf", "ZET_SYNC=no\nZET_HISTORY=no\n" + Directories());
        m_options.moduleFile = ZET_MODULE;
    }

    Deployment& TheProduct() {
        if (!m_product) m_product = std::make_unique<Deployment>(At("zet.conf"), m_options, m_told);
        return *m_product;
    }

    static EditOptions In(const std::optional<std::string>& section) {
        EditOptions options;
        options.section = section;
        return options;
    }

    void Set(const std::string& name, const std::string& value, const EditOptions& options = {}) {
        SetParam(TheProduct(), At("conf"), name, value, options);
    }
    void Unset(const std::string& name, const EditOptions& options = {}) {
        m_outcome = UnsetParam(TheProduct(), At("conf"), name, options);
    }
    void Restore(const std::string& name, const EditOptions& options = {}) {
        m_outcome = RestoreParam(TheProduct(), At("conf"), name, options);
    }
    std::string Get(const std::string& name, const std::optional<std::string>& section = std::nullopt) {
        return GetParam(TheProduct(), At("conf"), name, section).value_or("none");
    }

    /// Behind the notice that an edit puts there.
    std::string Text() const {
        const std::string notice =
            std::string(ZETNoticeMarker) + "\n" + ZETEditedNotice + "\n" + ZETCommentEndMarker + "\n";
        const std::string text = Read("conf");
        EXPECT_TRUE(text.starts_with(notice)) << text;
        return text.substr(notice.size());
    }

    /// What refuses the call, which leaves the file as it is.
    template <typename Call>
    Problem Refusal(Call call) {
        const std::string before = Read("conf");
        try {
            call();
        } catch (const Failure& failure) {
            EXPECT_EQ(Read("conf"), before);
            EXPECT_EQ(failure.Facts().file, At("conf"));
            return failure.Facts();
        }
        ADD_FAILURE() << "nothing was refused: " << Read("conf");
        return {};
    }

    FileOutcome m_outcome;

  private:
    std::unique_ptr<Deployment> m_product;
};

constexpr char kSections[] = "x=0\n\n[a]\nx=1\n#y=1\n\n# about b\n[b]\nx=2\n";

TEST_F(ParamEditsTest, SectionIsEditedAndNothingElse) {
    Write("conf", kSections);
    EXPECT_EQ(Get("x", "a"), "1");
    Set("x", "new", In("a"));
    EXPECT_EQ(Text(), "x=0\n\n[a]\n" + Replaced("x=1", "x=new") + "#y=1\n\n# about b\n[b]\nx=2\n");
    EXPECT_EQ(Get("x", "a"), "new");
    EXPECT_EQ(Get("x", "b"), "2");
    EXPECT_EQ(Get("x", ""), "0");
    Set("y", "2", In("a"));
    EXPECT_THAT(Text(), HasSubstr(Replaced("#y=1", "y=2")));
    Restore("x", EditOptions(In("b")));
    EXPECT_EQ(m_outcome.result, FileOutcome::Result::Unchanged);
    EXPECT_THAT(Refusal([&] { Restore("x", In("a")); }).text, HasSubstr("in lines 16-18"));
    EditOptions all = In("a");
    all.allBlocks = true;
    Restore("x", all);
    EXPECT_EQ(Text(), "x=0\n\n[a]\nx=1\n# --PRE-ZET-- #y=1\n\n# about b\n[b]\nx=2\n");
}

TEST_F(ParamEditsTest, RestoreOfASectionLeavesTheBlocksOfOthers) {
    Write("conf", kSections);
    Set("x", "new", In("a"));
    Set("x", "new", In("b"));
    Restore("x", In("a"));
    EXPECT_EQ(Text(), "x=0\n\n[a]\nx=1\n#y=1\n\n# about b\n[b]\n" + Replaced("x=2", "x=new"));
    Restore("x", In("b"));
    EXPECT_EQ(Text(), kSections);
}

TEST_F(ParamEditsTest, NewLineStandsAtTheEndOfItsSection) {
    Write("conf", kSections);
    Set("z", "1", In("a"));
    EXPECT_EQ(Text(), "x=0\n\n[a]\nx=1\n#y=1\n\n" + Block("z=1") + "\n# about b\n[b]\nx=2\n");
    Set("z", "0", In(""));
    EXPECT_EQ(Text(),
              "x=0\n\n" + Block("z=0") + "\n[a]\nx=1\n#y=1\n\n" + Block("z=1") + "\n# about b\n[b]\nx=2\n");
    Write("conf", "[a]\n[b]");
    Set("z", "1", In("a"));
    Set("z", "2", In("b"));
    EXPECT_EQ(Text(), "[a]\n\n" + Block("z=1") + "[b]\n" + Block("z=2"));
}

TEST_F(ParamEditsTest, SectionIsEditedWithoutMarkers) {
    Write("conf", kSections);
    EditOptions options = In("b");
    options.noMarkers = true;
    Set("x", "new", options);
    EXPECT_EQ(Read("conf"), "x=0\n\n[a]\nx=1\n#y=1\n\n# about b\n[b]\nx=new\n");
    Write("conf", "\n[b]\nx=1");
    Set("x", "2", options);
    EXPECT_EQ(Read("conf"), "\n[b]\nx=2");
}

TEST_F(ParamEditsTest, SameValueLeavesASectionUntouched) {
    Write("conf", kSections);
    Set("x", "new", In("a"));
    const std::string before = Read("conf");
    EXPECT_EQ(SetParam(TheProduct(), At("conf"), "x", "new", In("a")).result, FileOutcome::Result::Unchanged);
    EXPECT_EQ(Read("conf"), before);
}

TEST_F(ParamEditsTest, LinesOfASectionEndAsTheFiles) {
    Write("conf", "[a]\r\nx=1\r\n\r\n[b]\r\nx=2\r\n");
    Set("x", "new", In("a"));
    EXPECT_EQ(Text(), "[a]\r\n" + Replaced("x=1\r", "x=new\r") + "\r\n[b]\r\nx=2\r\n");
    EXPECT_EQ(Get("x", "a"), "new");
    Unset("x", In("b"));
    EXPECT_THAT(Text(), HasSubstr(Replaced("x=2\r", "#x=2\r")));
}

TEST_F(ParamEditsTest, DryRunShowsTheSectionAndWritesNothing) {
    m_options.dryRun = m_options.wantsDiffs = true;
    Write("conf", kSections);
    const FileOutcome outcome = SetParam(TheProduct(), At("conf"), "x", "new", In("a"));
    EXPECT_EQ(outcome.result, FileOutcome::Result::Changed);
    EXPECT_THAT(outcome.diff.text, HasSubstr("-x=1\n+# --PRE-ZET-- x=1\n"));
    EXPECT_EQ(Read("conf"), kSections);
}

TEST_F(ParamEditsTest, SectionThatIsNotThereIsToldWithThoseThatAre) {
    Write("conf", kSections);
    const Problem problem = Refusal([&] { Set("x", "1", In("c")); });
    EXPECT_EQ(problem.text, "has no section [c]");
    EXPECT_THAT(problem.remedy, HasSubstr("the file has [a], [b];"));
    EXPECT_EQ(Refusal([&] { Get("x", "A"); }).text, "has no section [A]");
    Write("conf", "x=1\n# [a]\n");
    EXPECT_EQ(Refusal([&] { Set("x", "1", In("a")); }).remedy,
              "the file has no sections: leave --section out");
}

TEST_F(ParamEditsTest, SectionThatIsThereTwiceIsRefused) {
    Write("conf", "[a]\nx=1\n[b]\n[ a ]\nx=2\n");
    for (const auto& call : {std::function<void()>([&] { Set("x", "1", In("a")); }),
                             {[&] { Get("x", "a"); }},
                             {[&] { Unset("x", In("a")); }},
                             {[&] { Restore("x", In("a")); }}}) {
        const Problem problem = Refusal(call);
        EXPECT_EQ(problem.line, 4);
        EXPECT_EQ(problem.text, "a second section [a] begins here, after the one in line 1");
    }
    EXPECT_NO_THROW(Set("x", "1", In("b")));
}

TEST_F(ParamEditsTest, SectionThatABlockBeginsIsNoneToEdit) {
    Write("conf", "[a]\nx=1\n\n" + Block("[b]") + "x=2\n");
    EXPECT_EQ(Refusal([&] { Set("x", "1", In("b")); }).line, 5);
    Set("x", "new", In("a"));
    EXPECT_EQ(Text(), "[a]\n" + Replaced("x=1", "x=new") + "\n" + Block("[b]") + "x=2\n");
}

TEST_F(ParamEditsTest, NameOfASectionIsGivenAlone) {
    Write("conf", kSections);
    for (const char* section : {"[a]", "a]", " a", "a\t", "a\nb"})
        EXPECT_THROW(Set("x", "1", In(section)), UsageError) << section;
    EXPECT_EQ(Read("conf"), kSections);
}

TEST_F(ParamEditsTest, ParameterOfSeveralSectionsNeedsOne) {
    Write("conf", kSections);
    const Problem problem = Refusal([&] { Set("x", "1"); });
    EXPECT_EQ(problem.text, "3 parts have \"x\", in lines 1, 4 and 9");
    EXPECT_EQ(problem.remedy, "--section or --no-section says which");
    Refusal([&] { Get("x"); });
    Refusal([&] { Unset("x"); });
    Write("conf", "[a]\nx=1\n[b]\n#x=2\n");
    EXPECT_EQ(Refusal([&] { Set("x", "1"); }).text, "2 sections have \"x\", in lines 2 and 4");
    EXPECT_EQ(Get("x"), "1");
    Set("x", "new", In("a"));
    Set("x", "new", In("b"));
    EXPECT_EQ(Refusal([&] { Restore("x"); }).remedy, "--section says which");
}

TEST_F(ParamEditsTest, ParameterOfOneSectionNeedsNone) {
    Write("conf", "[a]\nx=1\n[b]\ny=2\n");
    EXPECT_EQ(Get("x"), "1");
    Set("x", "new");
    EXPECT_EQ(Text(), "[a]\n" + Replaced("x=1", "x=new") + "[b]\ny=2\n");
    Restore("x");
    EXPECT_EQ(Text(), "[a]\nx=1\n[b]\ny=2\n");
}

TEST_F(ParamEditsTest, NewLineOfAFileWithSectionsNeedsOne) {
    Write("conf", "[a]\nx=1\n[b]\ny=2\n");
    EXPECT_EQ(Refusal([&] { Set("z", "1"); }).text,
              "no section has \"z\", and a new line would come to stand in the last one, [b]");
    Write("conf", "x=1\n[a]\n");
    Refusal([&] { Set("z", "1"); });
    Write("conf", "# one alone\n[a]\nx=1\n");
    Set("z", "1");
    EXPECT_EQ(Text(), "# one alone\n[a]\nx=1\n\n" + Block("z=1"));
}

TEST_F(ParamEditsTest, BlanksBeforeTheSignAreRefused) {
    Write("conf", "a=1\n\nx = old\n");
    const Problem problem = Refusal([&] { Set("x", "1"); });
    EXPECT_EQ(problem.line, 3);
    EXPECT_EQ(problem.text, "sets \"x\" with blanks before the \"=\", which is no line \"name=value\"");
    EXPECT_EQ(problem.remedy, "\"line set\" with the PATTERN \"^\\s*x\\s*=\" sets it");
    EXPECT_EQ(Refusal([&] { Get("x"); }).line, 3);
    EXPECT_EQ(Refusal([&] { Unset("x"); }).line, 3);
    EXPECT_EQ(Get("a"), "1");
    Write("conf", "[a]\nx = old\n[b]\nx=1\n");
    EXPECT_EQ(Refusal([&] { Set("x", "1", In("a")); }).line, 2);
    EXPECT_NO_THROW(Set("x", "1", In("b")));
}

TEST_F(ParamEditsTest, LinesBesideTheExpectedOneAreTold) {
    Write("conf", "a\n#x=1\n");
    Set("x", "new");
    EXPECT_THAT(
        m_told.remarks,
        ElementsAre(At("conf") + ":2: \"x\" stands here commented out, and the new line takes its place"));
    Set("x", "newer");
    EXPECT_THAT(m_told.remarks, SizeIs(1));
    Write("conf", "# x = 1\n");
    Set("x", "new");
    ASSERT_THAT(m_told.remarks, SizeIs(2));
    EXPECT_THAT(m_told.remarks[1], HasSubstr(":1: \"x\" stands here commented out in another form"));
    EXPECT_THAT(m_told.warnings, IsEmpty());
    Write("conf", "#x=1\n#x=2\nx=3\n");
    Set("x", "new");
    ASSERT_THAT(m_told.warnings, SizeIs(1));
    EXPECT_THAT(m_told.warnings[0], HasSubstr("lines 1, 2 and 3 are \"x\""));
}

TEST_F(ParamEditsTest, UnsetCommentsTheLineOutUntilItIsRestored) {
    Write("conf", "a=1\n x=old\nb=2\n");
    Unset("x");
    EXPECT_EQ(Text(), "a=1\n" + Replaced(" x=old", "# x=old") + "b=2\n");
    EXPECT_EQ(Get("x"), "none");
    const std::string before = Read("conf");
    Unset("x");
    EXPECT_EQ(m_outcome.result, FileOutcome::Result::Unchanged);
    EXPECT_EQ(m_outcome.remark, "no line sets \"x\"");
    EXPECT_EQ(Read("conf"), before);
    Restore("x");
    EXPECT_EQ(Text(), "a=1\n x=old\nb=2\n");
}

TEST_F(ParamEditsTest, UnsetOfWhatWasSetIsRestoredToWhatWasThereBefore) {
    Write("conf", "x=old\n");
    Set("x", "new");
    Unset("x");
    EXPECT_EQ(Text(), Replaced("x=old", "#x=new"));
    Set("x", "newer");
    EXPECT_EQ(Text(), Replaced("x=old", "x=newer"));
    Restore("x");
    EXPECT_EQ(Text(), "x=old\n");
}

TEST_F(ParamEditsTest, UnsetKeepsWhatEachLineSays) {
    Write("conf", "x=1\nx=a.c [2]\n#x=3\nx=1\n");
    Unset("x");
    EXPECT_EQ(Text(), Replaced("x=1", "#x=1") + Replaced("x=a.c [2]", "#x=a.c [2]") + "#x=3\n" +
                          Replaced("x=1", "#x=1"));
    Restore("x");
    EXPECT_EQ(Text(), "x=1\nx=a.c [2]\n#x=3\nx=1\n");
    Write("conf", "x=1\nx=2\n");
    EditOptions options;
    options.noMarkers = true;
    Unset("x", options);
    EXPECT_EQ(Read("conf"), "#x=1\n#x=2\n");
}

TEST_F(ParamEditsTest, UnsetOfASectionLeavesTheOthers) {
    Write("conf", kSections);
    Unset("x", In("b"));
    EXPECT_EQ(Text(), "x=0\n\n[a]\nx=1\n#y=1\n\n# about b\n[b]\n" + Replaced("x=2", "#x=2"));
    Restore("x", In("b"));
    EXPECT_EQ(Text(), kSections);
}

TEST_F(ParamEditsTest, GetFindsTheLineThatTheModuleFinds) {
    const std::vector<std::string> pieces = {"x=1",
                                             "x=",
                                             "xx=2",
                                             "x =3",
                                             " x=4",
                                             "\t\vx=5",
                                             "#x=6",
                                             "y=x=7",
                                             "\r",
                                             "\n",
                                             "\n",
                                             "\n",
                                             "",
                                             "x",
                                             "=",
                                             "\n\n",
                                             "z",
                                             " ",
                                             "\r\n",
                                             "\f",
                                             "\xe4",
                                             "\u00a0x=8",
                                             "x=\xff",
                                             ";x=9",
                                             "'x=1",
                                             "X=2",
                                             std::string(1, '\0'),
                                             std::string("x=\0y", 4)};
    std::minstd_rand random;  // NOLINT: the same texts in each run
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (std::size_t count = random() % 12; count > 0; --count)
            text += pieces[random() % pieces.size()];
        Write("conf", text);
        const std::string line =
            TheProduct().Config().OpenConfigFile(At("conf"), "client", true)->GetLine("^\\s*x=");
        std::string got;
        try {
            got = Get("x");
        } catch (const Failure&) {
            got = "none";  // one with blanks before the sign is refused
        }
        EXPECT_EQ(got, line.empty() ? "none" : Text::WithoutLineEnd(line.substr(line.find('=') + 1))) << text;
    }
}

TEST_F(ParamEditsTest, GetFindsAParameterBehindMuchElse) {
    std::string text;
    for (int i = 0; i < 50'000; ++i)
        text += "y" + std::to_string(i) + "=no x=" + std::to_string(i) + "\n";
    Write("conf", text + "x=last\nx=behind");
    EXPECT_EQ(Get("x"), "last");
    EXPECT_EQ(Get("z"), "none");
    Write("conf", "[a]\nx=1\n" + text + "[b]\nx=2");
    EXPECT_THAT(Refusal([&] { Get("x"); }).text, HasSubstr("2 sections"));
}

/// How long a file takes with so many sections and parameters, of which the last is edited.
class ParamEditsScaleTest : public ParamEditsTest {
  protected:
    double SecondsFor(int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += "[s" + std::to_string(i) + "]\nx=1\n" + Replaced("y=1", "y=2");
        Write("conf", text);
        const std::string last = "s" + std::to_string(count - 1);
        const auto begin = std::chrono::steady_clock::now();
        Set("x", "new", In(last));
        EXPECT_EQ(Get("x", last), "new");
        Unset("x", In(last));
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }
};

TEST_F(ParamEditsScaleTest, TimeGrowsAsTheFileDoes) {
    SecondsFor(1'000);
    const double few = SecondsFor(10'000);
    const double many = SecondsFor(80'000);
    EXPECT_LT(many, few * 8 * 4) << few;
}

}  // namespace
}  // namespace ZET::Deploy
