#ifndef ZET_PROGRESS_LINE_H
#define ZET_PROGRESS_LINE_H

#include <chrono>
#include <cstddef>

#include "cli/OutputStream.h"

namespace ZET::Cli {

/// Shows the progress, "312 of 1000", on a terminal, once the work has lasted for a second.
class ProgressLine {
  public:
    /// `output` must outlive the object. Nothing is shown if it is no terminal.
    ProgressLine(OutputStream& output, bool isWanted);

    void Show(std::size_t done, std::size_t total);

    /// Must be called before anything else is shown, and at the end.
    void Erase();

  private:
    using Clock = std::chrono::steady_clock;

    OutputStream& m_output;
    bool m_isWanted;
    Clock::time_point m_next;   ///< when to show the next line
    std::size_t m_columns = 0;  ///< the width of the line that is shown
};

}  // namespace ZET::Cli

#endif
