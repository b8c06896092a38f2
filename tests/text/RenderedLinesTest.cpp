#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

#include "TemplateLines.h"
#include "text/TemplateCheck.h"

namespace ZET::Text {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const StringMap kValues = {{"${begin}", "# ---ZET_BEGIN---"},
                           {"${end}", "# ----ZET_END----"},
                           {"${former}", "# --PRE-ZET-- a=1"},
                           {"${notice}", "# --ZET_CONFIG_COMMENT--"},
                           {"${comment}", "# --ZET_TEMPLATE_COMMENT--"},
                           {"${close}", "# --ZET_COMMENT_END--"},
                           {"${hash}", "# --"},
                           {"${empty}", ""},
                           {"${leads}", "${empty}${end}"},
                           {"${lines}", "a\n# ---ZET_BEGIN---\nb"},
                           {"${brace}", "{"},
                           {"${word}", "word"}};

std::vector<std::string> Descriptions(const std::string& text, const StringMap& values = kValues) {
    std::vector<std::string> descriptions;
    for (const Problem& problem : CheckTemplate("t.conf", LinesOf(text), values))
        descriptions.push_back(problem.Describe());
    return descriptions;
}

StringMap WithoutLines() {
    StringMap values = kValues;
    values.erase("${lines}");
    return values;
}

std::string Made(const std::string& place, const std::string& marker) {
    return "t.conf:" + place + ": a value makes this line begin with \"" + marker +
           "\", which marks lines of the system itself (give the placeholder another value)";
}

std::string NoEnd(const std::string& line, const std::string& begin, const std::string& end) {
    return "t.conf:" + line + ":1: \"" + begin + "\" has no end (add a line \"" + end + "\")";
}

TEST(RenderedLines, ValueThatBecomesAMarkerLineIsTold) {
    const std::string end = "# ----ZET_END----";
    EXPECT_THAT(Descriptions("x\n${former}\n"), ElementsAre(Made("2:1", "# --PRE-ZET-- ")));
    EXPECT_THAT(Descriptions("x\n${comment}\ny\n"),
                ElementsAre(Made("2:1", "# --ZET_TEMPLATE_COMMENT--"),
                            NoEnd("2", "# --ZET_TEMPLATE_COMMENT--", "# --ZET_COMMENT_END--")));
    for (const char* line : {"${end}", "${empty}# ----ZET_END----", "${leads} x", "${hash}--ZET_END----"})
        EXPECT_THAT(
            Descriptions(std::string("x\n") + line + "\n", WithoutLines()),
            ElementsAre(Made("2:1", end), testing::HasSubstr("2:1: \"# ----ZET_END----\" ends no region")))
            << line;
}

TEST(RenderedLines, MarkerOfAValueBehindOtherTextIsText) {
    for (const char* line : {"x${begin}", " ${begin}", "${word}${begin}", "${word} # ---ZET_BEGIN---",
                             "${unknown${empty}", "# ${begin}"}) {
        const std::vector<std::string> descriptions = Descriptions(std::string("x\n") + line + "\n");
        EXPECT_THAT(descriptions, testing::Not(testing::Contains(testing::HasSubstr("a value makes"))))
            << line;
    }
}

TEST(RenderedLines, MarkerInALineOfAValueOfSeveralIsTold) {
    EXPECT_THAT(
        Descriptions("x\ny ${lines}\n"),
        ElementsAre(Made("2:3", "# ---ZET_BEGIN---"), NoEnd("2", "# ---ZET_BEGIN---", "# ----ZET_END----")));
}

TEST(RenderedLines, RegionsAreBalancedAsTheyAreRendered) {
    EXPECT_THAT(Descriptions("x\n${begin}\ny\n# ----ZET_END----\n"),
                ElementsAre(Made("2:1", "# ---ZET_BEGIN---")));
    EXPECT_THAT(Descriptions("# ---ZET_BEGIN---\n${begin}\n# ----ZET_END----\n"),
                ElementsAre(Made("2:1", "# ---ZET_BEGIN---"),
                            "t.conf:2:1: \"# ---ZET_BEGIN---\" inside a region that line 1 opened (end that "
                            "region before this line)"));
}

TEST(RenderedLines, NoticeThatAValueBringsIntoTheFirstLineIsTold) {
    const std::string what =
        ": \"# --ZET_CONFIG_COMMENT--\" in its first line keeps the notice out that names the template "
        "(take the notice out: a commit writes its own)";
    EXPECT_THAT(Descriptions("x ${notice}\n"), ElementsAre("t.conf:1:3" + what));
    EXPECT_THAT(Descriptions("${empty}\nx ${notice}\n"), ElementsAre("t.conf:2:3" + what));
    EXPECT_THAT(Descriptions("${word}\nx ${notice}\n"), IsEmpty());
}

TEST(RenderedLines, FirstLineThatNoNoticeMayComeBeforeIsTold) {
    const std::string what =
        ":1: the programs that read the file need this line as its first, and the notice comes before it "
        "(say notice = false in its entry of the list)";
    const std::string comment = "# --ZET_TEMPLATE_COMMENT--\n# about\n# --ZET_COMMENT_END--\n";
    EXPECT_THAT(Descriptions("#!/bin/sh\n"), ElementsAre("t.conf:1" + what));
    EXPECT_THAT(Descriptions("<?xml ${word}?>\n"), ElementsAre("t.conf:1" + what));
    EXPECT_THAT(Descriptions("\n${empty}\n${brace}\n"), ElementsAre("t.conf:3" + what));
    EXPECT_THAT(Descriptions(comment + "#!/bin/sh\n"), ElementsAre("t.conf:4" + what));
    EXPECT_THAT(Descriptions(comment + "x\n#!/bin/sh\n{\n"), IsEmpty());
    EXPECT_THAT(Descriptions("# --ZET_TEMPLATE_COMMENT--\n{\n# --ZET_COMMENT_END--\nx\n"), IsEmpty());
}

#ifdef __SANITIZE_ADDRESS__
constexpr int kManyLines = 20'000;  // each takes twenty times as long
#else
constexpr int kManyLines = 80'000;
#endif

TEST(RenderedLines, LookGrowsWithTheTextAndNoFaster) {
    for (const std::string line : {"${word}\n", "# ---ZET_BEGIN---\n", "${leads}\n", "${", "${x}"}) {
        std::string text = "x\n";
        for (int i = 0; i < kManyLines; ++i)
            text += line;
        const std::clock_t begin = std::clock();
        Descriptions(text + "}", WithoutLines());
        EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 5.0) << line;
    }
}

}  // namespace
}  // namespace ZET::Text
