#ifndef ZET_CLI_TRANSLATION_H
#define ZET_CLI_TRANSLATION_H

#include <cstddef>
#include <string>

#include "text/Words.h"
#include "zet/deploy/Role.h"

namespace ZET::Cli {

using Text::Filled;

/// Looks up messages in the prefix of the program, unless the user's language is English.
void BindCatalogues();

/// A text of the commands in the user's language; English is returned without a lookup.
const char* _(const char* text);

/// As `_`, for a text that depends on a number.
const char* Plural(const char* one, const char* many, std::size_t count);

/// As `Plural`, with the number in place of its "%s".
std::string Counted(const char* one, const char* many, std::size_t count);

/// "server" or "client" in the user's language.
const char* RoleName(Deploy::Role role);

}  // namespace ZET::Cli

#endif
