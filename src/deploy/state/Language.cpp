#include "deploy/state/Language.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "deploy/host/Failure.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

constexpr char kPreference[] = "LANGUAGE";

/// What a text is in: its language, and how the letters are encoded. Without the second, all that is not
/// ASCII would be lost.
constexpr int kTextCategories[] = {LC_CTYPE, LC_MESSAGES};

/// To the system, an empty name is the language of whoever runs the command.
std::string LocaleName(const std::string& language) {
    return language.empty() ? "C" : language;
}

bool IsSet(const std::string& locale) {
    return std::all_of(std::begin(kTextCategories), std::end(kTextCategories),
                       [&](int category) { return locale == setlocale(category, nullptr); });
}

/// That of the reader, while a file is written in another one.
const LanguageSetting* g_readers = nullptr;

const char* LookUpForReader(const char* domain, const char* text) {
    const LanguageSetting written;
    g_readers->Use();
    const char* const found = Text::Translated(domain, text);
    written.Use();
    return found;
}

const char* LeaveEnglish(const char* /*domain*/, const char* text) {
    return text;
}

}  // namespace

void RequireLanguage(const std::string& language) {
    if (const auto problem = ProblemOfParam("ZET_LANG", language))
        throw Failure({.text = problem->text, .remedy = problem->remedy});
}

void UseReadersLanguage() {
    for (const int category : kTextCategories)
        setlocale(category, "");
}

void UseReadersLetters() {
    setlocale(LC_CTYPE, "");
}

LanguageSetting::LanguageSetting() {
    for (const int category : kTextCategories)
        m_locales[category] = setlocale(category, nullptr);
    if (const char* const preference = std::getenv(kPreference)) m_preference = preference;
}

void LanguageSetting::Use() const {
    if (m_preference)
        setenv(kPreference, m_preference->c_str(), 1);
    else
        unsetenv(kPreference);
    for (const auto& [category, locale] : m_locales)
        setlocale(category, locale.c_str());
}

WrittenLanguage::WrittenLanguage(IZETCore& core) {
    const std::string language = core.GetParam("ZET_LANG");
    try {
        RequireLanguage(language);
    } catch (const Failure& failure) {
        Problem facts = failure.Facts();
        facts.file = core.GetParam("ZET_CFG");
        throw Failure(facts);
    }
    // Setting what is set already costs two fifths of rendering a small file.
    const char* const preference = std::getenv(kPreference);
    const std::string locale = LocaleName(language);
    if (preference == nullptr && IsSet(locale)) return;
    m_former.emplace();
    m_formerReaders = std::exchange(g_readers, &*m_former);
    m_formerLookUp = Text::LookUpBy(Text::IsTranslated() ? &LookUpForReader : &LeaveEnglish);
    // The reader's list of preferred languages would win over the one that is set.
    unsetenv(kPreference);
    for (const int category : kTextCategories)
        setlocale(category, locale.c_str());
}

WrittenLanguage::~WrittenLanguage() {
    if (!m_former) return;
    m_former->Use();
    Text::LookUpBy(m_formerLookUp);
    g_readers = m_formerReaders;
}

}  // namespace ZET::Deploy
