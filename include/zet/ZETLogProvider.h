#ifndef ZET_ZETLOG_PROVIDER_H
#define ZET_ZETLOG_PROVIDER_H

#include <cstddef>

#include "zet/ZETApi.h"

namespace ZET {

enum ZETLogLevel { ZETLogError = 0, ZETLogWarning = 1, ZETLogNotice = 2 };

/// The process's one log.
class ZET_API CZETLogProvider {
  public:
    /// The log; any thread may use it until the process ends.
    static CZETLogProvider& GetLogProvider();

    /// Writes one record. `count` is the number of texts, the format included: with 1, `format` is a finished
    /// text and is not formatted, even if it contains "%"; with more, it is formatted by the conventions of
    /// printf. The reference core writes control characters as escape sequences, so that no text can produce
    /// two records or control a terminal. May be called by any thread.
    void Put(ZETLogLevel level, std::size_t count, const char* format, ...);

    CZETLogProvider(const CZETLogProvider&) = delete;
    CZETLogProvider& operator=(const CZETLogProvider&) = delete;

  private:
    CZETLogProvider() = default;
};

}  // namespace ZET

#endif
