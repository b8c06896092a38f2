#include "zet/ZETLogProvider.h"

#include <syslog.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "Message.h"
#include "posix/Printable.h"
#include "posix/ReadWrite.h"
#include "zet/ZETHost.h"

namespace ZET {

namespace {

struct LogState {
    std::mutex mutex;
    ZETLogTarget target = ZETLogTarget::StandardError;
    bool isConfigured = false;
    ZETLogLevel threshold = ZETLogWarning;
    std::string identity = "zet";
    ZETLogFilter filter;
    ZETLogObserver observer;
    ZETLogWording wording;
};

/// Never destroyed: other threads and the destructors of static objects may log until the very end.
LogState& State() {
    static LogState& state = *new LogState;
    return state;
}

std::atomic<std::size_t> loggedErrors = 0;
thread_local const ZETLogObserver* t_observer = nullptr;

const char* LevelName(ZETLogLevel level) {
    switch (level) {
        case ZETLogError:
            return CORE_TEXT("error");
        case ZETLogWarning:
            return CORE_TEXT("warning");
        default:
            return CORE_TEXT("notice");
    }
}

int SystemLogPriority(ZETLogLevel level) {
    switch (level) {
        case ZETLogError:
            return LOG_ERR;
        case ZETLogWarning:
            return LOG_WARNING;
        default:
            return LOG_NOTICE;
    }
}

/// Calls the filter without holding the lock, since it may log itself.
bool IsShown(ZETLogLevel level) {
    LogState& state = State();
    ZETLogFilter filter;
    {
        const std::lock_guard<std::mutex> lock(state.mutex);
        if (level > state.threshold) return false;
        filter = state.filter;
    }
    return !filter || filter(level);
}

/// Writes the record and returns it in the form in which it was written.
std::string WriteRecord(ZETLogLevel level, const char* text) {
    LogState& state = State();
    const std::lock_guard<std::mutex> lock(state.mutex);
    std::string line = Printable(state.wording ? state.wording(text) : text);
    if (state.observer) state.observer(level, line);
    if (!state.isConfigured && t_observer != nullptr) return line;
    if (state.target == ZETLogTarget::SystemLog) {
        ::syslog(SystemLogPriority(level), "%s", line.c_str());
        return line;
    }
    const std::string name = Core::Translated(LevelName(level));
    static_cast<void>(WriteAll(STDERR_FILENO, state.identity + ": " + name + ": " + line + "\n"));
    return line;
}

/// Calls the thread's observer without holding the lock, since it may log itself.
void TellThread(ZETLogLevel level, const std::string& line) {
    const ZETLogObserver* const observer = std::exchange(t_observer, nullptr);
    if (observer == nullptr) return;
    try {
        (*observer)(level, line);
    } catch (...) {
        t_observer = observer;
        throw;
    }
    t_observer = observer;
}

}  // namespace

CZETLogProvider& CZETLogProvider::GetLogProvider() {
    static CZETLogProvider& provider = *new CZETLogProvider;
    return provider;
}

void CZETLogProvider::Put(ZETLogLevel level, std::size_t count, const char* format, ...) {
    const int callersError = errno;
    if (level == ZETLogError) loggedErrors++;
    const char* text = format != nullptr ? format : "";
    char* formatted = nullptr;
    if (count > 1) {
        std::va_list arguments;
        va_start(arguments, format);
// The format is the caller's responsibility; a single text is never used as a format.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        if (vasprintf(&formatted, text, arguments) < 0) formatted = nullptr;
#pragma GCC diagnostic pop
        va_end(arguments);
    }
    const std::unique_ptr<char, decltype(&std::free)> owner(formatted, &std::free);
    if (IsShown(level)) TellThread(level, WriteRecord(level, formatted != nullptr ? formatted : text));
    errno = callersError;
}

void ConfigureLog(ZETLogTarget target, ZETLogLevel threshold, const std::string& identity) {
    LogState& state = State();
    const std::lock_guard<std::mutex> lock(state.mutex);
    if (state.target == ZETLogTarget::SystemLog) ::closelog();
    state.isConfigured = true;
    state.target = target;
    state.threshold = threshold;
    state.identity = identity;
    // The system log keeps the pointer; the identity lives until the log is configured again.
    if (target == ZETLogTarget::SystemLog) ::openlog(state.identity.c_str(), LOG_PID, LOG_DAEMON);
}

ZETLogLevel SetLogThreshold(ZETLogLevel threshold) {
    LogState& state = State();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return std::exchange(state.threshold, threshold);
}

ZETLogFilter SetLogFilter(ZETLogFilter filter) {
    LogState& state = State();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return std::exchange(state.filter, std::move(filter));
}

void SetLogObserver(ZETLogObserver observer) {
    LogState& state = State();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.observer = std::move(observer);
}

const ZETLogObserver* SetThreadLogObserver(const ZETLogObserver* observer) {
    return std::exchange(t_observer, observer);
}

ZETLogWording SetLogWording(ZETLogWording wording) {
    LogState& state = State();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return std::exchange(state.wording, std::move(wording));
}

std::size_t CountLoggedErrors() {
    return loggedErrors;
}

}  // namespace ZET
