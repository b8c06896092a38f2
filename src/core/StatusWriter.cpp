#include "StatusWriter.h"

#include <cerrno>
#include <ctime>
#include <string>

#include "Message.h"

namespace ZET::Core {

namespace {

std::string PresentTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts;
    char text[sizeof "2000-01-01T00:00:00Z" + 16];
    if (::gmtime_r(&now, &parts) == nullptr) FailSystem("", "Failed to tell the time: %m.");
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return std::string(text, length);
}

/// False if the stream failed, even if it is one that throws on failure.
bool Write(std::ostream& stream, const std::string& text) {
    try {
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
        stream.flush();
    } catch (const std::ios_base::failure&) {
        return false;
    }
    return !stream.fail();
}

}  // namespace

void WriteStatusLines(std::ostream& stream, StringMap settings) {
    settings["COMMIT_TIME"] = PresentTime();
    std::string text;
    for (const auto& [key, value] : settings)
        text.append(key).append("=").append(value).append("\n");
    errno = 0;
    if (Write(stream, text)) return;
    if (errno == 0) Fail("Failed to write the status: the stream is broken.");
    FailSystem("", "Failed to write the status: %m.");
}

}  // namespace ZET::Core
