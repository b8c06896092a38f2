#include "deploy/state/Language.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
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

struct LocaleDeleter {
    void operator()(locale_t locale) const { freelocale(locale); }
};
using Locale = std::unique_ptr<std::remove_pointer_t<locale_t>, LocaleDeleter>;
using Locales = std::map<std::string, Locale>;

/// Those that were written in. To go to one of them and back takes 100 instructions, where setting a locale
/// by its name takes 20,000: half of what a small file takes to be rendered. They live as long as the
/// process: to have something of a thread's own destroyed takes memory, without which the C library ends the
/// program.
Locales& KnownLocales() {
    static Locales& locales = *new Locales;
    return locales;
}

/// The present one, but for the language; none where the system makes none.
Locale MakeLocale(const std::string& name) {
    const locale_t present = duplocale(LC_GLOBAL_LOCALE);
    if (present == locale_t()) return nullptr;
    const locale_t made = newlocale(LC_CTYPE_MASK | LC_MESSAGES_MASK, name.c_str(), present);
    if (made == locale_t()) freelocale(present);
    return Locale(made);
}

void RequireLanguageOf(IZETCore& core, const std::string& language) {
    try {
        RequireLanguage(language);
    } catch (const Failure& failure) {
        Problem facts = failure.Facts();
        facts.file = core.GetParam("ZET_CFG");
        throw Failure(facts);
    }
}

/// That of the reader, while this thread writes a file in another one.
thread_local const LanguageSetting* t_readers = nullptr;

const char* LookUpForReader(const char* domain, const char* text) {
    if (t_readers == nullptr) return Text::Translated(domain, text);
    const LanguageSetting written;
    t_readers->Use();
    const char* const found = Text::Translated(domain, text);
    written.Use();
    return found;
}

void MakeForReader(const std::function<void()>& make) {
    if (t_readers == nullptr) return make();
    const LanguageSetting written;
    t_readers->Use();
    make();
    written.Use();
}

/// Where this thread alone writes in another language.
const char* LookUpForProgram(const char* domain, const char* text) {
    const locale_t written = uselocale(LC_GLOBAL_LOCALE);
    const char* const found = Text::Translated(domain, text);
    uselocale(written);
    return found;
}

void MakeForProgram(const std::function<void()>& make) {
    const locale_t written = uselocale(LC_GLOBAL_LOCALE);
    make();
    uselocale(written);
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
    const std::string locale = LocaleName(language);
    const char* const preference = std::getenv(kPreference);
    Locales& known = KnownLocales();
    if (!known.contains(locale)) {
        RequireLanguageOf(core, language);
        known.emplace(locale, MakeLocale(locale));
    }
    // Setting what is set already costs two fifths of rendering a small file.
    if (preference == nullptr && IsSet(locale)) return;
    const bool isTranslated = Text::IsTranslated();
    // What was translated before by another list of preferred languages is only forgotten below.
    if (preference == nullptr && known.at(locale)) {
        m_formerLookUp = Text::LookUpBy(isTranslated ? &LookUpForProgram : &LeaveEnglish);
        m_formerMaking = MakeMessagesBy(&MakeForProgram);
        m_formerLocale = uselocale(known.at(locale).get());
        return;
    }
    m_former.emplace();
    m_formerReaders = std::exchange(t_readers, &*m_former);
    m_formerLookUp = Text::LookUpBy(isTranslated ? &LookUpForReader : &LeaveEnglish);
    m_formerMaking = MakeMessagesBy(&MakeForReader);
    // The reader's list of preferred languages would win over the one that is set.
    unsetenv(kPreference);
    for (const int category : kTextCategories)
        setlocale(category, locale.c_str());
}

WrittenLanguage::~WrittenLanguage() {
    if (m_formerLookUp == nullptr) return;
    Text::LookUpBy(m_formerLookUp);
    MakeMessagesBy(m_formerMaking);
    if (m_former) {
        m_former->Use();
        t_readers = m_formerReaders;
    } else {
        uselocale(m_formerLocale);
    }
}

}  // namespace ZET::Deploy
