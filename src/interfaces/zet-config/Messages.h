#ifndef ZET_MESSAGES_H
#define ZET_MESSAGES_H

#include <libintl.h>

#include <cstddef>
#include <string>

#include "zet/ZETErrors.h"
#include "zet/ZETFormatCall.h"
#include "zet/ZETLogProvider.h"

namespace ZET {

/// The message catalogues: the module's own texts, and those it shares with the core.
inline constexpr char kModuleDomain[] = "libzet-config";
inline constexpr char kCoreDomain[] = "libzet-core";

/// What messages name as their source, without the ending of the file.
inline constexpr char kEntryPointsSource[] = "src/interfaces/zet-config/zet-config";
inline constexpr char kManagerSource[] = "src/interfaces/zet-config/ZETConfig";
inline constexpr char kFileSource[] = "src/interfaces/zet-config/ZETConfigFile";

/// Formats a message: `Message(source, function, line)(count, dgettext(domain, "..."), arguments...)`. The
/// text that is to be translated stands in that call, where the compiler checks its format.
using Message = CZETFormatCall;

/// A formatted message as a text; the empty one when it could not be formatted.
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

/// The line that calls it.
inline std::size_t Here(int line = __builtin_LINE()) {
    return static_cast<std::size_t>(line);
}

/// Refuses an empty argument in the name of the operation that received it.
inline void RequireArgument(const std::string& argument, const char* source, const char* function,
                            std::size_t line) {
    if (!argument.empty()) return;
    Throw<EZETCheckError>(
        Message(source, function, line)(1, dgettext(kCoreDomain, "Argument is empty for '%s'."), function));
}

}  // namespace ZET

#endif
