#include "deploy/targets/ListedLines.h"

#include <gmock/gmock.h>

namespace ZET::Deploy {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

TEST(ListedLines, WhatIsRememberedIsReadBack) {
    const std::vector<RememberedLine> lines = {{Role::Server, "param a", "a=1"},
                                               {Role::Client, "pattern ^\tb  =", ""}};
    const std::vector<RememberedLine> read = RememberedIn(TextOf(lines));
    ASSERT_THAT(read, SizeIs(2));
    EXPECT_EQ(read[0].role, Role::Server);
    EXPECT_EQ(read[0].selector, "param a");
    EXPECT_EQ(read[0].line, "a=1");
    EXPECT_EQ(read[1].role, Role::Client);
    EXPECT_EQ(read[1].selector, "pattern ^\tb  =");
    EXPECT_EQ(read[1].line, "");
}

TEST(ListedLines, WhatIsNoMemoryIsNone) {
    EXPECT_THAT(RememberedIn(""), IsEmpty());
    EXPECT_THAT(RememberedIn("server\n"), IsEmpty());
    EXPECT_THAT(RememberedIn(std::string("nobody\0param a\0a=1\n", 19)), IsEmpty());
}

TEST(ListedLines, SelectorTellsParametersFromPatterns) {
    ListedEdit edit;
    edit.param = "a";
    EXPECT_EQ(SelectorOf(edit), "param a");
    edit.param.clear();
    edit.pattern = "a";
    EXPECT_EQ(SelectorOf(edit), "pattern a");
}

}  // namespace
}  // namespace ZET::Deploy
