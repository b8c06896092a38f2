#ifndef ZET_CORE_MESSAGE_H
#define ZET_CORE_MESSAGE_H

#include <string>

#include "zet/ZETHost.h"

/// The core's own messages. Each function looks `text` up in the message catalogue "libzet-core" and formats
/// it by the conventions of printf; "%m" is the text of the caller's `errno`, which is preserved.
namespace ZET::Core {

/// Marks a constant that is translated where it is used.
#define CORE_TEXT(text) text

/// Translates a text that is not a format and not empty.
std::string Translated(const char* text);

std::string Message(const char* text, ...) __attribute__((format(printf, 1, 2)));

/// Throws an `EZETError`.
[[noreturn]] void Fail(const char* text, ...) __attribute__((format(printf, 1, 2)));

/// Throws an `EZETHostError` about `path` and the caller's `errno`.
[[noreturn]] void FailSystem(const std::string& path, const char* text, ...)
    __attribute__((format(printf, 2, 3)));

/// Throws an `EZETHostError` about `cause`.
[[noreturn]] void FailKnowing(const ZETCause& cause, const char* text, ...)
    __attribute__((format(printf, 2, 3)));

/// Throws an `EZETCheckError`.
[[noreturn]] void FailCheck(const char* text, ...) __attribute__((format(printf, 1, 2)));

/// Logs a warning.
void Warn(const char* text, ...) __attribute__((format(printf, 1, 2)));

/// Throws an `EZETCheckError` that names `operation` if `argument` is empty.
void RequireNotEmpty(const std::string& argument, const char* operation);

}  // namespace ZET::Core

#endif
