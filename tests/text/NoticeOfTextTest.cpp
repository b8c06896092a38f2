#include "text/NoticeOfText.h"

#include <gtest/gtest.h>

namespace ZET::Text {
namespace {

TEST(NoticeOfTextTest, TheNoticeAtTheTopIsTakenOff) {
    const TextAndNotice found =
        WithoutNotice("# --ZET_CONFIG_COMMENT--\n# text\n# --ZET_COMMENT_END--\nline\n");
    EXPECT_EQ(found.notice, "# --ZET_CONFIG_COMMENT--\n# text\n# --ZET_COMMENT_END--\n");
    EXPECT_EQ(found.text, "line\n");
    EXPECT_EQ(found.noticeLines, 3U);
}

TEST(NoticeOfTextTest, OneThatIsNotClosedOrNotAtTheTopIsNone) {
    for (const char* const text : {"", "line\n", "# --ZET_CONFIG_COMMENT--\nline\n",
                                   "line\n# --ZET_CONFIG_COMMENT--\n# --ZET_COMMENT_END--\n"}) {
        const TextAndNotice found = WithoutNotice(text);
        EXPECT_EQ(found.notice, "");
        EXPECT_EQ(found.text, text);
        EXPECT_EQ(found.noticeLines, 0U);
    }
}

}  // namespace
}  // namespace ZET::Text
