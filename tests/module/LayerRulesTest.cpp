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

/// The headers that a file of the rooms below src includes by their path from there.
std::vector<std::string> RoomHeadersOf(const fs::path& file) {
    static const std::regex pattern("^\\s*#\\s*include\\s*\"([^\"]+)\".*");
    std::vector<std::string> headers;
    std::ifstream stream(file);
    std::smatch match;
    for (std::string line; std::getline(stream, line);)
        if (std::regex_match(line, match, pattern)) headers.push_back(match[1]);
    return headers;
}

/// A room of the house, and the rooms whose headers its files may include beside the contract and their own.
struct Room {
    std::string name;
    std::vector<std::string> below;
};

/// Arrows run one way. "deploy/host" below another room stands for that room alone, "text" for all in it.
const std::vector<Room> kRooms = {
    {"posix", {}},
    {"text", {"posix"}},
    {"deploy/host", {"text", "posix"}},
    {"deploy/state", {"deploy/host", "text", "posix"}},
    {"deploy/lists", {"deploy/state", "deploy/host", "text", "posix"}},
    {"deploy/targets", {"deploy/lists", "deploy/state", "deploy/host", "text", "posix"}},
    {"deploy/history", {"deploy/targets", "deploy/lists", "deploy/state", "deploy/host", "text", "posix"}},
    {"deploy/undo", {"deploy/targets", "deploy/lists", "deploy/state", "deploy/host", "text", "posix"}},
    {"deploy/edit",
     {"deploy/history", "deploy/targets", "deploy/lists", "deploy/state", "deploy/host", "text", "posix"}},
    {"deploy/face",
     {"deploy/edit", "deploy/undo", "deploy/history", "deploy/targets", "deploy/lists", "deploy/state",
      "deploy/host", "text", "posix"}},
    {"cli", {"deploy", "text", "posix"}},
};

bool IsIn(const std::string& header, const std::string& room) {
    return header.starts_with(room + "/") && fs::exists(kRoot / "src" / header);
}

bool IsOfTheContract(const std::string& header) {
    return header.starts_with("zet/") && fs::exists(kRoot / "include" / header);
}

std::vector<fs::path> SourcesIn(const fs::path& directory) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        const std::string extension = entry.path().extension();
        if (extension == ".h" || extension == ".cpp") files.push_back(entry.path());
    }
    return files;
}

class RoomTest : public testing::TestWithParam<Room> {};

TEST_P(RoomTest, IncludesOnlyWhatIsBelowIt) {
    const Room& room = GetParam();
    const std::vector<fs::path> files = SourcesIn(kRoot / "src" / room.name);
    ASSERT_FALSE(files.empty());
    for (const fs::path& file : files) {
        for (const std::string& header : RoomHeadersOf(file)) {
            const bool isBelow = std::any_of(room.below.begin(), room.below.end(),
                                             [&](const std::string& below) { return IsIn(header, below); });
            EXPECT_TRUE(IsOfTheContract(header) || IsIn(header, room.name) || isBelow)
                << file << " includes " << header;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(House, RoomTest, testing::ValuesIn(kRooms),
                         [](const testing::TestParamInfo<Room>& info) {
                             std::string name = info.param.name;
                             std::replace(name.begin(), name.end(), '/', '_');
                             return name;
                         });

TEST(LayerRulesTest, EveryRoomIsInTheTable) {
    for (const fs::path& file : SourcesIn(kRoot / "src")) {
        const std::string path = fs::relative(file, kRoot / "src");
        const bool isListed = std::any_of(kRooms.begin(), kRooms.end(), [&](const Room& room) {
            return path.starts_with(room.name + "/");
        });
        EXPECT_TRUE(isListed || path.starts_with("core/") || path.starts_with("interfaces/zet-config/"))
            << path;
    }
}

/// A room, the namespace of what its files declare, and that of the contract where its sources implement
/// that.
struct RoomNamespace {
    std::string room;
    std::string name;
    std::string implemented = "";
};

/// The first one in which a file stands counts.
const std::vector<RoomNamespace> kNamespaces = {
    {"include/zet/deploy", "ZET::Deploy"}, {"include/zet", "ZET"},           {"src/posix", "ZET"},
    {"src/interfaces/zet-config", "ZET"},  {"src/core", "ZET::Core", "ZET"}, {"src/text", "ZET::Text", "ZET"},
    {"src/deploy", "ZET::Deploy"},         {"src/cli", "ZET::Cli"},
};

/// The namespaces of the product in which a file declares something.
Names NamespacesOf(const fs::path& file) {
    static const std::regex pattern("^\\s*(?:inline )?namespace (ZET[A-Za-z:]*) \\{(?!\\}).*");
    Names names;
    std::ifstream stream(file);
    std::smatch match;
    for (std::string line; std::getline(stream, line);)
        if (std::regex_match(line, match, pattern)) names.insert(match[1]);
    return names;
}

Names WithoutThoseOf(const RoomNamespace& room, const fs::path& file) {
    Names names = NamespacesOf(file);
    names.erase(room.name);
    if (file.extension() == ".cpp") names.erase(room.implemented);
    return names;
}

TEST(LayerRulesTest, FilesDeclareInTheNamespaceOfTheirRoom) {
    Names found;
    for (const std::string top : {"include", "src"}) {
        for (const fs::path& file : SourcesIn(kRoot / top)) {
            const std::string path = fs::relative(file, kRoot);
            const auto room =
                std::find_if(kNamespaces.begin(), kNamespaces.end(),
                             [&](const RoomNamespace& each) { return path.starts_with(each.room + "/"); });
            ASSERT_NE(room, kNamespaces.end()) << path;
            EXPECT_EQ(WithoutThoseOf(*room, file), Names()) << path;
            if (NamespacesOf(file).contains(room->name)) found.insert(room->room);
        }
    }
    EXPECT_EQ(found.size(), kNamespaces.size());
}

/// Whether the header leads back to itself; `way` has the headers on the way to it.
bool IsInCircle(const std::string& header, std::vector<std::string>& way, Names& done) {
    if (std::find(way.begin(), way.end(), header) != way.end()) return true;
    const fs::path file = kRoot / (header.starts_with("zet/") ? "include" : "src") / header;
    if (!fs::exists(file) || !done.insert(header).second) return false;
    way.push_back(header);
    for (const std::string& next : RoomHeadersOf(file))
        if (IsInCircle(next, way, done)) return true;
    way.pop_back();
    return false;
}

TEST(LayerRulesTest, NoHeaderIncludesItself) {
    Names done;
    for (const fs::path& file : SourcesIn(kRoot / "src")) {
        if (file.extension() != ".h") continue;
        std::vector<std::string> way;
        EXPECT_FALSE(IsInCircle(fs::relative(file, kRoot / "src"), way, done)) << file;
    }
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

TEST(LayerRulesTest, ExpressionsAreOpenedOnlyWhenTheyAreNeeded) {
    for (const std::string file : {ZET_CORE_FILE, ZET_TOOL_FILE}) {
        for (const std::string& need : NeedsOf(file))
            EXPECT_FALSE(need.starts_with("libpcre2")) << file;
    }
}

/// The files below src that include what the expression finds.
std::set<fs::path> UsersOf(const std::string& header) {
    const std::regex pattern("^\\s*#\\s*include\\s*[<\"]" + header);
    std::set<fs::path> users;
    for (const fs::path& file : SourcesIn(kRoot / "src")) {
        std::ifstream stream(file);
        for (std::string line; std::getline(stream, line);)
            if (std::regex_search(line, pattern)) users.insert(fs::relative(file, kRoot / "src"));
    }
    return users;
}

TEST(LayerRulesTest, ParserOfListsIsCompiledOnce) {
    EXPECT_EQ(UsersOf("toml\\+\\+/"), std::set<fs::path>{"deploy/lists/Toml.h"});
    // The reader of lists and the headers that it is made of have the parser, too.
    EXPECT_EQ(UsersOf("deploy/lists/(Toml|KeyReader|TargetKeys|EditKeys)\\.h"),
              (std::set<fs::path>{"deploy/lists/EditKeys.h", "deploy/lists/KeyReader.h",
                                  "deploy/lists/TargetKeys.h", "deploy/lists/TargetListReader.cpp"}));
}

TEST(LayerRulesTest, ParserOfWordsIsCompiledOnce) {
    EXPECT_EQ(UsersOf("CLI/"), (std::set<fs::path>{"cli/CommandLine.cpp", "cli/Continuations.h",
                                                   "cli/Grammar.h", "cli/OwnWords.h", "cli/WordsTaken.h"}));
    for (const std::string header : {"cli/Continuations.h", "cli/Grammar.h", "cli/WordsTaken.h"})
        EXPECT_EQ(UsersOf(header), std::set<fs::path>{"cli/CommandLine.cpp"}) << header;
    EXPECT_EQ(UsersOf("cli/OwnWords.h"),
              (std::set<fs::path>{"cli/CommandLine.cpp", "cli/Continuations.h", "cli/Grammar.h"}));
}

}  // namespace
}  // namespace ZET
