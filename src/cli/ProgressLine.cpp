#include "cli/ProgressLine.h"
#include "cli/Translation.h"

#include <string>

namespace ZET::Cli {

namespace {

constexpr std::chrono::seconds kTimeWithoutLine{1};
constexpr std::chrono::milliseconds kInterval{100};

}  // namespace

ProgressLine::ProgressLine(OutputStream& output, bool isWanted)
    : m_output(output),
      m_isWanted(isWanted && output.IsTerminal()),
      m_next(Clock::now() + kTimeWithoutLine) {}

void ProgressLine::Show(std::size_t done, std::size_t total) {
    if (!m_isWanted || Clock::now() < m_next) return;
    m_next = Clock::now() + kInterval;
    Erase();
    const std::string text = Filled(_("%s of %s"), {std::to_string(done), std::to_string(total)});
    m_columns = text.size();
    m_output.Write(text);
}

void ProgressLine::Erase() {
    if (m_columns == 0) return;
    m_output.Write("\r" + std::string(m_columns, ' ') + "\r");
    m_columns = 0;
}

}  // namespace ZET::Cli
