#include "text/RegionScan.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "text/Lines.h"
#include "zet/ZETFormat.h"

namespace ZET::Text {
namespace {

const std::string kNotice =
    std::string(ZETNoticeMarker) + "\n" + ZETEditedNotice + "\n" + ZETCommentEndMarker + "\n";

/// A text of few kinds of lines, many of which are a block's, or nearly so.
std::string MadeText(std::minstd_rand& random) {
    static const std::vector<std::string> lines = {
        "\n",
        "a=b\n",
        "no end",
        "a-b\n",
        "\xe2\x80\x94 a\n",
        "\xe2\x80\x94\xe2\x80\x94ZET_END\xe2\x80\x94\n",
        "ZET_BEGIN\n",
        "# --PRE-ZET-- a=c\n",
        "# --PRE-ZET-- a-c\n",
        "# --PRE-ZET-- \n",
        "# ---ZET_BEGIN---\n",
        "# ---ZET_BEGIN--- \n",
        "# ---ZET_BEGIN---",
        "# ----ZET_END----\n",
        "# ----ZET_END----\r\n",
        "# ---ZET_BEGIN---\na=b\n# ----ZET_END----\n",
        "# --PRE-ZET-- a=c\n# ---ZET_BEGIN---\na=b\n# ----ZET_END----\n",
        "# --PRE-ZET-- a=c # ---ZET_BEGIN---\na=b\n# ----ZET_END----\n",
        "# ---ZET_BEGIN---\n- a\n# ----ZET_END----\n",
        "# ---ZET_BEGIN---\na\nb\n# ----ZET_END----\n",
        "# --ZET_COMMENT_END--\n",
        "# --ZET_TEMPLATE_COMMENT--\n",
        kNotice};
    std::string text;
    for (std::size_t count = random() % 8; count > 0; --count)
        text += lines[random() % lines.size()];
    return text;
}

struct Verdict {
    bool isSound = false;
    bool isSpotless = false;
    bool hasRegions = false;
    bool operator==(const Verdict&) const = default;
};

/// Of a text in pieces of up to that many lines.
Verdict VerdictOn(std::string_view text, std::size_t linesOfPiece, const NoticeTexts* noticeTexts) {
    RegionScan scan(noticeTexts);
    while (!text.empty()) {
        const std::string_view all = text;
        for (std::size_t i = 0; i < linesOfPiece && !text.empty(); ++i)
            TakeLine(text);
        scan.Take(all.substr(0, all.size() - text.size()));
    }
    return {scan.IsSound(), scan.IsSpotless(), scan.HasRegions()};
}

/// In pieces of one line, no block is taken at once, and each line is counted.
TEST(RegionScan, ManyLinesAtOnceAreWhatTheyAreOneByOne) {
    const NoticeTexts texts;
    std::minstd_rand random;  // NOLINT: the same texts in each run
    std::size_t sound = 0;
    for (int round = 0; round < 100'000; ++round) {
        const std::string text = MadeText(random);
        for (const NoticeTexts* noticeTexts : {static_cast<const NoticeTexts*>(nullptr), &texts}) {
            const Verdict wanted = VerdictOn(text, 1, noticeTexts);
            ASSERT_EQ(VerdictOn(text, 1000, noticeTexts), wanted) << text;
            ASSERT_EQ(VerdictOn(text, 2 + random() % 4, noticeTexts), wanted) << text;
            sound += wanted.isSound && wanted.hasRegions ? 1 : 0;
        }
    }
    EXPECT_GT(sound, 10'000U);
}

TEST(RegionScan, LineBetweenAFormerLineAndItsBlockIsSeen) {
    const NoticeTexts texts;
    const std::string former = "# --PRE-ZET-- a=c\n";
    const std::string block = "# ---ZET_BEGIN---\na=b\n# ----ZET_END----\n";
    EXPECT_TRUE(VerdictOn(former + block, 1000, &texts).isSpotless);
    for (const char* between : {"\n", "x\n", "x\ny\n"})
        EXPECT_FALSE(VerdictOn(former + between + block, 1000, &texts).isSpotless) << between;
}

TEST(RegionScan, BlockOfSeveralLinesIsNotSound) {
    for (const char* inside : {"", "a\nb\n", "\n\n", "a\nb\nc\n"})
        EXPECT_FALSE(
            VerdictOn("# ---ZET_BEGIN---\n" + std::string(inside) + "# ----ZET_END----\n", 1000, nullptr)
                .isSound)
            << inside;
}

}  // namespace
}  // namespace ZET::Text
