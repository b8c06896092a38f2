#include "text/Sections.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace ZET::Text {
namespace {

using testing::ElementsAre;

const std::string kBegin = "# ---ZET_BEGIN---\n";
const std::string kEnd = "# ----ZET_END----\n";

std::string NameIn(const std::string& line) {
    return std::string(SectionNameOf(line).value_or("none"));
}

/// "NAME|lines", each section of the text.
std::vector<std::string> Parts(const std::string& text) {
    std::vector<std::string> parts;
    for (const Section& section : SectionsOf(text))
        parts.push_back(std::string(section.name) + "|" + std::string(section.lines));
    return parts;
}

TEST(Sections, NameStandsInBracketsOnALineOfItsOwn) {
    EXPECT_EQ(NameIn("[a]"), "a");
    EXPECT_EQ(NameIn("  [ a b ]\t\r"), "a b");
    EXPECT_EQ(NameIn("[remote \"origin\"]"), "remote \"origin\"");
    EXPECT_EQ(NameIn("[a] # about it"), "a");
    EXPECT_EQ(NameIn("[a]\t; about it"), "a");
    EXPECT_EQ(NameIn("[]"), "");
    EXPECT_EQ(NameIn("[[a]]"), "[a]");
}

TEST(Sections, OtherLinesAreNone) {
    for (const char* line : {"", "a", "# [a]", "#[a]", ";[a]", "[a", "a]", "a=[b]", "[a]=1", "[a]b", "[a]#b",
                             "[a] b", "x [a]", "[NOTFOUND=return] files"})
        EXPECT_EQ(NameIn(line), "none") << line;
}

TEST(Sections, LinesBelongToTheSectionAboveThem) {
    EXPECT_THAT(Parts(""), ElementsAre("|"));
    EXPECT_THAT(Parts("x=1\n"), ElementsAre("|x=1\n"));
    EXPECT_THAT(Parts("x=1\n[a]\ny=2\n[b]\nz=3"), ElementsAre("|x=1\n", "a|y=2\n", "b|z=3"));
    EXPECT_THAT(Parts("[a]\n[b]"), ElementsAre("|", "a|", "b|"));
    EXPECT_THAT(Parts("x=1\n# [a]\ny=2\n"), ElementsAre("|x=1\n# [a]\ny=2\n"));
}

TEST(Sections, NewLineBelongsBeforeTheEmptyOnesAndWhatIntroducesTheNextSection) {
    EXPECT_THAT(Parts("[a]\nx=1\n\n \n[b]\ny=2\n\n"), ElementsAre("|", "a|x=1\n", "b|y=2\n"));
    EXPECT_THAT(Parts("[a]\r\nx=1\r\n\r\n[b]\r\n"), ElementsAre("|", "a|x=1\r\n", "b|"));
    EXPECT_THAT(Parts("[a]\nx=1\n\n# about b\n; more\n[b]\n"), ElementsAre("|", "a|x=1\n", "b|"));
    EXPECT_THAT(Parts("[a]\nx=1\n# of a\n[b]\n"), ElementsAre("|", "a|x=1\n# of a\n", "b|"));
    EXPECT_THAT(Parts("[a]\nx=1\n\n#y=2\n[b]\n"), ElementsAre("|", "a|x=1\n\n#y=2\n", "b|"));
    EXPECT_THAT(Parts("[a]\nx=1\n\n# at the end\n"), ElementsAre("|", "a|x=1\n\n# at the end\n"));
    EXPECT_THAT(Parts("# of all\n[a]\n"), ElementsAre("|# of all\n", "a|"));
    EXPECT_THAT(Parts("[a]\nx=1\n\n" + kBegin + "y=1\n" + kEnd + "[b]\n"),
                ElementsAre("|", "a|x=1\n\n" + kBegin + "y=1\n" + kEnd, "b|"));
}

TEST(Sections, PlacesAreThoseOfTheText) {
    const std::string text = "x=1\n\n[a]\ny=2\n[b]\n";
    const std::vector<Section> sections = SectionsOf(text);
    ASSERT_EQ(sections.size(), 3U);
    EXPECT_EQ(sections[0].headingLine, 0U);
    EXPECT_EQ(sections[1].headingLine, 3U);
    EXPECT_EQ(sections[1].linesBefore, 3U);
    EXPECT_EQ(sections[1].lines.data(), text.data() + text.find("y=2"));
    EXPECT_EQ(sections[2].linesBefore, 5U);
}

TEST(Sections, HeadingInABlockEndsTheSectionBeforeTheBlock) {
    const std::string block = "# --PRE-ZET-- [b]\n" + kBegin + "[c]\n" + kEnd;
    const std::string text = "[a]\nx=1\n" + block + "x=2\n";
    const std::vector<Section> sections = SectionsOf(text);
    EXPECT_THAT(Parts(text), ElementsAre("|", "a|x=1\n", "c|" + block + "x=2\n"));
    ASSERT_EQ(sections.size(), 3U);
    EXPECT_FALSE(sections[1].isInBlock);
    EXPECT_TRUE(sections[2].isInBlock);
    EXPECT_EQ(sections[2].headingLine, 5U);
    EXPECT_EQ(sections[2].linesBefore, 2U);
    EXPECT_THAT(Parts("[a]\n" + kBegin + "[b]\n[c]\n" + kEnd),
                ElementsAre("|", "a|", "b|", "c|" + kBegin + "[b]\n[c]\n" + kEnd));
}

}  // namespace
}  // namespace ZET::Text
