#ifndef ZET_TEMPLATE_LINES_H
#define ZET_TEMPLATE_LINES_H

#include <string>
#include <string_view>

#include "text/Lines.h"
#include "text/TemplateCheck.h"

namespace ZET::Text {

/// The text of a template that is not in a file, in one piece.
inline LineSource LinesOf(const std::string& text) {
    return [text](const auto& take) {
        if (!text.empty()) take(text);
    };
}

/// As `LinesOf`, in pieces of one line each, so that no lines can be skipped together.
inline LineSource LineByLine(const std::string& text) {
    return [text](const auto& take) {
        for (std::string_view rest = text; !rest.empty();) {
            const std::string_view all = rest;
            TakeLine(rest);
            take(all.substr(0, all.size() - rest.size()));
        }
    };
}

}  // namespace ZET::Text

#endif
