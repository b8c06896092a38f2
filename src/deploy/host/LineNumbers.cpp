#include "deploy/host/LineNumbers.h"

#include <algorithm>

#include "deploy/host/Words.h"

namespace ZET::Deploy {

namespace {

constexpr std::size_t kMostNumbers = 10;  ///< in one message

}  // namespace

std::string LineNumbers(const std::vector<std::size_t>& numbers) {
    const std::size_t count = std::min(numbers.size(), kMostNumbers);
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(numbers[i]);
        if (i == 0)
            text = number;
        else if (i + 1 == numbers.size())
            text = Words("%s and %s", text, number);
        else
            text += ", " + number;
    }
    return numbers.size() > count ? Words("%s and %s more", text, std::to_string(numbers.size() - count))
                                  : text;
}

}  // namespace ZET::Deploy
