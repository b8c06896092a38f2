#ifndef ZET_MESSAGES_H
#define ZET_MESSAGES_H

#include <libintl.h>

#include <cstddef>
#include <new>
#include <string>

#include "zet/ZETErrors.h"
#include "zet/ZETFormatCall.h"
#include "zet/ZETLogProvider.h"

namespace ZET {

/// The message catalogues: for the module's own texts, and for those that it shares with the core.
inline constexpr char kModuleDomain[] = "libzet-config";
inline constexpr char kCoreDomain[] = "libzet-core";

/// The sources that messages name, without the file extension.
inline constexpr char kEntryPointsSource[] = "src/interfaces/zet-config/zet-config";
inline constexpr char kManagerSource[] = "src/interfaces/zet-config/ZETConfig";
inline constexpr char kFileSource[] = "src/interfaces/zet-config/ZETConfigFile";

/// Formats a message: `message.Format()(count, message.Translated(domain, "..."), arguments...)`. The text to
/// be translated is part of that call, so that the compiler checks its format.
class Message {
  public:
    Message(const char* source, const char* function, std::size_t line)
        : m_source(source), m_function(function), m_line(line) {}
    ~Message() {
        if (m_isBuilt) m_format.~CZETFormatCall();
    }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    /// Translates the text, then builds the formatter: the core expects this order.
    const char* Translated(const char* domain, const char* text) __attribute__((format_arg(3))) {
        const char* const translated = dgettext(domain, text);
        new (&m_format) CZETFormatCall(m_source, m_function, m_line);
        m_isBuilt = true;
        return translated;
    }

    /// The formatter, which exists once the arguments of the call have been evaluated.
    CZETFormatCall& Format() { return m_format; }

  private:
    const char* m_source;
    const char* m_function;
    std::size_t m_line;
    bool m_isBuilt = false;
    union {
        CZETFormatCall m_format;
    };
};

/// The formatted message, or an empty text if it could not be formatted.
inline const char* TextOf(const char* formatted) {
    return formatted == nullptr ? "" : formatted;
}

inline void Log(ZETLogLevel level, const char* formatted) {
    CZETLogProvider::GetLogProvider().Put(level, 1, TextOf(formatted));
}

template <typename Error>
[[noreturn]] void Throw(const char* formatted) {
    throw Error(TextOf(formatted), "");
}

/// The line number of the call.
inline std::size_t Here(int line = __builtin_LINE()) {
    return static_cast<std::size_t>(line);
}

/// Throws `EZETCheckError`, naming the operation `function`, if the argument is empty.
inline void RequireArgument(const std::string& argument, const char* source, const char* function,
                            std::size_t line) {
    if (!argument.empty()) return;
    Message message(source, function, line);
    Throw<EZETCheckError>(
        message.Format()(1, message.Translated(kCoreDomain, "Argument is empty for '%s'."), function));
}

}  // namespace ZET

#endif
