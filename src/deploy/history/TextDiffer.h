#ifndef ZET_TEXT_DIFFER_H
#define ZET_TEXT_DIFFER_H

#include <string>

#include "deploy/host/Staging.h"

namespace ZET::Deploy {

/// Compares texts that are in no file.
class TextDiffer {
  public:
    /// The unified diff, labelled with `shownPath`. A null text is a file that is not there.
    std::string Diff(const std::string* older, const std::string* newer, const std::string& shownPath);

  private:
    std::string Staged(const std::string* text, const char* name) const;

    Staging m_staging;
};

}  // namespace ZET::Deploy

#endif
