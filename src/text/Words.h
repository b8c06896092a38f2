#ifndef ZET_TEXT_WORDS_H
#define ZET_TEXT_WORDS_H

#include <initializer_list>
#include <string>
#include <string_view>

/// The library's messages to the user are translated where they are composed, by the catalogue
/// "libzet-deploy". Texts that are stored or compared are not translated.
namespace ZET::Text {

inline constexpr char kDomain[] = "libzet-deploy";

/// Whether the locale's language is that of the sources.
bool IsEnglish(std::string_view locale);

/// Whether messages are to be in another language than that of the sources.
bool IsTranslated();

/// Translates a text of a catalogue.
using LookUp = const char* (*)(const char* domain, const char* text);

/// The text in the language that is set; English is returned without a lookup.
const char* Translated(const char* domain, const char* text);

/// Translates texts by `lookUp` from now on, if the user's language is not the one that is set; returns the
/// previous function.
LookUp LookUpBy(LookUp lookUp);

/// The text in the user's language: from that catalogue, or from the library's own.
const char* InReadersLanguage(const char* domain, const char* text);
const char* _(const char* text);

/// The text with each "%s" replaced by one of `values`, in order.
std::string Filled(std::string_view text, std::initializer_list<std::string_view> values);

/// A text of the library in the user's language, with each "%s" replaced by one of `values`.
template <typename... Values>
std::string Words(const char* text, const Values&... values) {
    return Filled(_(text), {values...});
}

}  // namespace ZET::Text

/// Marks a constant that is translated where it is used.
#define ZET_TEXT(text) text

#endif
