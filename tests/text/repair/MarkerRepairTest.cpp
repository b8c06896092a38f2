#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "text/repair/MarkerDamage.h"
#include "zet/ZETFormat.h"

namespace ZET::Text {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kFormer[] = "# --PRE-ZET-- kdc=old\n";
constexpr char kBegin[] = "# ---ZET_BEGIN---\n";
constexpr char kNew[] = "kdc=new\n";
constexpr char kEnd[] = "# ----ZET_END----\n";
constexpr char kNoticeBegin[] = "# --ZET_CONFIG_COMMENT--\n";
constexpr char kNoticeEnd[] = "# --ZET_COMMENT_END--\n";
const std::string kNoticeText = std::string(ZETEditedNotice) + "\n";

Diagnosis Diagnose(const std::string& text, std::optional<bool> hadCarriageReturns = std::nullopt) {
    static const NoticeTexts noticeTexts;
    return DiagnoseMarkers(text, noticeTexts, hadCarriageReturns);
}

/// "LINE kind", and "?" behind it for what is ambiguous.
std::vector<std::string> KindsIn(const std::string& text) {
    std::vector<std::string> kinds;
    for (const MarkerDamage& damage : Diagnose(text).damages)
        kinds.push_back(std::to_string(damage.line) + " " + damage.kind + (damage.IsAmbiguous() ? "?" : ""));
    return kinds;
}

std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line;
    return text;
}

std::string WithCarriageReturns(const std::string& text) {
    std::string converted;
    for (const char c : text)
        converted += c == '\n' ? "\r\n" : std::string(1, c);
    return converted;
}

/// Every text of so many of the lines.
void ForEveryText(const std::vector<std::string>& lines, std::size_t length,
                  const std::function<void(const std::string& text)>& check) {
    std::size_t count = 1;
    for (std::size_t i = 0; i < length; ++i)
        count *= lines.size();
    for (std::size_t code = 0; code < count && !testing::Test::HasFatalFailure(); ++code) {
        std::string text;
        for (std::size_t i = 0, rest = code; i < length; ++i, rest /= lines.size())
            text += lines[rest % lines.size()];
        check(text);
    }
}

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

/// A second look finds nothing more to repair, and nothing that somebody wrote is gone.
void ExpectLastingRepair(const std::string& text, std::optional<bool> hadCarriageReturns) {
    const Diagnosis first = Diagnose(text, hadCarriageReturns);
    const Diagnosis second = Diagnose(first.repaired, hadCarriageReturns);
    ASSERT_EQ(second.repaired, first.repaired) << text;
    for (const MarkerDamage& damage : second.damages)
        ASSERT_TRUE(damage.IsAmbiguous()) << text << damage.text;
    for (const char* own : {"kdc=new", "kdc=old", "c=3", "c=4", "c=5", "own"})
        ASSERT_GE(CountOf(first.repaired, own), CountOf(text, own)) << text;
}

const std::vector<std::string> kLines = {kFormer,
                                         kBegin,
                                         kNew,
                                         kEnd,
                                         "\n",
                                         "  # ---ZET_BEGIN---\n",
                                         " # ----ZET_END----\n",
                                         "own# ----ZET_END----\n",
                                         kNoticeBegin,
                                         kNoticeEnd};

}  // namespace

TEST(MarkerRepair, EveryTextIsRepairedToOneThatNeedsNoOtherRepair) {
    ForEveryText(kLines, 5, [](const std::string& text) { ExpectLastingRepair(text, std::nullopt); });
}

TEST(MarkerRepair, TextBehindMarkersIsNeverDropped) {
    std::vector<std::string> lines = kLines;
    for (const char* line : {"# ---ZET_BEGIN--- c=3\n", "# ----ZET_END---- c=4\n",
                             "# --ZET_COMMENT_END--c=5\n", "# --ZET_CONFIG_COMMENT-- c=3\n"})
        lines.emplace_back(line);
    ForEveryText(lines, 4, [](const std::string& text) { ExpectLastingRepair(text, std::nullopt); });
}

TEST(MarkerRepair, OneRepairIsEnoughWhateverTheLineEnds) {
    std::vector<std::string> lines = kLines;
    lines.emplace_back("own\n");
    for (const std::optional<bool>& had :
         {std::optional<bool>(), std::optional(true), std::optional(false)}) {
        ForEveryText(lines, 3, [&](const std::string& text) {
            std::string converted = WithCarriageReturns(text);
            ExpectLastingRepair(converted, had);
            converted.pop_back();  // the last line has no line end, but a carriage return
            ExpectLastingRepair(converted, had);
            converted.pop_back();
            ExpectLastingRepair(converted, had);
        });
    }
}

TEST(MarkerRepair, LastLineWithoutLineEndIsRepairedWithTheOthers) {
    const std::string block = Joined({kFormer, kBegin, kNew, "# ----ZET_END----"});
    EXPECT_EQ(Diagnose(WithCarriageReturns(block), false).repaired, block);
    EXPECT_EQ(Diagnose(WithCarriageReturns(block)).repaired, WithCarriageReturns(block));
}

TEST(MarkerRepair, DoubledMarkerWithTextBehindItIsAmbiguous) {
    const std::string before = Joined({kBegin, kNew, kEnd});
    EXPECT_THAT(KindsIn(before + "# ----ZET_END---- c=3\n"),
                ElementsAre("4 text-after-marker?", "4 doubled-end?"));
    EXPECT_THAT(KindsIn(Joined({kBegin, "# ---ZET_BEGIN--- c=3\n", kNew, kEnd})),
                ElementsAre("2 text-after-marker?", "2 doubled-begin?"));
    EXPECT_THAT(KindsIn(Joined({kNoticeBegin, kNoticeText, kNoticeEnd, "# --ZET_COMMENT_END-- c=3\n"})),
                ElementsAre("8 text-after-marker?", "8 doubled-end?"));
    const std::string notice =
        Joined({kNoticeBegin, "# --ZET_CONFIG_COMMENT-- c=3\n", kNoticeText, kNoticeEnd});
    EXPECT_EQ(Diagnose(notice).repaired, notice);
}

TEST(MarkerRepair, SecondNoticeIsTakenOutOnlyWithTheSystemsOwnText) {
    const std::string notice = Joined({kNoticeBegin, kNoticeText, kNoticeEnd});
    EXPECT_EQ(Diagnose(notice + "own\n" + notice).repaired, notice + "own\n");
    for (const char* line : {"# --ZET_COMMENT_END-- c=3\n", "c=3\n# --ZET_COMMENT_END--\n"}) {
        const std::string text = Joined({kNoticeBegin, kNoticeText, line});
        EXPECT_EQ(Diagnose(text + "own\n" + text).repaired, text + "own\n" + text);
    }
}

TEST(MarkerRepair, EmptyBlockIsAmbiguous) {
    EXPECT_THAT(KindsIn(Joined({"x=1\n", kBegin, kEnd})), ElementsAre("2 empty-block?"));
    EXPECT_THAT(KindsIn(Joined({kFormer, kBegin, kEnd, "x=1\n"})), ElementsAre("2 empty-block?"));
    const Diagnosis diagnosis = Diagnose(Joined({"x=1\n", kBegin, kEnd, "own\n"}));
    ASSERT_EQ(diagnosis.damages.size(), 1u);
    EXPECT_THAT(diagnosis.damages[0].remedies,
                ElementsAre("put the begin marker before line 1, if that line is the system's",
                            "put the end marker after line 4, if that one is",
                            "write the block's line between the markers",
                            "take both markers out, if it is not wanted any more"));
}

TEST(MarkerRepair, FormerLineOfAnEmptyBlockIsToComeBack) {
    const Diagnosis diagnosis = Diagnose(Joined({"x=1\n", kFormer, kBegin, kEnd, "own\n"}));
    ASSERT_EQ(diagnosis.damages.size(), 1u);
    EXPECT_THAT(diagnosis.damages[0].remedies,
                ElementsAre("put the end marker after line 5, if that line is the system's",
                            "write the block's line between the markers",
                            "take both markers out, and bring back the former line in line 2"));
}

TEST(MarkerRepair, LineOfTheSystemIsNotTakenForThatOfAnEmptyBlock) {
    const Diagnosis diagnosis = Diagnose(Joined({kBegin, kEnd, kFormer, kBegin, "own\n", kEnd}));
    ASSERT_EQ(diagnosis.damages.size(), 1u);
    EXPECT_THAT(diagnosis.damages[0].remedies,
                ElementsAre("write the block's line between the markers",
                            "take both markers out, if it is not wanted any more"));
}

TEST(MarkerRepair, BlockOfAnEmptyLineIsWhole) {
    EXPECT_THAT(KindsIn(Joined({kFormer, kBegin, "\n", kEnd})), IsEmpty());
}

TEST(MarkerRepair, BlockWithASecondLineIsAmbiguous) {
    EXPECT_THAT(KindsIn(Joined({kFormer, kBegin, kNew, "own\n", kEnd})),
                ElementsAre("2 several-lines-in-block?"));
}

TEST(MarkerRepair, LineThatIsNotOfTheNoticeIsToldInIt) {
    EXPECT_THAT(KindsIn(Joined({kNoticeBegin, kNoticeText, "# own\n", kNoticeEnd})),
                ElementsAre("7 foreign-line-in-notice?"));
    EXPECT_THAT(KindsIn(Joined({kNoticeBegin, "# own\n", kNoticeText, kNoticeEnd})),
                ElementsAre("2 foreign-line-in-notice?"));
    EXPECT_THAT(KindsIn(Joined({kNoticeBegin, "# in another language\n", "own\n", kNoticeEnd})),
                ElementsAre("3 foreign-line-in-notice?"));
    EXPECT_THAT(KindsIn(Joined({kNoticeBegin, "# in another language\n", "\n", kNoticeEnd})), IsEmpty());
}

}  // namespace ZET::Text
