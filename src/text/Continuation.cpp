#include "text/Continuation.h"

#include "text/Lines.h"
#include "text/Sections.h"

namespace ZET::Text {

bool GoesOn(std::string_view line) {
    line = WithoutCarriageReturn(line);
    if (!line.ends_with('\\') || !IsSetting(line)) return false;
    const std::size_t end = line.find_last_not_of('\\');
    return (line.size() - (end == std::string_view::npos ? 0 : end + 1)) % 2 == 1;
}

std::string_view LastLineOf(std::string_view text) {
    if (text.ends_with('\n')) text.remove_suffix(1);
    return text.substr(text.find_last_of('\n') + 1);
}

}  // namespace ZET::Text
