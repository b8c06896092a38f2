#include "zet/ZETFormatCall.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace ZET {

// This core shows a message without its place, and printf counts the arguments by the format.
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
        if (vasprintf(&text, format, arguments) < 0) text = nullptr;
        va_end(arguments);
    }
    // Only now: the former text may have been among the arguments.
    std::free(m_text);
    m_text = text;
    errno = callersError;
    return m_text;
}

}  // namespace ZET
