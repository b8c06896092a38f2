#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/RegionScan.h"
#include "text/repair/MarkerDamage.h"
#include "zet/ZETFormat.h"

namespace ZET::Text {
namespace {

const std::string kNotice =
    std::string(ZETNoticeMarker) + "\n" + ZETEditedNotice + "\n" + ZETCommentEndMarker + "\n";

/// What a hand could leave of a file of the system's.
const std::vector<std::string> kPieces = {
    "",
    "\n",
    "a=b\n",
    "a=b\r\n",
    "- a list\n",
    "# --PRE-ZET-- a=c\n",
    "# --PRE-ZET-- a=c\n# ---ZET_BEGIN---\na=b\n# ----ZET_END----\n",
    "\n# ---ZET_BEGIN---\na=b\n# ----ZET_END----\n",
    "# ---ZET_BEGIN---\n",
    "# ----ZET_END----\n",
    "# ----ZET_END---- \n",
    "#---ZET_BEGIN---\n",
    "a=b # ---ZET_BEGIN---\n",
    "# --ZET_COMMENT_END--\n",
    "# --ZET_TEMPLATE_COMMENT--\n",
    kNotice,
    kNotice + "# --PRE-ZET-- a=c\r\n# ---ZET_BEGIN---\r\na=b\r\n# ----ZET_END----\r\n",
};

bool IsSpotless(const std::string& text, const NoticeTexts& noticeTexts) {
    RegionScan scan(&noticeTexts);
    scan.Take(text);
    return scan.IsSpotless();
}

TEST(Spotless, TextsOfTheSystemAre) {
    const NoticeTexts noticeTexts;
    for (const std::string& text :
         {std::string(), std::string("a=b\n"), kNotice + "a=b\n" + kPieces[6] + "c\n" + kPieces[7],
          "\n" + kNotice + kPieces[6] + kPieces[6]})
        EXPECT_TRUE(IsSpotless(text, noticeTexts)) << text;
}

/// Of each text of four pieces: a diagnosis, which looks more closely, tells of nothing.
TEST(Spotless, HasNoDamage) {
    const NoticeTexts noticeTexts;
    const std::size_t count = kPieces.size();
    std::size_t spotless = 0;
    for (std::size_t number = 0; number < count * count * count * count; ++number) {
        std::string text;
        for (std::size_t rest = number, i = 0; i < 4; ++i, rest /= count)
            text += kPieces[rest % count];
        if (!IsSpotless(text, noticeTexts)) continue;
        ++spotless;
        for (const std::optional<bool> hadCarriageReturns : {std::optional<bool>(), std::optional(false)})
            ASSERT_TRUE(DiagnoseMarkers(text, noticeTexts, hadCarriageReturns).damages.empty()) << text;
    }
    EXPECT_GT(spotless, 1000U);
}

}  // namespace
}  // namespace ZET::Text
