#include "Message.h"

#include <libintl.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

#include "Catalogues.h"
#include "zet/ZETErrors.h"
#include "zet/ZETLogProvider.h"

namespace ZET::Core {

namespace {

std::string FormatList(const char* text, std::va_list arguments) __attribute__((format(printf, 1, 0)));

std::atomic<ZETReadersLanguage> g_readersLanguage = nullptr;

/// Calls `make` with the caller's `errno`, and restores that afterwards.
void InReadersLanguage(const std::function<void()>& make) {
    const int callersError = errno;
    const auto makeOfError = [&] {
        errno = callersError;
        make();
    };
    const ZETReadersLanguage language = g_readersLanguage;
    if (language != nullptr)
        language(makeOfError);
    else
        makeOfError();
    errno = callersError;
}

std::string FormatList(const char* text, std::va_list arguments) {
    char* formatted = nullptr;
    InReadersLanguage([&] {
        if (vasprintf(&formatted, dgettext(kOwnCatalogue, text), arguments) < 0) formatted = nullptr;
    });
    const std::unique_ptr<char, decltype(&std::free)> owner(formatted, &std::free);
    return formatted != nullptr ? formatted : "";
}

}  // namespace

std::string Translated(const char* text) {
    std::string translated;
    InReadersLanguage([&] { translated = dgettext(kOwnCatalogue, text); });
    return translated;
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

namespace ZET {

ZETReadersLanguage MakeMessagesBy(ZETReadersLanguage language) {
    return Core::g_readersLanguage.exchange(language);
}

}  // namespace ZET
