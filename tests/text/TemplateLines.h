#ifndef ZET_TEMPLATE_LINES_H
#define ZET_TEMPLATE_LINES_H

#include <string>

#include "text/Lines.h"
#include "text/TemplateCheck.h"

namespace ZET::Text {

/// The lines of a template that is no file.
inline LineSource LinesOf(const std::string& text) {
    return [text](const auto& take) {
        for (const TextLine& line : SplitLines(text))
            take(line.text);
    };
}

}  // namespace ZET::Text

#endif
