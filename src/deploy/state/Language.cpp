#include "deploy/state/Language.h"

#include <clocale>
#include <cstdlib>

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
    for (const int category : kTextCategories)
        m_former[category] = setlocale(category, nullptr);
    // The reader's list of preferred languages would win over the one that is set.
    if (const char* preference = std::getenv(kPreference)) m_formerPreference = preference;
    unsetenv(kPreference);
    for (const int category : kTextCategories)
        setlocale(category, LocaleName(language).c_str());
}

WrittenLanguage::~WrittenLanguage() {
    if (m_formerPreference) setenv(kPreference, m_formerPreference->c_str(), 1);
    for (const auto& [category, locale] : m_former)
        setlocale(category, locale.c_str());
}

}  // namespace ZET::Deploy
