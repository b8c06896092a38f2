#include "text/Continuation.h"

#include "text/Lines.h"
#include "text/Sections.h"

namespace ZET::Text {

namespace {

bool IsIndented(std::string_view line) {
    return line.starts_with(' ') || line.starts_with('\t');
}

}  // namespace

bool GoesOn(std::string_view line) {
    line = WithoutCarriageReturn(line);
    if (!line.ends_with('\\') || !IsSetting(line)) return false;
    const std::size_t end = line.find_last_not_of('\\');
    return (line.size() - (end == std::string_view::npos ? 0 : end + 1)) % 2 == 1;
}

bool SurelyGoesOn(std::string_view line, std::string_view next) {
    if (!GoesOn(line) || !IsSetting(next)) return false;
    if (IsIndented(next) && !IsIndented(line)) return true;
    line = WithoutCarriageReturn(line);
    line.remove_suffix(1);
    const std::size_t end = line.find_last_not_of(kUsualBlanks);
    const bool isBehindBlank = end != std::string_view::npos && end + 1 < line.size();
    return isBehindBlank && line[end] != '=' && line[end] != ':';
}

std::string_view LastLineOf(std::string_view text) {
    if (text.ends_with('\n')) text.remove_suffix(1);
    return text.substr(text.find_last_of('\n') + 1);
}

}  // namespace ZET::Text
