#include "cli/Translation.h"

#include <libintl.h>

#include "deploy/host/Words.h"
#include "posix/OwnPlace.h"
#include "posix/PathNames.h"

namespace ZET::Cli {

namespace {

constexpr char kDomain[] = "zet-tools";

}  // namespace

void BindCatalogues() {
    if (!Text::IsTranslated()) return;
    const std::string program = OwnProgram();
    if (program.empty()) return;
    // Includes the library, which is part of the program.
    for (const char* domain : {kDomain, Text::kDomain})
        bindtextdomain(domain, PathIn(DirectoryOf(program), ZET_LOCALE_WAY).c_str());
}

const char* _(const char* text) {
    return Text::InReadersLanguage(kDomain, text);
}

const char* Plural(const char* one, const char* many, std::size_t count) {
    return Text::IsTranslated() ? dngettext(kDomain, one, many, count) : count == 1 ? one : many;
}

std::string Counted(const char* one, const char* many, std::size_t count) {
    return Filled(Plural(one, many, count), {std::to_string(count)});
}

const char* RoleName(Deploy::Role role) {
    return Deploy::RoleInWords(role);
}

}  // namespace ZET::Cli
