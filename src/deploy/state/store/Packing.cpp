#include "deploy/state/store/Packing.h"

#include <charconv>
#include <cstddef>
#include <iterator>
#include <limits>

namespace ZET::Deploy {

void AppendPacked(std::string& packed, std::string_view part, std::string_view rest) {
    char length[std::numeric_limits<std::size_t>::digits10 + 2];
    char* const end = std::to_chars(std::begin(length), std::end(length), part.size() + rest.size()).ptr;
    *end = ':';
    packed.append(length, static_cast<std::size_t>(end - length) + 1).append(part).append(rest);
}

std::string Packed(const std::vector<std::string>& texts) {
    std::string packed;
    for (const std::string& text : texts)
        AppendPacked(packed, "", text);
    return packed;
}

std::optional<std::vector<std::string>> Unpacked(std::string_view packed) {
    std::vector<std::string> texts;
    while (!packed.empty()) {
        std::size_t length = 0;
        const auto [end, error] = std::from_chars(packed.data(), packed.data() + packed.size(), length);
        const auto digits = static_cast<std::size_t>(end - packed.data());
        if (error != std::errc() || digits >= packed.size() || packed[digits] != ':') return std::nullopt;
        packed.remove_prefix(digits + 1);
        if (length > packed.size()) return std::nullopt;
        texts.emplace_back(packed.substr(0, length));
        packed.remove_prefix(length);
    }
    return texts;
}

}  // namespace ZET::Deploy
