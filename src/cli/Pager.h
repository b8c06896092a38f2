#ifndef ZET_PAGER_H
#define ZET_PAGER_H

#include <string>

namespace ZET::Cli {

/// The program that shows long text to a user at a terminal: that of PAGER, or a usual one.
class Pager {
  public:
    Pager();

    /// Whether the user wants one at all.
    bool IsWanted() const { return m_isWanted; }

    /// False if it could not be run; the text was not shown then.
    bool Show(const std::string& text) const;

    /// A message that it could not be run; empty if the user did not choose it.
    std::string Trouble() const;

  private:
    [[noreturn]] void Run(int input) const;

    std::string m_command;  ///< empty for the usual one
    bool m_isWanted = true;
};

}  // namespace ZET::Cli

#endif
