#ifndef ZET_LANGUAGE_H
#define ZET_LANGUAGE_H

#include <locale.h>
#include <map>
#include <optional>
#include <string>

#include "text/Words.h"
#include "zet/IZETCore.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

/// Throws a `Failure` if the host lacks the language that the parameter "ZET_LANG" asks for with this value.
void RequireLanguage(const std::string& language);

/// From now on, messages are in the user's language. For commands, as it changes the whole process.
void UseReadersLanguage();

/// Likewise, texts are in the user's encoding, and messages in the language of the sources.
void UseReadersLetters();

/// A language setting, and how to restore it.
class LanguageSetting {
  public:
    /// Takes the present setting.
    LanguageSetting();
    void Use() const;

  private:
    std::map<int, std::string> m_locales;  ///< by category
    std::optional<std::string> m_preference;
};

/// While the object lives, messages are in the language of the parameter "ZET_LANG", so that what is written
/// into a file does not depend on who runs the command. What the library and the core report meanwhile is in
/// the reader's language all the same. Throws a `Failure` if the host does not have the language.
///
/// The locale and the environment of the process stay as they are, since other threads use them. But in every
/// thread a list of preferred languages wins over the language that is set for it: then a command changes its
/// process, and any other program gets a `Failure`.
class WrittenLanguage {
  public:
    explicit WrittenLanguage(IZETCore& core);
    ~WrittenLanguage();
    WrittenLanguage(const WrittenLanguage&) = delete;
    WrittenLanguage& operator=(const WrittenLanguage&) = delete;

  private:
    void UseInThread(locale_t written, bool isTranslated);
    void UseInProcess(const std::string& locale, bool isTranslated);

    locale_t m_formerLocale{};                ///< of this thread, if nothing more is changed
    std::optional<LanguageSetting> m_former;  ///< if the process is changed
    Text::LookUp m_formerLookUp = nullptr;    ///< null: nothing is changed
    ZETReadersLanguage m_formerMaking = nullptr;
    const LanguageSetting* m_formerReaders = nullptr;
};

}  // namespace ZET::Deploy

#endif
