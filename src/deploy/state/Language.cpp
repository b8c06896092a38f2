#include "deploy/state/Language.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <iterator>

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

}  // namespace

void RequireLanguage(const std::string& language) {
    if (const auto problem = ProblemOfParam("ZET_LANG", language))
        throw Failure({.text = problem->text, .remedy = problem->remedy});
}

void UseReadersLanguage() {
    for (const int category : kTextCategories)
        setlocale(category, "");
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
    for (const int category : kTextCategories)
        m_former[category] = setlocale(category, nullptr);
    // The reader's list of preferred languages would win over the one that is set.
    if (preference != nullptr) m_formerPreference = preference;
    unsetenv(kPreference);
    for (const int category : kTextCategories)
        setlocale(category, locale.c_str());
}

WrittenLanguage::~WrittenLanguage() {
    if (m_formerPreference) setenv(kPreference, m_formerPreference->c_str(), 1);
    for (const auto& [category, locale] : m_former)
        setlocale(category, locale.c_str());
}

}  // namespace ZET::Deploy
