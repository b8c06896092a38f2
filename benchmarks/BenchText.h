#ifndef ZET_BENCH_TEXT_H
#define ZET_BENCH_TEXT_H

#include <cstddef>
#include <string>

#include "TextReader.h"
#include "zet/ZETTypes.h"

namespace ZET {

/// The texts are the same in every run. Sizes are in bytes and approximate.

/// Lines "parameter_N=...", with `blocks` managed blocks and their kept lines distributed evenly.
std::string ParameterText(std::size_t size, std::size_t blocks);

std::string ParameterLines(std::size_t count);

/// Lines of which every fourth has a placeholder.
std::string TemplateText(std::size_t size);

/// One line with that many placeholders.
std::string PlaceholderLine(std::size_t count);

/// 3 KB with 15 placeholders.
std::string SmallTemplate();

/// The values of all those placeholders.
StringMap TemplateValues();

Buffer BufferOf(const std::string& text);

}  // namespace ZET

#endif
