#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Player.h"
#include "ScenarioBytes.h"

namespace ZET {
namespace {

std::vector<std::filesystem::path> FilesOf(const std::string& corpus) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(std::string(ZET_FUZZ_CORPUS) + "/" + corpus))
        files.push_back(entry.path());
    return files;
}

std::string BytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(CorpusReplay, EverySequenceThatTheFuzzerStartsFromRunsAsInThePlainEngine) {
    const auto files = FilesOf("engines");
    ASSERT_FALSE(files.empty());
    for (const auto& path : files) {
        const std::string bytes = BytesOf(path);
        const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
        EXPECT_EQ(Difference(ScenarioFromBytes(data, bytes.size())), "") << path;
    }
}

TEST(CorpusReplay, EveryTextThatTheFuzzerStartsFromIsWrittenBackByteForByte) {
    const auto files = FilesOf("identity");
    ASSERT_FALSE(files.empty());
    for (const auto& path : files)
        EXPECT_EQ(TextWrittenBack(BytesOf(path)), BytesOf(path)) << path;
}

}  // namespace
}  // namespace ZET
