#ifndef ZET_JOINED_H
#define ZET_JOINED_H

#include <string>
#include <string_view>
#include <vector>

namespace ZET::Text {

/// The texts with the separator between them.
inline std::string Joined(const std::vector<std::string>& texts, std::string_view separator) {
    std::string joined;
    for (const std::string& text : texts)
        joined.append(joined.empty() ? "" : separator).append(text);
    return joined;
}

}  // namespace ZET::Text

#endif
