#include "deploy/state/Language.h"

#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

constexpr char kPreference[] = "LANGUAGE";
constexpr char kOfSources[] = "C";  // its messages ignore LANGUAGE

/// A text depends on its language and on the encoding of its letters; without the second, all that is not
/// ASCII would be lost.
constexpr int kTextCategories[] = {LC_CTYPE, LC_MESSAGES};

/// The system would take an empty name for the user's language.
std::string LocaleName(const std::string& language) {
    return language.empty() ? kOfSources : language;
}

/// "de" of "de_AT.UTF-8", and of the list "de:fr".
std::string_view LanguageOf(std::string_view names) {
    return names.substr(0, names.find_first_of("_.@:"));
}

/// What a text is written in, as names of locales.
struct NamesOfLanguage {
    std::string letters;
    std::string messages;

    bool operator<(const NamesOfLanguage& other) const {
        return std::tie(letters, messages) < std::tie(other.letters, other.messages);
    }

    bool AreSet() const {
        return uselocale(locale_t()) == LC_GLOBAL_LOCALE && letters == setlocale(LC_CTYPE, nullptr) &&
               messages == setlocale(LC_MESSAGES, nullptr);
    }

    /// Whether messages would be in the preferred language instead.
    bool YieldTo(const std::string& preference) const {
        return !preference.empty() && messages != kOfSources &&
               LanguageOf(preference) != LanguageOf(messages);
    }
};

NamesOfLanguage NamesFor(const std::string& locale, const std::string& preference) {
    return {locale, !preference.empty() && Text::IsEnglish(locale) ? kOfSources : locale};
}

struct LocaleDeleter {
    void operator()(locale_t locale) const { freelocale(locale); }
};
using Locale = std::unique_ptr<std::remove_pointer_t<locale_t>, LocaleDeleter>;
using Locales = std::map<NamesOfLanguage, Locale>;

/// The locales that were used. To switch to one of them and back takes 100 instructions; to set a locale by
/// its name takes 20,000, half of what it takes to render a small file. They live as long as the process: an
/// object of a thread's own takes memory to be destroyed later, and the C library ends the program if there
/// is none.
Locales& KnownLocales() {
    static Locales& locales = *new Locales;
    return locales;
}

/// The present locale with another language, which the host must have.
Locale MakeLocale(const NamesOfLanguage& names) {
    Locale made(duplocale(LC_GLOBAL_LOCALE));
    for (const auto& [category, name] :
         {std::pair(LC_CTYPE_MASK, &names.letters), std::pair(LC_MESSAGES_MASK, &names.messages)}) {
        const locale_t changed = made ? newlocale(category, name->c_str(), made.get()) : locale_t();
        if (changed == locale_t()) throw std::bad_alloc();
        static_cast<void>(made.release());
        made.reset(changed);
    }
    return made;
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

bool g_isProcessOwn = false;

void RequireOwnProcess(IZETCore& core, const std::string& language, const std::string& preference) {
    if (g_isProcessOwn) return;
    throw Failure({.file = core.GetParam("ZET_CFG"),
                   .text = Words("ZET_LANG is %s, and the program's LANGUAGE, %s, would win over it",
                                 language, preference),
                   .remedy = _("let the program unset LANGUAGE, or leave ZET_LANG empty")});
}

/// The reader's setting while this thread writes a file in another language; else null.
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

/// For a language that is set for this thread alone.
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
    g_isProcessOwn = true;
    for (const int category : kTextCategories)
        setlocale(category, "");
}

void UseReadersLetters() {
    g_isProcessOwn = true;
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
    const char* const preferred = std::getenv(kPreference);
    const std::string preference = preferred == nullptr ? "" : preferred;
    const NamesOfLanguage names = NamesFor(LocaleName(language), preference);
    Locales& known = KnownLocales();
    if (!known.contains(names)) {
        RequireLanguageOf(core, language);
        known.emplace(names, MakeLocale(names));
    }
    const bool isTranslated = Text::IsTranslated();
    if (names.YieldTo(preference)) {
        RequireOwnProcess(core, language, preference);
        UseInProcess(names.letters, isTranslated);
    } else if (!names.AreSet()) {  // setting what is set already costs two fifths of rendering a small file
        UseInThread(known.at(names).get(), isTranslated);
    }
}

void WrittenLanguage::UseInThread(locale_t written, bool isTranslated) {
    m_formerLookUp = Text::LookUpBy(isTranslated ? &LookUpForProgram : &LeaveEnglish);
    m_formerMaking = MakeMessagesBy(&MakeForProgram);
    m_formerLocale = uselocale(written);
}

/// `setlocale` also makes the C library forget translations by another list of preferred languages.
void WrittenLanguage::UseInProcess(const std::string& locale, bool isTranslated) {
    m_former.emplace();
    m_formerReaders = std::exchange(t_readers, &*m_former);
    m_formerLookUp = Text::LookUpBy(isTranslated ? &LookUpForReader : &LeaveEnglish);
    m_formerMaking = MakeMessagesBy(&MakeForReader);
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
