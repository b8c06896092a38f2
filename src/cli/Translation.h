#ifndef ZET_CLI_TRANSLATION_H
#define ZET_CLI_TRANSLATION_H

#include <cstddef>
#include <string>
#include <vector>

#include "zet/deploy/Role.h"

namespace ZET::Cli {

/// Whether there is another language than that of the sources to look for.
bool IsTranslated();

/// A text of the commands in the reader's language. Nothing is looked for where he reads English.
const char* _(const char* text);

/// The same for a text that depends on a number.
const char* Plural(const char* one, const char* many, std::size_t count);

/// The same with the number in the place of its "%s".
std::string Counted(const char* one, const char* many, std::size_t count);

/// The text with `values` in the places of its "%s".
std::string Filled(const char* text, const std::vector<std::string>& values);

/// "server" or "client", in the reader's language.
const char* RoleName(Deploy::Role role);

/// Marks a constant that is translated where it is used.
#define ZET_TEXT(text) text

}  // namespace ZET::Cli

#endif
