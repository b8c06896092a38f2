#include "text/repair/TextToEdit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include "text/repair/MarkerDamage.h"

namespace ZET::Text {
namespace {

constexpr char kBlock[] = "# --PRE-ZET-- kdc=old\n# ---ZET_BEGIN---\nkdc=new\n# ----ZET_END----\n";

const NoticeTexts& Texts() {
    static const NoticeTexts texts;
    return texts;
}

/// "LINE kind", or nothing.
std::string Found(const std::string& text, const NoticeTexts* noticeTexts = nullptr) {
    const auto damage = FindDamage(text, noticeTexts);
    return damage ? std::to_string(damage->line) + " " + damage->kind : "";
}

TEST(SoundBlocks, TextWithoutMarkersIsSound) {
    for (const char* text : {"", "a=1", "a=1\n", "\n\n", "# --\n# ---------\n--option\n- item -\n",
                             "# lines like # ---ZET_BEGIN--- are marks\n", "\xe2\x80\x94\xe2\x80\x94 a\n"})
        EXPECT_EQ(Found(text), "") << text;
}

TEST(SoundBlocks, BlocksAsTheSystemWritesThemAreSound) {
    const std::string block = kBlock;
    EXPECT_EQ(Found(block), "");
    EXPECT_EQ(Found("a\n" + block + block + "\n# ---ZET_BEGIN---\n\n# ----ZET_END----"), "");
}

TEST(SoundBlocks, FormerLineWithoutItsBlockIsSound) {
    EXPECT_EQ(Found("# --PRE-ZET-- a=1\nb=2\n# --PRE-ZET-- b=1\n# --PRE-ZET-- c=1\n"), "");
}

TEST(SoundBlocks, BlanksBehindAMarkerAreSound) {
    EXPECT_EQ(Found("# ---ZET_BEGIN--- \nkdc=new\n# ----ZET_END----\r\n"), "");
    // A closer look for another reason comes to the same.
    EXPECT_EQ(Found("# like # ---ZET_BEGIN---\n# ---ZET_BEGIN--- \nkdc=new\n# ----ZET_END----\r\n"), "");
}

TEST(SoundBlocks, DamageIsNamedByItsFirstLine) {
    EXPECT_EQ(Found("a\n# ---ZET_BEGIN---\nb\n"), "2 begin-without-end");
    EXPECT_EQ(Found("# --PRE-ZET-- x\na\n# ----ZET_END----\n"), "3 stray-end");
    EXPECT_EQ(Found("# ---ZET_BEGIN---\n# ---ZET_BEGIN---\nb\n# ----ZET_END----\n"), "2 doubled-begin");
    EXPECT_EQ(Found("# ---ZET_BEGIN---\n# ----ZET_END----\nb\n"), "1 empty-block");
    EXPECT_EQ(Found("# ---ZET_BEGIN---\nb\nc\n# ----ZET_END----\n"), "1 several-lines-in-block");
    EXPECT_EQ(Found("# ---ZET_BEGIN---\nb\n# ----ZET_END---- c=3\n"), "3 text-after-marker");
    EXPECT_EQ(Found("x\n  # ---ZET_BEGIN---\nb\n  # ----ZET_END----\n"), "2 hand-edited-marker");
    EXPECT_EQ(Found(std::string("x") + kBlock), "1 joined-lines");
    EXPECT_EQ(Found("# ---ZET_BEGIN---\nb# --PRE-ZET-- c=3\n# ----ZET_END----\n"), "2 joined-lines");
}

TEST(SoundBlocks, NoticeMattersOnlyToWhatTakesItOut) {
    const std::string notice = "# --ZET_CONFIG_COMMENT--\n# text\na=1\n";
    EXPECT_EQ(Found(notice), "");
    EXPECT_EQ(Found(notice, &Texts()), "1 notice-without-end");
    EXPECT_EQ(Found(notice + "# --ZET_COMMENT_END--\n", &Texts()), "3 foreign-line-in-notice");
    EXPECT_EQ(Found("# --ZET_COMMENT_END--\na=1\n", &Texts()), "");
}

/// The quick look through a text must not be content with what a diagnosis would find.
TEST(SoundBlocks, NothingIsOverlookedThatADiagnosisTells) {
    const std::vector<std::string> lines = {"# --PRE-ZET-- kdc=old\n",
                                            "# ---ZET_BEGIN---\n",
                                            "kdc=new\n",
                                            "# ----ZET_END----\n",
                                            "# ----ZET_END---- c=3\n",
                                            "  \"# ---ZET-BEGIN---\"\n",
                                            "own# ----ZET_END----\n",
                                            "own# --PRE-ZET-- kdc=old\n",
                                            "zet_end --\n",
                                            "\xe2\x80\x94PRE\xe2\x80\x94ZET\xe2\x80\x94 kdc=old\n",
                                            "# --ZET_CONFIG_COMMENT--\n",
                                            "# --ZET_COMMENT_END--\n"};
    std::size_t damaged = 0;
    for (std::size_t code = 0; code < 12 * 12 * 12 * 12; ++code) {
        std::string text;
        for (std::size_t rest = code, i = 0; i < 4; ++i, rest /= lines.size())
            text += lines[rest % lines.size()];
        const Diagnosis diagnosis = DiagnoseMarkers(text, Texts(), std::nullopt);
        const auto tells = [&](DamagedRegions regions) {
            return std::any_of(diagnosis.damages.begin(), diagnosis.damages.end(),
                               [&](const MarkerDamage& damage) { return damage.regions == regions; });
        };
        const bool ofBlocks = tells(DamagedRegions::Blocks);
        ASSERT_EQ(FindDamage(text).has_value(), ofBlocks) << text;
        ASSERT_EQ(FindDamage(text, &Texts()).has_value(), ofBlocks || tells(DamagedRegions::Notices)) << text;
        damaged += ofBlocks;
    }
    EXPECT_GT(damaged, 1000u);
}

double SecondsFor(const std::function<void()>& work) {
    const std::clock_t begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

TEST(SoundBlocks, LookGrowsWithTheTextAndNoFaster) {
    constexpr int kCount = 80'000;
    for (const char* part :
         {kBlock, "own# ----ZET_END----\nx\n", "x # --ZET_CONFIG_COMMENT--\ny\n", " # ---ZET_BEGIN---\n",
          "# ----ZET_END---- # ----ZET_END----", "x# ---ZET_BEGIN---", "# --ZET_CONFIG_COMMENT--\n",
          "# --PRE-ZET-- # --PRE-ZET-- "}) {
        std::string text;
        for (int i = 0; i < kCount; ++i)
            text += part;
        EXPECT_LT(SecondsFor([&] { FindDamage(text, &Texts()); }), 5.0) << part;
    }
}

}  // namespace
}  // namespace ZET::Text
