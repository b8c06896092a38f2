#ifndef ZET_TESTS_CORE_SYSTEM_CALLS_H
#define ZET_TESTS_CORE_SYSTEM_CALLS_H

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace ZET::Test {

/// Records the system calls of the file helpers, and the creation of PCRE2's objects, during its lifetime,
/// and can make them fail. The test program's functions of these names take precedence over those of the
/// libraries.
class SystemCalls {
  public:
    SystemCalls();
    ~SystemCalls();
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    /// Makes the `turn`th call of that name from now on (1 is the next) fail with `error`, and so all later
    /// ones unless `once`.
    void Fail(const std::string& name, int error, int turn = 1, bool once = false);

    /// Runs `action` just before each call from now on.
    void BeforeEach(std::function<void()> action);

    /// Runs `action` just before the next call of that name.
    void Before(const std::string& name, std::function<void()> action);

    /// Limits the calls of that name to this many bytes.
    void Shorten(const std::string& name, std::size_t size);

    /// The calls so far of these names, each as "name path" with only the last component of the path; the six
    /// letters of a copy's name are "XXXXXX". Calls for attributes have the name of the variant by path, and
    /// creating a copy is an "open".
    std::vector<std::string> Calls(const std::set<std::string>& names) const;

    /// The number of calls of that name.
    int Count(const std::string& name) const;

    /// For the replacement functions: true, with `errno` set, if the call is to fail.
    bool Take(const std::string& name, const std::string& path);
    std::size_t Limit(const std::string& name, std::size_t size) const;

  private:
    struct Failure {
        int error;
        int turn;
        bool once;
    };

    std::recursive_mutex m_mutex;  ///< files are synced by several threads
    std::vector<std::string> m_calls;
    std::map<std::string, int> m_counts;
    std::map<std::string, Failure> m_failures;
    std::map<std::string, std::function<void()>> m_actions;
    std::function<void()> m_eachAction;
    std::map<std::string, std::size_t> m_limits;
};

}  // namespace ZET::Test

#endif
