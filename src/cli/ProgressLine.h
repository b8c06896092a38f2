#ifndef ZET_PROGRESS_LINE_H
#define ZET_PROGRESS_LINE_H

#include <chrono>
#include <cstddef>

#include "cli/OutputStream.h"

namespace ZET::Cli {

/// How far the work is, "312 of 1000", on a terminal, once it has lasted for a second.
class ProgressLine {
  public:
    /// `output` must live as long as the object. Where it is no terminal, nothing is shown.
    ProgressLine(OutputStream& output, bool isWanted);

    void Show(std::size_t done, std::size_t total);

    /// Before anything else is shown, and at the end.
    void Erase();

  private:
    using Clock = std::chrono::steady_clock;

    OutputStream& m_output;
    bool m_isWanted;
    Clock::time_point m_next;   ///< not before that
    std::size_t m_columns = 0;  ///< that it takes now
};

}  // namespace ZET::Cli

#endif
