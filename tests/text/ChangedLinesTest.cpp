#include "text/ChangedLines.h"

#include <gtest/gtest.h>

#include "zet/ZETProblem.h"

using ZET::Problem;
using ZET::Text::ChangedLines;

namespace {

constexpr char kHead[] = "--- a/f\n+++ b/f\n";

std::string LinesOf(const std::string& hunks) {
    return ChangedLines(kHead + hunks);
}

}  // namespace

TEST(ChangedLines, NoDifferenceHasNone) {
    EXPECT_EQ(ChangedLines(""), "");
}

TEST(ChangedLines, NumbersAreThoseOfTheNewText) {
    EXPECT_EQ(LinesOf("@@ -1,5 +1,6 @@\n+new\n a\n b\n-c\n+C\n d\n e\n"), "lines 1, 4 changed");
}

TEST(ChangedLines, LinesInARowAreOneRange) {
    EXPECT_EQ(LinesOf("@@ -2,2 +2,3 @@\n-a\n-b\n+A\n+B\n+C\n"), "lines 2-4 changed");
}

TEST(ChangedLines, OneLineIsOneLine) {
    EXPECT_EQ(LinesOf("@@ -7 +7 @@\n-a\n+b\n"), "line 7 changed");
}

TEST(ChangedLines, LinesThatOnlyGoHaveTheirOldNumbers) {
    EXPECT_EQ(LinesOf("@@ -1,5 +1,3 @@\n a\n-b\n c\n-d\n e\n"), "lines 2, 4 of the old text removed");
}

TEST(ChangedLines, WhatComesAndWhatGoesAreToldApart) {
    EXPECT_EQ(LinesOf("@@ -1,4 +1,4 @@\n-a\n b\n c\n+new\n d\n"),
              "line 3 changed, line 1 of the old text removed");
}

TEST(ChangedLines, EveryHunkCountsFromItsHeader) {
    EXPECT_EQ(LinesOf("@@ -1,2 +1,2 @@\n-a\n+b\n c\n@@ -40,2 +40,2 @@\n c\n-a\n+b\n"), "lines 1, 41 changed");
}

TEST(ChangedLines, LinesThatLookLikeHeadersAreLines) {
    EXPECT_EQ(LinesOf("@@ -1,3 +1,3 @@\n--- a\n+++ b\n @@ -9 +9 @@\n x\n"), "line 1 changed");
}

TEST(ChangedLines, MissingLineFeedIsNoLine) {
    EXPECT_EQ(LinesOf("@@ -1,2 +1,2 @@\n a\n-b\n\\ No newline at end of file\n+b\n"), "line 2 changed");
}

TEST(ChangedLines, NewAndRemovedFilesAreAllLines) {
    EXPECT_EQ(LinesOf("@@ -0,0 +1,2 @@\n+a\n+b\n"), "lines 1-2 changed");
    EXPECT_EQ(LinesOf("@@ -1,2 +0,0 @@\n-a\n-b\n"), "lines 1-2 of the old text removed");
}

TEST(HideQuoted, EveryQuoteGoesAndTheRestStays) {
    Problem problem{"f", 1, 2, "placeholder \"${pw}\" is not \"${pw}\"", "mend it", "${pw}"};
    problem.HideQuoted("text not shown");
    EXPECT_EQ(problem.Describe(), "f:1:2: placeholder \"...\" is not \"...\", text not shown (mend it)");
}

TEST(HideQuoted, QuoteThatLooksLikeWhatTakesItsPlaceEnds) {
    Problem problem{"f", 0, 0, "\"..\"", "mend it", ".."};
    problem.HideQuoted("text not shown");
    EXPECT_EQ(problem.text, "\"...\", text not shown");
}

TEST(HideQuoted, ProblemThatQuotesNothingStays) {
    Problem problem{"f", 0, 0, "is missing", "mend it"};
    problem.HideQuoted("text not shown");
    EXPECT_EQ(problem.Describe(), "f: is missing (mend it)");
}
