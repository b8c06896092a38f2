#ifndef ZET_PAGER_H
#define ZET_PAGER_H

#include <string>

namespace ZET::Cli {

/// The program through which a reader at a terminal reads what is long: that of PAGER, or a usual one.
class Pager {
  public:
    Pager();

    /// Whether the reader wants one at all.
    bool IsWanted() const { return m_isWanted; }

    /// False when it could not be run; nobody has read the text then.
    bool Show(const std::string& text) const;

    /// That it could not, for the reader; empty where he did not choose it.
    std::string Trouble() const;

  private:
    [[noreturn]] void Run(int input) const;

    std::string m_command;  ///< empty: the usual one
    bool m_isWanted = true;
};

}  // namespace ZET::Cli

#endif
