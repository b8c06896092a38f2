#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <stdexcept>
#include <vector>

#include "LoadedModule.h"

namespace ZET {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

/// One line `#include` of a part of the house.
struct Include {
    std::string file;
    std::string header;
    bool isQuoted;
};

const fs::path kRoot = ZET_SOURCE_DIR;

std::vector<Include> IncludesOf(const std::string& part) {
    static const std::regex pattern("^\\s*#\\s*include\\s*([<\"])([^>\"]+)[>\"].*");
    std::vector<Include> includes;
    for (const auto& entry : fs::directory_iterator(kRoot / part)) {
        const std::string extension = entry.path().extension();
        if (extension != ".h" && extension != ".cpp") continue;
        std::ifstream stream(entry.path());
        std::smatch match;
        for (std::string line; std::getline(stream, line);)
            if (std::regex_match(line, match, pattern))
                includes.push_back({entry.path().filename(), match[2], match[1] == "\""});
    }
    // A rule that is held against nothing holds nothing.
    if (includes.empty()) throw std::runtime_error("no includes found in " + part);
    return includes;
}

bool IsPublic(const std::string& header) {
    return header.starts_with("zet/") && header.find('/', 4) == std::string::npos &&
           fs::exists(kRoot / "include" / header);
}

/// Its own headers stand in the part itself and are named without a path.
bool IsOwn(const std::string& part, const std::string& header) {
    return header.find('/') == std::string::npos && fs::exists(kRoot / part / header);
}

/// The room of small headers is open to all that run on the system.
bool IsPosix(const std::string& header) {
    return header.starts_with("posix/") && fs::exists(kRoot / "src" / header);
}

bool IsStandard(const std::string& header) {
    return header.find_first_of("./") == std::string::npos;
}

class PartTest : public testing::TestWithParam<std::string> {};

TEST_P(PartTest, IncludesOnlyItsOwnAndThePublicHeadersByName) {
    const std::vector<Include> includes = IncludesOf(GetParam());
    EXPECT_FALSE(includes.empty());
    for (const Include& each : includes) {
        const std::string& header = each.header;
        if (each.isQuoted) {
            EXPECT_TRUE(IsPublic(header) || IsOwn(GetParam(), header) ||
                        (GetParam() != "include/zet" && IsPosix(header)))
                << each.file << " includes " << header;
        } else {
            EXPECT_FALSE(header.starts_with("zet/") || fs::exists(kRoot / GetParam() / header) ||
                         fs::exists(kRoot / "src" / header))
                << each.file << " includes <" << header << ">";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(House, PartTest,
                         testing::Values("src/core", "src/interfaces/zet-config", "src/posix", "include/zet"),
                         [](const testing::TestParamInfo<std::string>& info) {
                             std::string name = info.param;
                             std::replace_if(
                                 name.begin(), name.end(), [](char c) { return !std::isalnum(c); }, '_');
                             return name;
                         });

TEST(LayerRulesTest, ModuleIncludesNoLibraryAndNothingOfTheReferenceCoreAlone) {
    const Names system = {"errno.h",    "fcntl.h",     "libintl.h", "limits.h", "sys/mman.h",
                          "sys/stat.h", "sys/types.h", "sys/uio.h", "unistd.h"};
    for (const Include& each : IncludesOf("src/interfaces/zet-config")) {
        EXPECT_NE(each.header, "zet/ZETHost.h") << each.file;
        EXPECT_TRUE(each.isQuoted || IsStandard(each.header) || system.contains(each.header))
            << each.file << " includes <" << each.header << ">";
    }
}

TEST(LayerRulesTest, PublicHeadersIncludeOnlyEachOtherAndTheStandardLibrary) {
    for (const Include& each : IncludesOf("include/zet"))
        EXPECT_TRUE(each.isQuoted ? IsPublic(each.header) : IsStandard(each.header))
            << each.file << " includes " << each.header;
}

TEST(LayerRulesTest, SmallHeadersNeedOnlyEachOtherAndTheSystem) {
    for (const Include& each : IncludesOf("src/posix"))
        EXPECT_TRUE(!each.isQuoted || IsPosix(each.header)) << each.file << " includes " << each.header;
    for (const auto& entry : fs::directory_iterator(kRoot / "src/posix"))
        EXPECT_EQ(entry.path().extension(), ".h") << entry.path();
}

TEST(LayerRulesTest, NothingIsLinkedToTheModule) {
    for (const std::string file : {ZET_CORE_FILE, ZET_TOOL_FILE}) {
        ASSERT_TRUE(fs::exists(file)) << file << " is not built";
        for (const std::string& need : NeedsOf(file))
            EXPECT_FALSE(need.starts_with("libzet-config")) << file;
    }
}

TEST(LayerRulesTest, ParserOfListsIsOnlyCompiledIn) {
    for (const std::string file : {ZET_CORE_FILE, ZET_TOOL_FILE}) {
        for (const std::string& need : NeedsOf(file))
            EXPECT_FALSE(need.starts_with("libtomlplusplus")) << file;
    }
}

TEST(LayerRulesTest, ParserOfListsIsCompiledOnce) {
    std::vector<std::string> users;
    for (const std::string part : {"deploy/host", "deploy/state", "deploy/targets", "deploy/edit", "cli",
                                   "cli/commands", "text", "core"}) {
        for (const Include& each : IncludesOf("src/" + part)) {
            if (each.header == "deploy/targets/Toml.h") users.push_back(each.file);
            EXPECT_TRUE(!each.header.starts_with("toml++/") || each.file == "Toml.h") << each.file;
        }
    }
    EXPECT_EQ(users, std::vector<std::string>{"TargetListReader.cpp"});
}

}  // namespace
}  // namespace ZET
