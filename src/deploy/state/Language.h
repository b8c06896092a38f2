#ifndef ZET_LANGUAGE_H
#define ZET_LANGUAGE_H

#include <locale.h>
#include <map>
#include <optional>
#include <string>

#include "zet/IZETCore.h"

namespace ZET::Deploy {

/// A `Failure` when the host does not have what the parameter "ZET_LANG" asks for with this value.
void RequireLanguage(const std::string& language);

/// From now on, messages are in the language of whoever runs the command.
void UseReadersLanguage();

/// For as long as the object lives, messages are in the language of the parameter "ZET_LANG": what is written
/// into a file does not depend on who runs the command. A language that the host does not have is a
/// `Failure`.
class WrittenLanguage {
  public:
    explicit WrittenLanguage(IZETCore& core);
    ~WrittenLanguage();
    WrittenLanguage(const WrittenLanguage&) = delete;
    WrittenLanguage& operator=(const WrittenLanguage&) = delete;

  private:
    locale_t m_formerLocale{};            ///< of this thread, where no more is changed; none: it is not
    std::map<int, std::string> m_former;  ///< else: the locale of each category
    std::optional<std::string> m_formerPreference;
};

}  // namespace ZET::Deploy

#endif
