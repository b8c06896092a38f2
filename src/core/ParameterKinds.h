#ifndef ZET_CORE_PARAMETER_KINDS_H
#define ZET_CORE_PARAMETER_KINDS_H

#include <optional>
#include <string>
#include <string_view>

#include "zet/ZETHost.h"

namespace ZET::Core {

/// The meaning of a yes-or-no value; none if it is neither.
std::optional<bool> ReadFlag(std::string_view value);

/// Whether a non-empty value is of the kind of its parameter.
bool IsOfKind(const ZETParameter& parameter, const std::string& value);

/// The name of the kind, always in English: "number".
std::string NameOfKind(const ZETParameter& parameter);

/// The kind as part of a sentence, in the language that is set: "a number".
std::string KindInWords(const ZETParameter& parameter);

/// A remedy that says how to write such a value, in the language that is set.
std::string HowToWrite(const ZETParameter& parameter);

}  // namespace ZET::Core

#endif
