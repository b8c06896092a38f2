#ifndef ZET_ZETFORMAT_CALL_H
#define ZET_ZETFORMAT_CALL_H

#include <cstddef>

#include "zet/ZETApi.h"

namespace ZET {

/// Formats one message for the operation that reports it. It cannot be copied, and one thread uses it.
class ZET_API CZETFormatCall {
  public:
    /// `source`, `function` and `line` tell where the message comes from, for a core that shows it. Leaves
    /// `errno` unchanged.
    CZETFormatCall(const char* source, const char* function, std::size_t line);
    ~CZETFormatCall();
    CZETFormatCall(const CZETFormatCall&) = delete;
    CZETFormatCall& operator=(const CZETFormatCall&) = delete;

    /// Formats by the conventions of printf; "%m" is the text of the caller's `errno`. `count` is the number
    /// of arguments that follow `format`. Returns a text that the object owns, valid until the next call or
    /// the object's end, or null if it cannot be formatted. Throws nothing.
    const char* operator()(std::size_t count, const char* format, ...) __attribute__((format(printf, 3, 4)));

  private:
    char* m_text = nullptr;
};

}  // namespace ZET

#endif
