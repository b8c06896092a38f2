#include "text/FirstLine.h"

#include <algorithm>

#include "text/Lines.h"

namespace ZET::Text {

namespace {

std::string_view WithoutUsualBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kUsualBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kUsualBlanks) + 1);
}

/// Other formats have lines like "{ a", "{% a %}", "[[a]]" and "["a b"]".
bool BeginsJson(std::string_view text) {
    if (!text.starts_with('{') && !text.starts_with('[')) return false;
    const std::string_view next = WithoutUsualBlanks(text.substr(1));
    if (next.empty()) return true;
    if (text.front() == '{') return next.front() == '"' || next.front() == '}';
    return next.front() == '{' || (next.front() == '"' && next.find("\",") != std::string_view::npos);
}

}  // namespace

FirstLine FirstLineOf(std::string_view text) {
    const std::size_t begin = text.find_first_not_of('\n');
    if (begin == std::string_view::npos) return {};
    text.remove_prefix(begin);
    return {begin + 1, TakeLine(text).text};
}

bool IsUtf16(std::string_view firstLine) {
    return firstLine.starts_with("\xff\xfe") || firstLine.starts_with("\xfe\xff");
}

bool MustComeFirst(std::string_view line) {
    // "<!" opens a document type or a comment of XML; "<Name>" also opens a section of other formats.
    for (const std::string_view start :
         {std::string_view("#!"), std::string_view("<?"), std::string_view("<!"), kByteOrderMark})
        if (line.starts_with(start)) return true;
    return BeginsJson(WithoutUsualBlanks(line));
}

}  // namespace ZET::Text
