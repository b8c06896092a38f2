#include "cli/Translation.h"

#include <libintl.h>

#include <filesystem>
#include <system_error>

#include "deploy/host/Words.h"

namespace ZET::Cli {

namespace {

constexpr char kDomain[] = "zet-tools";

}  // namespace

void BindCatalogues() {
    if (!Text::IsTranslated()) return;
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return;
    // The library is a part of the program.
    for (const char* domain : {kDomain, Text::kDomain})
        bindtextdomain(domain, (program.parent_path() / ZET_LOCALE_WAY).c_str());
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
