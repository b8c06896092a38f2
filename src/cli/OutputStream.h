#ifndef ZET_OUTPUT_STREAM_H
#define ZET_OUTPUT_STREAM_H

#include <cstddef>
#include <string>
#include <string_view>

namespace ZET::Cli {

/// Standard output or standard error. After SIGINT, SIGTERM or SIGHUP, the command waits only briefly for a
/// reader that does not read.
class OutputStream {
  public:
    explicit OutputStream(int descriptor);
    ~OutputStream();
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    bool IsTerminal() const { return m_isTerminal; }

    /// Text for a terminal is written at once, other text at the next `Flush` or earlier.
    void Write(std::string_view text);

    void Flush() noexcept;

    /// Whether something could not be written. A reader that closes its pipe is no failure.
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
    std::string m_text;  ///< text that is not written yet
};

}  // namespace ZET::Cli

#endif
