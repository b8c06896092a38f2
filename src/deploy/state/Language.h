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

/// A `Failure` when the host does not have what the parameter "ZET_LANG" asks for with this value.
void RequireLanguage(const std::string& language);

/// From now on, messages are in the language of whoever runs the command. For commands, whose process is
/// their own.
void UseReadersLanguage();

/// Likewise, texts are in his letters, and messages in the language of the sources.
void UseReadersLetters();

/// A language that was set, and how to set it again.
class LanguageSetting {
  public:
    /// The one that is set now.
    LanguageSetting();
    void Use() const;

  private:
    std::map<int, std::string> m_locales;  ///< by category
    std::optional<std::string> m_preference;
};

/// For as long as the object lives, messages are in the language of the parameter "ZET_LANG": what is written
/// into a file does not depend on who runs the command. What the library and the core say meanwhile is in
/// the reader's all the same. A language that the host does not have is a `Failure`.
///
/// The locale and the environment of the process stay as they are, since other threads use them; but a list
/// of preferred languages wins in every thread over the language that is set for it. A command changes its
/// process then, and to another program it is a `Failure`.
class WrittenLanguage {
  public:
    explicit WrittenLanguage(IZETCore& core);
    ~WrittenLanguage();
    WrittenLanguage(const WrittenLanguage&) = delete;
    WrittenLanguage& operator=(const WrittenLanguage&) = delete;

  private:
    void UseInThread(locale_t written, bool isTranslated);
    void UseInProcess(const std::string& locale, bool isTranslated);

    locale_t m_formerLocale{};                ///< of this thread, where no more is changed
    std::optional<LanguageSetting> m_former;  ///< else
    Text::LookUp m_formerLookUp = nullptr;    ///< none: nothing is changed
    ZETReadersLanguage m_formerMaking = nullptr;
    const LanguageSetting* m_formerReaders = nullptr;
};

}  // namespace ZET::Deploy

#endif
