#ifndef ZET_FIND_TEXT_H
#define ZET_FIND_TEXT_H

#include <cstddef>
#include <cstring>
#include <string_view>

namespace ZET::Text {

/// Where one text begins in another, or `npos`. The C library passes over many bytes at once that cannot
/// belong to a long text; a short one is found sooner by its first byte.
inline std::size_t FindText(std::string_view text, std::string_view what) {
    constexpr std::size_t kLong = 8;
    if (what.size() < kLong) return text.find(what);
    const void* const found = memmem(text.data(), text.size(), what.data(), what.size());
    if (found == nullptr) return std::string_view::npos;
    return static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

}  // namespace ZET::Text

#endif
