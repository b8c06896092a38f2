#include "cli/Translation.h"

#include <libintl.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace ZET::Cli {

namespace {

constexpr char kDomain[] = "zet-tools";
constexpr std::string_view kGap = "%s";

/// The catalogues are in the prefix of the program, wherever that was put.
bool Bind() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return false;
    bindtextdomain(kDomain, (program.parent_path() / ZET_LOCALE_WAY).c_str());
    return true;
}

}  // namespace

bool IsTranslated() {
    const std::string_view locale = setlocale(LC_MESSAGES, nullptr);
    if (locale == "C" || locale == "POSIX") return false;
    const bool isEnglish = locale.starts_with("en") || locale.starts_with("C.");
    if (isEnglish && std::getenv("LANGUAGE") == nullptr) return false;
    static const bool isBound = Bind();
    return isBound;
}

const char* _(const char* text) {
    return IsTranslated() ? dgettext(kDomain, text) : text;
}

const char* Plural(const char* one, const char* many, std::size_t count) {
    return IsTranslated() ? dngettext(kDomain, one, many, count) : count == 1 ? one : many;
}

std::string Counted(const char* one, const char* many, std::size_t count) {
    return Filled(Plural(one, many, count), {std::to_string(count)});
}

std::string Filled(const char* text, const std::vector<std::string>& values) {
    std::string filled;
    std::string_view rest = text;
    for (const std::string& value : values) {
        const std::size_t gap = rest.find(kGap);
        if (gap == std::string_view::npos) break;
        filled.append(rest.substr(0, gap)).append(value);
        rest.remove_prefix(gap + kGap.size());
    }
    return filled.append(rest);
}

const char* RoleName(Deploy::Role role) {
    return role == Deploy::Role::Server ? _("server") : _("client");
}

}  // namespace ZET::Cli
