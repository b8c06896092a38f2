#ifndef ZET_SYSTEM_CALLS_H
#define ZET_SYSTEM_CALLS_H

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ZET {

/// What the module's system calls do in this program.
struct SystemCallScript {
    int statError = 0;                     ///< every status call fails with it
    bool statFailsOnlyAfterWrite = false;  ///< but only once something was written
    bool interrupts = false;               ///< every other read and write is interrupted
    std::size_t atMost = 0;                ///< a read or write moves no more bytes than this; 0 for no limit
    int readError = 0;                     ///< every read after the first fails with it
    int modeError = 0;                     ///< a change of mode fails with it once something was written
    int closeError = 0;                    ///< a close does its work, then fails with it
    bool writesNothing = false;            ///< a write succeeds with no byte written
    std::map<std::string, int> failing = {};  ///< every call of this name fails with this error
    std::function<void()> after = {};         ///< done after each call that changes a file
};

/// What was recorded meanwhile.
struct SystemCallRecord {
    std::size_t stats = 0;
    std::size_t interruptions = 0;
    std::size_t reads = 0;
    std::size_t writes = 0;
    std::size_t closes = 0;
    std::map<std::string, std::size_t> counts;  ///< calls by name
    /// Changes of owner, of mode and of the creation mask, in order; modes and masks in octal.
    std::vector<std::string> attributeCalls;
};

/// Replaces the module's system calls during its lifetime.
class SystemCalls {
  public:
    explicit SystemCalls(const SystemCallScript& script);
    ~SystemCalls();
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    const SystemCallRecord& Record() const;
};

}  // namespace ZET

#endif
