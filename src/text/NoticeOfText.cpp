#include "text/NoticeOfText.h"

#include "text/Lines.h"
#include "text/Markers.h"

namespace ZET::Text {

TextAndNotice WithoutNotice(std::string_view text) {
    std::string_view rest = text;
    std::size_t lines = 0;
    if (rest.empty() || MarkerOf(TakeLine(rest).text) != Marker::Notice) return {"", text, 0};
    for (lines = 1; !rest.empty();) {
        ++lines;
        if (MarkerOf(TakeLine(rest).text) == Marker::CommentEnd)
            return {text.substr(0, text.size() - rest.size()), rest, lines};
    }
    return {"", text, 0};
}

}  // namespace ZET::Text
