#include "deploy/state/ParameterCheck.h"

#include <gtest/gtest.h>

#include "zet/ZETHost.h"

namespace ZET::Deploy {
namespace {

TEST(ParameterCheck, LinesOfParametersAreRead) {
    const std::vector<GivenParameter> given = GivenParameters("# a=1\n\n  DOMAIN=x=y \nREALM=\r\n");
    ASSERT_EQ(given.size(), 2u);
    EXPECT_EQ(given[0].line, 3);
    EXPECT_EQ(given[0].name, "DOMAIN");
    EXPECT_EQ(given[0].value, "x=y ");
    EXPECT_EQ(given[0].column, 10);
    EXPECT_EQ(given[1].name, "REALM");
    EXPECT_EQ(given[1].value, "\r");
}

TEST(ParameterCheck, NearNameIsFound) {
    std::vector<std::string> known;
    for (const ZETParameter& parameter : KnownParameters())
        known.push_back(parameter.name);
    EXPECT_EQ(NearestName("TICKET_MAX_LIVE", known), "TICKET_MAX_LIFE");
    EXPECT_EQ(NearestName("RAELM", known), "REALM");
    EXPECT_EQ(NearestName("DOMAINS", known), "DOMAIN");
    EXPECT_EQ(NearestName("NTP_SERVER", known), "");
    EXPECT_EQ(NearestName("ZET_CONFIG_DIR", known), "");
}

TEST(ParameterCheck, QuotesWithACommentBehindAreSeen) {
    for (const char* value : {"\"x\" # c", "'x y'\t#c", "\"\" #"})
        EXPECT_TRUE(IsQuotedWithComment(value)) << value;
    for (const char* value : {"", "x # c", "\"x\"", "\"x\"#c", "\"x # c", "\"x\" y", "\"x\" "})
        EXPECT_FALSE(IsQuotedWithComment(value)) << value;
}

}  // namespace
}  // namespace ZET::Deploy
