#ifndef ZET_TESTS_CORE_SUPPORT_H
#define ZET_TESTS_CORE_SUPPORT_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "zet/ZETErrors.h"
#include "zet/ZETHost.h"

namespace ZET::Test {

/// A temporary directory for a test, removed with its contents.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& Path() const { return m_path; }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

    /// The names in it, sorted.
    std::vector<std::string> Names() const;

  private:
    std::string m_path;
};

void WriteText(const std::string& path, const std::string& text, mode_t mode = 0644);
std::string ReadText(const std::string& path);
struct stat StatusOf(const std::string& path);
mode_t ModeOf(const std::string& path);
bool Exists(const std::string& path);

/// What `action` writes to standard error.
std::string LoggedBy(const std::function<void()>& action);

/// The problem with the parameter, and the remedy in parentheses; empty if there is none.
std::string ProblemTextOf(const std::string& key, const std::string& value);

/// Whether the error is of exactly the class `Error`; for `EZETError`, this core's own subclass counts, too.
template <typename Error>
bool IsOfClass(const EZETError& error) {
    const bool isHostError = std::is_same_v<Error, EZETError> && typeid(error) == typeid(EZETHostError);
    return isHostError || typeid(error) == typeid(Error);
}

/// The message of the exception of exactly the class `Error` that `action` throws; fails the test if it
/// throws none.
template <typename Error>
std::string MessageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const EZETError& error) {
        EXPECT_TRUE(IsOfClass<Error>(error)) << "wrong class, with the message: " << error.what();
        EXPECT_EQ(error.GetDetail(), "");
        return error.GetMessage();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

/// A host whose parameter file holds `text`.
class HostFixture : public testing::Test {
  protected:
    CZETHost& Start(const std::string& text);
    IZETCore& Core() { return m_host->GetCore(); }
    std::string ConfigFile() const { return m_directory / "zet.conf"; }

    TemporaryDirectory m_directory;
    std::unique_ptr<CZETHost> m_host;
};

/// For tests of conditions that only root can set up.
bool IsRoot();

constexpr unsigned kSomeUser = 4711;
constexpr unsigned kSomeGroup = 4712;

/// Continues as an ordinary user; for a child process that is about to end.
void BecomeSomeUser();

}  // namespace ZET::Test

#endif
