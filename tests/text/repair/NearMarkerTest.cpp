#include "text/repair/NearMarker.h"

#include <gtest/gtest.h>

#include <string>

using ZET::Text::FindGluedMarker;
using ZET::Text::FindNearMarker;
using ZET::Text::Marker;

namespace {

/// The line as it should read; empty for one that is not nearly a marker.
std::string Fixed(const std::string& line) {
    const auto near = FindNearMarker(line);
    return near ? near->line : "";
}

constexpr char kBegin[] = "# ---ZET_BEGIN---";
constexpr char kEnd[] = "# ----ZET_END----";

}  // namespace

TEST(NearMarker, MarkerItselfIsNotNearlyOne) {
    for (const Marker marker : ZET::Text::kMarkers)
        EXPECT_EQ(Fixed(std::string(ZET::Text::MarkerText(marker)) + "x"), "");
}

TEST(NearMarker, IndentedMarkerIsRecognised) {
    EXPECT_EQ(Fixed("  # ---ZET_BEGIN---"), kBegin);
    EXPECT_EQ(Fixed("\t# --ZET_COMMENT_END--\r"), "# --ZET_COMMENT_END--");
}

TEST(NearMarker, OtherNumberOfDashesIsRecognised) {
    EXPECT_EQ(Fixed("# --ZET_BEGIN--"), kBegin);
    EXPECT_EQ(Fixed("# ---ZET_END---"), kEnd);
    EXPECT_EQ(Fixed("# ZET_END----"), kEnd);
    EXPECT_EQ(Fixed("# -------ZET_END"), kEnd);
}

TEST(NearMarker, LostOrOtherCommentSignIsRecognised) {
    EXPECT_EQ(Fixed("---ZET_BEGIN---"), kBegin);
    EXPECT_EQ(Fixed("#---ZET_BEGIN---"), kBegin);
    EXPECT_EQ(Fixed("## ---ZET_BEGIN---"), kBegin);
    EXPECT_EQ(Fixed("; ---ZET_BEGIN---"), kBegin);
    EXPECT_EQ(Fixed("//# ---ZET_BEGIN---"), kBegin);
}

TEST(NearMarker, OtherLetterCaseIsRecognised) {
    EXPECT_EQ(Fixed("# ---zet_begin---"), kBegin);
    EXPECT_EQ(Fixed("# --Zet_Template_Comment--"), "# --ZET_TEMPLATE_COMMENT--");
}

TEST(NearMarker, DashesThatATextProcessorMakesOfTwoAreRecognised) {
    EXPECT_EQ(Fixed("# \u2014-ZET_BEGIN\u2014-"), kBegin);
    EXPECT_EQ(Fixed("# \u2013\u2013ZET_END\u2013\u2013"), kEnd);
    EXPECT_EQ(Fixed("# \u2013PRE-ZET\u2013 kdc=old"), "# --PRE-ZET-- kdc=old");
}

TEST(NearMarker, OneWrongLetterIsRecognised) {
    EXPECT_EQ(Fixed("# ---ZET_BEGN---"), kBegin);
    EXPECT_EQ(Fixed("# ---ZET BEGIN---"), kBegin);
    EXPECT_EQ(Fixed("# --ZET_CONFIG_COMMMENT--"), "# --ZET_CONFIG_COMMENT--");
    EXPECT_EQ(Fixed("# ---ZET_BEGIM---"), kBegin);
}

TEST(NearMarker, TwoWrongLettersAreNot) {
    EXPECT_EQ(Fixed("# ---ZET_BGN---"), "");
}

TEST(NearMarker, ProseAboutMarkersIsNotNearlyOne) {
    EXPECT_EQ(Fixed("# Do not edit data between ZET_BEGIN and ZET_END labels manually"), "");
    EXPECT_EQ(Fixed("# see # ---ZET_BEGIN---"), "");
    EXPECT_EQ(Fixed("ZET_BEGIN"), "");
    EXPECT_EQ(Fixed("# pre zet settings"), "");
    EXPECT_EQ(Fixed("# ---------"), "");
    EXPECT_EQ(Fixed(""), "");
}

TEST(NearMarker, FormerTextIsKeptByteForByte) {
    EXPECT_EQ(Fixed("  # --PRE-ZET--  kdc = old \r"), "# --PRE-ZET--  kdc = old \r");
    EXPECT_EQ(Fixed("# --PRE-ZET--kdc=old"), "# --PRE-ZET-- kdc=old");
    EXPECT_EQ(Fixed("#--pre-zet-- kdc=Old"), "# --PRE-ZET-- kdc=Old");
    EXPECT_EQ(Fixed("# -PRE-ZET--- kdc"), "# --PRE-ZET-- kdc");
    EXPECT_EQ(Fixed("# --PRE-ZET--"), "# --PRE-ZET-- ");
}

TEST(GluedMarker, MarkerBehindOtherTextIsFound) {
    const auto glued = FindGluedMarker("kdc=new# ----ZET_END----");
    ASSERT_TRUE(glued);
    EXPECT_EQ(glued->marker, Marker::BlockEnd);
    EXPECT_EQ(glued->position, 7U);
}

TEST(GluedMarker, MarkerInTheMiddleOfTextIsOnlyAMention) {
    EXPECT_FALSE(FindGluedMarker("a # ----ZET_END---- b"));
    EXPECT_FALSE(FindGluedMarker("# ----ZET_END----"));
}

TEST(GluedMarker, FirstOfTwoIsFound) {
    const auto glued = FindGluedMarker("x# ----ZET_END----# --PRE-ZET-- old");
    ASSERT_TRUE(glued);
    EXPECT_EQ(glued->marker, Marker::BlockEnd);
}

TEST(GluedMarker, FormerLineThatKeepsAFormerLineIsWhole) {
    EXPECT_FALSE(FindGluedMarker("# --PRE-ZET-- # --PRE-ZET-- old"));
    EXPECT_TRUE(FindGluedMarker("# ----ZET_END----# --PRE-ZET-- old"));
}
