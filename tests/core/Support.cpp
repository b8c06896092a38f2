#include "Support.h"

#include <grp.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace ZET::Test {

TemporaryDirectory::TemporaryDirectory()
    : m_path((std::filesystem::temp_directory_path() / "zet-XXXXXX").string()) {
    if (::mkdtemp(m_path.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::vector<std::string> TemporaryDirectory::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_path))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

void WriteText(const std::string& path, const std::string& text, mode_t mode) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    ASSERT_TRUE(stream.good()) << path;
    ASSERT_EQ(::chmod(path.c_str(), mode), 0) << path;
}

std::string ReadText(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream.is_open()) << path;
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

struct stat StatusOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

mode_t ModeOf(const std::string& path) {
    return StatusOf(path).st_mode & 07777;
}

bool Exists(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0;
}

std::string ProblemTextOf(const std::string& key, const std::string& value) {
    const auto problem = ProblemOfParam(key, value);
    return problem ? problem->text + " (" + problem->remedy + ")" : "";
}

std::string LoggedBy(const std::function<void()>& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

CZETHost& HostFixture::Start(const std::string& text) {
    WriteText(ConfigFile(), text);
    m_host = std::make_unique<CZETHost>(ConfigFile());
    return *m_host;
}

bool IsRoot() {
    return ::geteuid() == 0;
}

void BecomeSomeUser() {
    if (::setgroups(0, nullptr) != 0 || ::setgid(kSomeGroup) != 0 || ::setuid(kSomeUser) != 0) std::_Exit(99);
}

}  // namespace ZET::Test
