#include "cli/OutputStream.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "cli/Names.h"  // IWYU pragma: keep, no name of it is ever written
#include "deploy/host/Signals.h"

namespace ZET::Cli {

namespace {

constexpr std::size_t kMostKept = std::size_t{64} << 10;
constexpr int kSignalInterval = 250;       // ms; a signal just before the wait does not interrupt it
constexpr int kPatienceWithReader = 2000;  // ms; how long to wait for a reader after a signal

}  // namespace

OutputStream::OutputStream(int descriptor)
    : m_descriptor(descriptor), m_isTerminal(isatty(descriptor) == 1) {}

OutputStream::~OutputStream() {
    Flush();
}

void OutputStream::Write(std::string_view text) {
    m_text += text;
    if (m_isTerminal || m_text.size() >= kMostKept) Flush();
}

void OutputStream::Flush() noexcept {
    std::string_view rest = m_text;
    while (!m_isGivenUp && !rest.empty() && WriteSome(rest)) {
    }
    m_text.clear();
}

/// False if nothing more can be written.
bool OutputStream::WriteSome(std::string_view& text) noexcept {
    if (!WaitForRoom()) {
        m_isGivenUp = m_hasFailed = true;
        return false;
    }
    // A pipe that is ready has room for at least that much.
    const ssize_t count = write(m_descriptor, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
    if (count < 0) {
        if (errno == EINTR || errno == EAGAIN) return true;
        if (errno == EPIPE) return false;
        m_hasFailed = true;
        m_error = errno;
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(count));
    return true;
}

bool OutputStream::WaitForRoom() noexcept {
    struct pollfd room = {m_descriptor, POLLOUT, 0};
    // If waiting fails, writing reports the reason.
    while (!SignalGuard::Caught()) {
        const int count = poll(&room, 1, kSignalInterval);
        if (count > 0 || (count < 0 && errno != EINTR)) return true;
    }
    int count = 0;
    do {
        count = poll(&room, 1, kPatienceWithReader);
    } while (count < 0 && errno == EINTR);
    return count != 0;
}

}  // namespace ZET::Cli
