#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <sstream>

#include "Support.h"

namespace ZET::Test {
namespace {

class Status : public HostFixture {
  protected:
    std::vector<std::string> Lines() {
        std::ostringstream stream;
        Core().WriteStatus(stream);
        std::istringstream text(stream.str());
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        EXPECT_FALSE(text.str().empty());
        EXPECT_EQ(text.str().back(), '\n');
        return lines;
    }

    /// Reads the lines as the status file format says.
    std::map<std::string, std::string> Entries() {
        std::map<std::string, std::string> entries;
        for (const std::string& line : Lines()) {
            if (line.empty() || line[0] == '#') continue;
            const std::size_t equals = line.find('=');
            EXPECT_NE(equals, std::string::npos) << line;
            EXPECT_TRUE(entries.emplace(line.substr(0, equals), line.substr(equals + 1)).second) << line;
        }
        return entries;
    }
};

TEST_F(Status, HoldsWhatIsSetAndTheDefaults) {
    Start("DOMAIN=example.org\nTICKET_MAX_LIFE= = x\n");
    Core().UpdateParam("SERVER_ID", "7");
    const auto entries = Entries();
    EXPECT_EQ(entries.at("DOMAIN"), "example.org");
    EXPECT_EQ(entries.at("TICKET_MAX_LIFE"), " = x");
    EXPECT_EQ(entries.at("SERVER_ID"), "7");
    EXPECT_EQ(entries.at("REALM"), "EXAMPLE.ORG");
    EXPECT_EQ(entries.at("SERVER"), "");
    EXPECT_EQ(entries.at("ZET_CFG"), ConfigFile());
    EXPECT_EQ(entries.at("ZET_VAR_LIB_DIR"), "/var/lib/zet");
}

TEST_F(Status, HoldsNothingThatIsTheHostsOwn) {
    Start("BIND_PASSWORD=secret\nZET_SECRET=secret\ndomain=secret\n");
    Core().UpdateParam("ANOTHER_PASSWORD", "secret");
    for (const std::string& line : Lines())
        EXPECT_THAT(line, testing::Not(testing::HasSubstr("secret")));
}

TEST_F(Status, EveryEntryIsTheCurrentValueOfItsParameter) {
    Start("DOMAIN=example.org\n");
    for (const auto& [key, value] : Entries()) {
        if (key == "COMMIT_TIME") continue;
        EXPECT_EQ(Core().GetParam(key), value) << key;
    }
}

TEST_F(Status, LinesAreSortedByNameWithTheTimeAmongThem) {
    Start("");
    std::vector<std::string> keys;
    for (const std::string& line : Lines())
        keys.push_back(line.substr(0, line.find('=')));
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
    EXPECT_EQ(std::count(keys.begin(), keys.end(), "COMMIT_TIME"), 1);
}

TEST_F(Status, TimeIsThePresentInUniversalTime) {
    ::setenv("SOURCE_DATE_EPOCH", "0", 1);
    ::setenv("TZ", "Asia/Tokyo", 1);
    ::tzset();
    Start("");
    const std::time_t before = std::time(nullptr);
    const std::string text = Entries().at("COMMIT_TIME");
    const std::time_t after = std::time(nullptr);
    ::unsetenv("SOURCE_DATE_EPOCH");
    ::unsetenv("TZ");
    ::tzset();
    std::tm parts = {};
    const char* end = ::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    ASSERT_NE(end, nullptr) << text;
    EXPECT_EQ(*end, '\0');
    EXPECT_THAT(::timegm(&parts), testing::AllOf(testing::Ge(before), testing::Le(after)));
}

TEST_F(Status, TimeOfTheFileIsNotTakenForThePresent) {
    Start("COMMIT_TIME=1970\n");
    EXPECT_NE(Entries().at("COMMIT_TIME"), "1970");
}

TEST_F(Status, IsFlushed) {
    Start("DOMAIN=1\n");
    std::ofstream stream(m_directory / "status");
    Core().WriteStatus(stream);
    EXPECT_THAT(ReadText(m_directory / "status"), testing::StartsWith("COMMIT_TIME="));
}

TEST_F(Status, FailedStreamIsAnError) {
    Start("");
    std::ostringstream stream;
    stream.setstate(std::ios_base::badbit);
    EXPECT_EQ(MessageOf<EZETError>([&] { Core().WriteStatus(stream); }),
              "Failed to write the status: the stream is broken.");
}

TEST_F(Status, FullDeviceIsAnError) {
    Start("");
    std::ofstream stream("/dev/full");
    ASSERT_TRUE(stream.is_open());
    EXPECT_EQ(MessageOf<EZETError>([&] { Core().WriteStatus(stream); }),
              "Failed to write the status: No space left on device.");
}

TEST_F(Status, StreamThatThrowsIsTheSameError) {
    Start("");
    std::ofstream stream("/dev/full");
    stream.exceptions(std::ios_base::failbit | std::ios_base::badbit);
    EXPECT_EQ(MessageOf<EZETError>([&] { Core().WriteStatus(stream); }),
              "Failed to write the status: No space left on device.");
}

}  // namespace
}  // namespace ZET::Test
