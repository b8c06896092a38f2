#ifndef ZET_OUTPUT_STREAM_H
#define ZET_OUTPUT_STREAM_H

#include <cstddef>
#include <string>
#include <string_view>

namespace ZET::Cli {

/// Standard output or standard error. After SIGINT, SIGTERM or SIGHUP, a reader who does not read is waited
/// for a little while only: who asks a command to end does not wait for its report to be read.
class OutputStream {
  public:
    explicit OutputStream(int descriptor);
    ~OutputStream();
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    bool IsTerminal() const { return m_isTerminal; }

    /// What is written to a terminal is there at once, anything else at the next `Flush` or before.
    void Write(std::string_view text);

    void Flush() noexcept;

    /// Whether something could not be written. A reader that goes away has seen what it wanted to see.
    bool HasFailed() const { return m_hasFailed; }

    /// The `errno` of that; 0 where a reader was waited for no longer.
    int Error() const { return m_error; }

  private:
    bool WriteSome(std::string_view& text) noexcept;
    bool WaitForRoom() noexcept;

    int m_descriptor;
    bool m_isTerminal;
    bool m_hasFailed = false;
    int m_error = 0;
    bool m_isGivenUp = false;
    std::string m_text;  ///< not written yet
};

}  // namespace ZET::Cli

#endif
