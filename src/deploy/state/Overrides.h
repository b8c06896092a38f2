#ifndef ZET_OVERRIDES_H
#define ZET_OVERRIDES_H

#include <cstddef>
#include <string>

#include "zet/IZETCore.h"
#include "zet/ZETHost.h"
#include "zet/deploy/Observer.h"

/// What is different while an object lives.
namespace ZET::Deploy {

/// Counts the failures that the module reports to the log only, from construction on.
class LoggedFailures {
  public:
    LoggedFailures() : m_before(CountLoggedErrors()) {}
    bool Any() const { return CountLoggedErrors() != m_before; }

  private:
    std::size_t m_before;
};

/// While the object lives, the log shows records up to `threshold` at most: what is tried on files that
/// nobody knows is not reported.
class QuietLog {
  public:
    explicit QuietLog(ZETLogLevel threshold);
    ~QuietLog();
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

  private:
    ZETLogLevel m_former;
};

/// While the object lives, the observer gets what this thread logs.
class LogToObserver {
  public:
    explicit LogToObserver(Observer& observer);
    ~LogToObserver() { SetThreadLogObserver(m_former); }
    LogToObserver(const LogToObserver&) = delete;
    LogToObserver& operator=(const LogToObserver&) = delete;

  private:
    const ZETLogObserver m_tell;
    const ZETLogObserver* m_former;
};

/// Gives a parameter of the core another value while the object lives.
class ParamOverride {
  public:
    ParamOverride(IZETCore& core, const std::string& key, const std::string& value);
    ~ParamOverride();
    ParamOverride(const ParamOverride&) = delete;
    ParamOverride& operator=(const ParamOverride&) = delete;

  private:
    IZETCore& m_core;
    std::string m_key;
    std::string m_former;
};

}  // namespace ZET::Deploy

#endif
