#ifndef ZET_BENCH_TEXT_H
#define ZET_BENCH_TEXT_H

#include <cstddef>
#include <string>

#include "TextReader.h"
#include "zet/ZETTypes.h"

namespace ZET {

/// The texts are the same in every run. Sizes are in bytes and only about met.

/// Lines "parameter_N=...", with `blocks` managed blocks and their kept lines spread over them evenly.
std::string ParameterText(std::size_t size, std::size_t blocks);

std::string ParameterLines(std::size_t count);

/// Lines with a placeholder on every fourth one.
std::string TemplateText(std::size_t size);

/// One line of that many placeholders.
std::string PlaceholderLine(std::size_t count);

/// 3 KB with 15 placeholders.
std::string SmallTemplate();

/// The values of all those placeholders.
StringMap TemplateValues();

Buffer BufferOf(const std::string& text);

}  // namespace ZET

#endif
