#include "text/ParamLook.h"

#include <gmock/gmock.h>

#include <random>
#include <string>
#include <vector>

#include "text/Lines.h"
#include "text/Markers.h"

namespace ZET::Text {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Form = ParamLine::Form;

const std::string kBegin = "# ---ZET_BEGIN---\n";
const std::string kEnd = "# ----ZET_END----\n";

ParamLook LookedAt(const std::string& text, const std::string& name = "kdc") {
    ParamLook look(name);
    look.Take(text, 0);
    return look;
}

/// "FORM LINE SECTION", with "*" for a line in a block.
std::vector<std::string> Found(const ParamLook& look) {
    static const char* const kForms[] = {"set", "blanks", "comment", "mentioned", "former", "mark"};
    std::vector<std::string> found;
    for (const ParamLine& line : look.Lines()) {
        found.push_back(kForms[static_cast<int>(line.form)] + (" " + std::to_string(line.number)) + " " +
                        std::to_string(line.section) + (line.isInBlock ? "*" : ""));
    }
    return found;
}

std::vector<std::string> FoundIn(const std::string& text, const std::string& name = "kdc") {
    return Found(LookedAt(text, name));
}

TEST(ParamLook, LinesThatTheModuleTakesForTheParameter) {
    EXPECT_THAT(FoundIn("kdc=a"), ElementsAre("set 1 0"));
    EXPECT_THAT(FoundIn(" \tkdc=\n"), ElementsAre("set 1 0"));
    EXPECT_THAT(FoundIn("#kdc=a\n## kdc=a\n"), ElementsAre("comment 1 0", "comment 2 0"));
    EXPECT_THAT(FoundIn("# --PRE-ZET-- kdc=a\n# --PRE-ZET-- #kdc=a\n" + kBegin + "kdc=b\n#kdc=c\n" + kEnd),
                ElementsAre("former 1 0", "former 2 0", "set 4 0*", "comment 5 0*"));
}

TEST(ParamLook, LinesThatItDoesNot) {
    EXPECT_THAT(FoundIn("kdc = a\nkdc\t=a\n kdc =\n"), ElementsAre("blanks 1 0", "blanks 2 0", "blanks 3 0"));
    EXPECT_THAT(FoundIn("# kdc = a\n;kdc=a\n #kdc=a\n# ; kdc=a\n"),
                ElementsAre("mentioned 1 0", "mentioned 2 0", "mentioned 3 0", "mentioned 4 0"));
    EXPECT_THAT(FoundIn("# --PRE-ZET-- kdc = a\n"), IsEmpty());
}

TEST(ParamLook, LinesBehindAByteOrderMark) {
    const std::string mark = "\xef\xbb\xbf";
    EXPECT_THAT(FoundIn(mark + "kdc=a\nkdc=b\n"), ElementsAre("mark 1 0", "set 2 0"));
    EXPECT_THAT(FoundIn("x=1\n" + mark + " kdc = a\n"), ElementsAre("mark 2 0"));
    EXPECT_THAT(FoundIn(mark + "#kdc=a\n" + mark + "; kdc=a\n"),
                ElementsAre("mentioned 1 0", "mentioned 2 0"));
    EXPECT_THAT(FoundIn(mark + "# --PRE-ZET-- kdc=a\n" + mark + "x=kdc\n" + mark), IsEmpty());
}

TEST(ParamLook, OtherLines) {
    for (const char* line : {"kdcs=a", "kdc", "kdc a=b", "akdc=a", "# see kdc=a", "kdc-=a", "Kdc=a", ""})
        EXPECT_THAT(FoundIn(line), IsEmpty()) << line;
    EXPECT_THAT(FoundIn("abc=1\n", "a.c"), IsEmpty());
}

TEST(ParamLook, SectionsAreCounted) {
    const ParamLook look = LookedAt("# x=1\n[a]\nkdc=1\n# [no]\n[b]\n[c]\nkdc=2\n");
    EXPECT_THAT(Found(look), ElementsAre("set 3 1", "set 7 3"));
    EXPECT_EQ(look.PartCount(), 3U);
    EXPECT_EQ(look.LastSection(), "c");
    EXPECT_EQ(LookedAt("x=1\n[a]\n").PartCount(), 2U);
    EXPECT_EQ(LookedAt("x=1\n").PartCount(), 1U);
    EXPECT_EQ(LookedAt("# x\n\n").PartCount(), 0U);
}

TEST(ParamLook, TextInPiecesIsTheSameText) {
    const std::string pieces[] = {"x=1\n", "other\nlines\n", "[a]\n", "more\n", "kdc=1\nno end"};
    ParamLook look("kdc");
    std::size_t before = 0;
    for (const std::string& piece : pieces) {
        look.Take(piece, before);
        before += CountLines(piece);
    }
    EXPECT_THAT(Found(look), ElementsAre("set 6 1"));
}

/// The same text, of which no line but empty ones can be passed over: "[" behind a line is no heading.
std::string WithEachLineLookedAt(const std::string& text) {
    std::string all;
    for (const TextLine& line : SplitLines(text)) {
        const bool stays =
            line.text.empty() || line.text.starts_with('[') || MarkerOf(line.text) != Marker::None;
        all.append(line.text).append(stays ? "" : " [").append(line.hasLineFeed ? "\n" : "");
    }
    return all;
}

TEST(ParamLook, LinesThatArePassedOverWouldNotHaveBeenFound) {
    const std::vector<std::string> lines = {
        "x=1\n", "\n", "# c\n",     "[a]\n",    "kdc=1\n", "#kdc=2\n", " kdc=3\n", "other\n",
        kBegin,  kEnd, "kdc = 4\n", "akdc=5\n", "y=kdc\n", "z=2\n",    "z=3\n",    "; kdc=\n"};
    std::minstd_rand random;  // NOLINT: the same texts in each run
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (std::size_t count = random() % 20; count > 0; --count)
            text += lines[random() % lines.size()];
        if (round % 3 == 0 && !text.empty()) text.pop_back();
        const ParamLook look = LookedAt(text);
        const ParamLook plain = LookedAt(WithEachLineLookedAt(text));
        EXPECT_EQ(Found(look), Found(plain)) << text;
        EXPECT_EQ(look.PartCount(), plain.PartCount()) << text;
        EXPECT_EQ(look.LastSection(), plain.LastSection()) << text;
    }
}

TEST(ParamLook, PartOfATextHasTheNumbersOfTheWhole) {
    ParamLook look("kdc");
    look.Take("x=1\nkdc=2\ny=1\nz=1\nkdc=3\n", 10);
    EXPECT_THAT(Found(look), ElementsAre("set 12 0", "set 15 0"));
}

}  // namespace
}  // namespace ZET::Text
