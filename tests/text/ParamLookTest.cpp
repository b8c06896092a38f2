#include "text/ParamLook.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace ZET::Text {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Form = ParamLine::Form;

const std::string kBegin = "# ---ZET_BEGIN---\n";
const std::string kEnd = "# ----ZET_END----\n";

ParamLook LookedAt(const std::string& text, const std::string& name = "kdc") {
    ParamLook look(name);
    look.Take(text);
    return look;
}

/// "FORM LINE SECTION", with "*" for a line in a block.
std::vector<std::string> Found(const ParamLook& look) {
    static const char* const kForms[] = {"set", "blanks", "comment", "mentioned", "former"};
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
    for (const std::string& piece : pieces)
        look.Take(piece);
    EXPECT_THAT(Found(look), ElementsAre("set 6 1"));
}

TEST(ParamLook, PartOfATextHasTheNumbersOfTheWhole) {
    ParamLook look("kdc", 10);
    look.Take("x=1\nkdc=2\n");
    EXPECT_THAT(Found(look), ElementsAre("set 12 0"));
}

}  // namespace
}  // namespace ZET::Text
