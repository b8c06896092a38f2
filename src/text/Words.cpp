#include "text/Words.h"

#include <libintl.h>

#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstdlib>

#include "posix/OwnPlace.h"

namespace ZET::Text {

namespace {

constexpr std::string_view kGap = "%s";

std::atomic<LookUp> g_lookUp = &Translated;

/// The catalogues are installed in the same prefix as the library; a program that contains the library sets
/// their directory itself.
bool Bind() {
    const std::string directory = LibraryDirectory(reinterpret_cast<const void*>(&_), "libzet-deploy.so");
    if (!directory.empty()) bindtextdomain(kDomain, (directory + "/" ZET_LOCALE_WAY).c_str());
    return true;
}

}  // namespace

bool IsEnglish(std::string_view locale) {
    return locale == "C" || locale == "POSIX" || locale.starts_with("C.") || locale.starts_with("en");
}

bool IsTranslated() {
    const std::string_view locale = setlocale(LC_MESSAGES, nullptr);
    if (locale == "C" || locale == "POSIX") return false;
    return !IsEnglish(locale) || std::getenv("LANGUAGE") != nullptr;
}

const char* Translated(const char* domain, const char* text) {
    if (*text == '\0' || !IsTranslated()) return text;
    static const bool isBound = Bind();
    return isBound ? dgettext(domain, text) : text;
}

LookUp LookUpBy(LookUp lookUp) {
    return g_lookUp.exchange(lookUp);
}

const char* InReadersLanguage(const char* domain, const char* text) {
    const int error = errno;  // the text may be about it
    const char* const found = g_lookUp.load()(domain, text);
    errno = error;
    return found;
}

const char* _(const char* text) {
    return InReadersLanguage(kDomain, text);
}

std::string Filled(std::string_view text, std::initializer_list<std::string_view> values) {
    std::size_t size = text.size();
    for (const std::string_view value : values)
        size += value.size();
    std::string filled;
    filled.reserve(size);
    for (const std::string_view value : values) {
        const std::size_t gap = text.find(kGap);
        if (gap == std::string_view::npos) break;
        filled.append(text.substr(0, gap)).append(value);
        text.remove_prefix(gap + kGap.size());
    }
    return filled.append(text);
}

}  // namespace ZET::Text
