#ifndef ZET_CLI_TRANSLATION_H
#define ZET_CLI_TRANSLATION_H

#include <cstddef>
#include <string>

#include "text/Words.h"
#include "zet/deploy/Role.h"

namespace ZET::Cli {

using Text::Filled;

/// Has messages looked up in the prefix of the program, unless the reader reads English.
void BindCatalogues();

/// A text of the commands in the reader's language. Nothing is looked for where he reads English.
const char* _(const char* text);

/// The same for a text that depends on a number.
const char* Plural(const char* one, const char* many, std::size_t count);

/// The same with the number in the place of its "%s".
std::string Counted(const char* one, const char* many, std::size_t count);

/// "server" or "client", in the reader's language.
const char* RoleName(Deploy::Role role);

}  // namespace ZET::Cli

#endif
