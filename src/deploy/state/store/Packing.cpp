#include "deploy/state/store/Packing.h"

#include <charconv>
#include <cstddef>

namespace ZET::Deploy {

std::string Packed(const std::vector<std::string>& texts) {
    std::string packed;
    for (const std::string& text : texts)
        packed.append(std::to_string(text.size())).append(":").append(text);
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
