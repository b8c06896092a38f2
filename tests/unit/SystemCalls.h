#ifndef ZET_SYSTEM_CALLS_H
#define ZET_SYSTEM_CALLS_H

#include <cstddef>
#include <string>
#include <vector>

namespace ZET {

/// What the module's system calls do in this program. Reset by `SystemCalls::Restore`.
struct SystemCallScript {
    int statError = 0;                     ///< every status call fails with it
    bool statFailsOnlyAfterWrite = false;  ///< but only once something was written
    bool interrupts = false;               ///< every other read and write is interrupted
    std::size_t atMost = 0;                ///< a read or write moves no more bytes than this; 0 for no limit
    int readError = 0;                     ///< every read after the first fails with it
    int modeError = 0;                     ///< a change of mode fails with it once something was written
    int closeError = 0;                    ///< a close does its work, then fails with it
};

/// What was seen since the last `Start`.
struct SystemCallRecord {
    std::size_t stats = 0;
    std::size_t interruptions = 0;
    std::size_t reads = 0;
    std::size_t writes = 0;
    std::size_t closes = 0;
    std::vector<std::string> modeCalls;  ///< changes of mode and of the creation mask, in order, in octal
};

/// Lies about the system calls as long as it lives.
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
