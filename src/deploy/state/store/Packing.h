#ifndef ZET_STORE_PACKING_H
#define ZET_STORE_PACKING_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZET::Deploy {

/// Texts of any bytes, one after the other, each as "LENGTH:" and its bytes.
std::string Packed(const std::vector<std::string>& texts);

/// Appends one more, which consists of two parts.
void AppendPacked(std::string& packed, std::string_view part, std::string_view rest);

/// None if it is not what `Packed` made.
std::optional<std::vector<std::string>> Unpacked(std::string_view packed);

}  // namespace ZET::Deploy

#endif
