#ifndef ZET_CORE_PARAMETER_KINDS_H
#define ZET_CORE_PARAMETER_KINDS_H

#include <optional>
#include <string>
#include <string_view>

#include "zet/ZETHost.h"

namespace ZET::Core {

/// What "yes or no" says; none for what says neither.
std::optional<bool> ReadFlag(std::string_view value);

/// Whether a value that is not empty is of the kind of its parameter.
bool IsOfKind(const ZETParameter& parameter, const std::string& value);

/// What the kind is called, in English for all: "number".
std::string NameOfKind(const ZETParameter& parameter);

/// The same in a sentence, in the language that is set: "a number".
std::string KindInWords(const ZETParameter& parameter);

/// How a value of the kind is written, as a remedy in the language that is set.
std::string HowToWrite(const ZETParameter& parameter);

}  // namespace ZET::Core

#endif
