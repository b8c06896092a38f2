#include "zet/ZETFormatCall.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace ZET {

namespace {

char* Formatted(const char* format, std::va_list arguments) __attribute__((format(printf, 1, 0)));

/// As `vasprintf`, but null on failure. `vasprintf` grows its memory step by step; copying a text of ordinary
/// length once takes two thirds of the time.
char* Formatted(const char* format, std::va_list arguments) {
    const int callersError = errno;
    char ordinary[512];
    std::va_list again;
    va_copy(again, arguments);
    char* text = nullptr;
    const int length = std::vsnprintf(ordinary, sizeof ordinary, format, arguments);
    const bool isShort = length >= 0 && static_cast<std::size_t>(length) < sizeof ordinary;
    errno = callersError;
    if (isShort) {
        text = static_cast<char*>(std::malloc(static_cast<std::size_t>(length) + 1));
        if (text != nullptr) std::memcpy(text, ordinary, static_cast<std::size_t>(length) + 1);
    } else if (vasprintf(&text, format, again) < 0) {
        text = nullptr;
    }
    va_end(again);
    return text;
}

}  // namespace

// This core does not show a message's place, and printf counts the arguments by the format.
CZETFormatCall::CZETFormatCall(const char* /*source*/, const char* /*function*/, std::size_t /*line*/) {}

CZETFormatCall::~CZETFormatCall() {
    std::free(m_text);
}

const char* CZETFormatCall::operator()(std::size_t /*count*/, const char* format, ...) {
    const int callersError = errno;
    char* text = nullptr;
    if (format != nullptr) {
        std::va_list arguments;
        va_start(arguments, format);
        text = Formatted(format, arguments);
        va_end(arguments);
    }
    // Freed only now, since the former text may have been among the arguments.
    std::free(m_text);
    m_text = text;
    errno = callersError;
    return m_text;
}

}  // namespace ZET
