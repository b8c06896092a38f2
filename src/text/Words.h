#ifndef ZET_TEXT_WORDS_H
#define ZET_TEXT_WORDS_H

#include <initializer_list>
#include <string>
#include <string_view>

/// What the library says to a reader is put into his language where it is made, by the catalogue
/// "libzet-deploy". A text that is stored or compared is none of these.
namespace ZET::Text {

inline constexpr char kDomain[] = "libzet-deploy";

/// Whether the texts of a locale are those of the sources.
bool IsEnglish(std::string_view locale);

/// Whether there is another language than that of the sources to look for.
bool IsTranslated();

/// How a text of a catalogue gets its language.
using LookUp = const char* (*)(const char* domain, const char* text);

/// A text in the language that is set. Nothing is looked for where that is English.
const char* Translated(const char* domain, const char* text);

/// Texts get their language by `lookUp` from now on, where the reader's is not the one that is set; returns
/// by what they got it before.
LookUp LookUpBy(LookUp lookUp);

/// A text of this catalogue, or of the library's own, in the reader's language.
const char* InReadersLanguage(const char* domain, const char* text);
const char* _(const char* text);

/// The text with `values` in the places of its "%s".
std::string Filled(std::string_view text, std::initializer_list<std::string_view> values);

/// A text of the library's in the reader's language, with `values` in the places of its "%s".
template <typename... Values>
std::string Words(const char* text, const Values&... values) {
    return Filled(_(text), {values...});
}

}  // namespace ZET::Text

/// Marks a constant that is translated where it is used.
#define ZET_TEXT(text) text

#endif
