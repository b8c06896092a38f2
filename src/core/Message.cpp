#include "Message.h"

#include <libintl.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "zet/ZETErrors.h"
#include "zet/ZETLogProvider.h"

namespace ZET::Core {

namespace {

constexpr char kDomain[] = "libzet-core";

std::string FormatList(const char* text, std::va_list arguments) __attribute__((format(printf, 1, 0)));

std::string FormatList(const char* text, std::va_list arguments) {
    const int callersError = errno;
    char* formatted = nullptr;
    if (vasprintf(&formatted, dgettext(kDomain, text), arguments) < 0) formatted = nullptr;
    const std::unique_ptr<char, decltype(&std::free)> owner(formatted, &std::free);
    errno = callersError;
    return formatted != nullptr ? formatted : "";
}

}  // namespace

const char* Translated(const char* text) {
    return dgettext(kDomain, text);
}

std::string Message(const char* text, ...) {
    std::va_list arguments;
    va_start(arguments, text);
    std::string result = FormatList(text, arguments);
    va_end(arguments);
    return result;
}

void Fail(const char* text, ...) {
    std::va_list arguments;
    va_start(arguments, text);
    const std::string message = FormatList(text, arguments);
    va_end(arguments);
    throw EZETError(message, "");
}

void FailSystem(const std::string& path, const char* text, ...) {
    const int error = errno;
    std::va_list arguments;
    va_start(arguments, text);
    const std::string message = FormatList(text, arguments);
    va_end(arguments);
    throw EZETHostError(message, "", {.path = path, .errorNumber = error});
}

void FailKnowing(const ZETCause& cause, const char* text, ...) {
    std::va_list arguments;
    va_start(arguments, text);
    const std::string message = FormatList(text, arguments);
    va_end(arguments);
    throw EZETHostError(message, "", cause);
}

void FailCheck(const char* text, ...) {
    std::va_list arguments;
    va_start(arguments, text);
    const std::string message = FormatList(text, arguments);
    va_end(arguments);
    throw EZETCheckError(message, "");
}

void Warn(const char* text, ...) {
    std::va_list arguments;
    va_start(arguments, text);
    const std::string message = FormatList(text, arguments);
    va_end(arguments);
    CZETLogProvider::GetLogProvider().Put(ZETLogWarning, 1, message.c_str());
}

void RequireNotEmpty(const std::string& argument, const char* operation) {
    if (argument.empty()) FailCheck("Argument is empty for '%s'.", operation);
}

}  // namespace ZET::Core
