#include "ParameterFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Characters.h"
#include "Message.h"
#include "PathArgument.h"
#include "posix/Descriptor.h"
#include "posix/Printable.h"
#include "posix/ReadWrite.h"

// The catalogue holds each of these messages as a whole, with place and remedy; the error also has the parts.
#define FAIL_IN_FILE(error, what, cure)                                                                 \
    FailKnowing({.path = path, .errorNumber = (error), .text = Message(what), .remedy = Message(cure)}, \
                "%s: " what " (" cure ")", path.c_str())
#define FAIL_IN_LINE(what, cure, ...)                                                                  \
    FailKnowing(                                                                                       \
        {.path = path, .line = number, .text = Message(what, ##__VA_ARGS__), .remedy = Message(cure)}, \
        "%s:%zu: " what " (" cure ")", path.c_str(), number, ##__VA_ARGS__)

namespace ZET::Core {

namespace {

/// What "\s" stands for in a regular expression.
constexpr std::string_view kBlanks = " \t\v\f\r";

bool IsLetterOfName(char c) {
    return IsLetter(c) || c == '_';
}

/// Never blocks: anything but a regular file is refused.
std::string ReadWhole(const std::string& path) {
    const auto fail = [&] {
        const int error = errno;
        FAIL_IN_FILE(error, "cannot be read: %m", "name a configuration file that exists and is readable");
    };
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status;
    if (!file.IsOpen() && IsDanglingLink(path))
        FAIL_IN_FILE(0, "is a link that leads nowhere", "remove it, or make what it names");
    if (!file.IsOpen() || ::fstat(file.Number(), &status) != 0) fail();
    if (!S_ISREG(status.st_mode))
        FAIL_IN_FILE(0, "cannot be read: not a regular file", "name a configuration file");
    std::string text;
    char buffer[4096];
    while (true) {
        const ssize_t size = ReadSome(file, buffer, sizeof buffer);
        if (size < 0) fail();
        if (size == 0) return text;
        text.append(buffer, static_cast<std::size_t>(size));
    }
}

ParameterLine SplitLine(const std::string& path, std::size_t number, std::string_view line) {
    const std::size_t equals = line.find('=');
    if (line.find('\0') != std::string_view::npos) FAIL_IN_LINE("the line holds a NUL byte", "remove it");
    if (equals == std::string_view::npos)
        FAIL_IN_LINE("no \"=\" in the line", "write NAME=value, or \"#\" before a comment");
    const std::string_view name = line.substr(0, equals);
    if (!name.empty() && kBlanks.find(name.back()) != std::string_view::npos)
        FAIL_IN_LINE("a blank before \"=\"", "write NAME=value without it");
    if (!IsParameterName(name))
        FAIL_IN_LINE("'%s' is no name of a parameter", "use letters, digits and \"_\", no digit first",
                     Printable(name).c_str());
    if (line.back() == '\r')
        Warn("%s:%zu: the value of %s ends with a carriage return (save the file with plain line feeds)",
             path.c_str(), number, std::string(name).c_str());
    return {number, name, line.substr(equals + 1)};
}

}  // namespace

bool IsParameterName(std::string_view name) {
    if (name.empty() || IsDigit(name.front())) return false;
    for (const char c : name)
        if (!IsLetterOfName(c) && !IsDigit(c)) return false;
    return true;
}

void ReadParameterFile(const std::string& path, const std::function<void(const ParameterLine&)>& take) {
    const std::string text = ReadWhole(path);
    std::string_view rest = text;
    for (std::size_t number = 1; !rest.empty(); number++) {
        const std::size_t end = rest.find('\n');
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        const std::size_t start = line.find_first_not_of(kBlanks);
        if (start == std::string_view::npos || line[start] == '#') continue;
        take(SplitLine(path, number, line.substr(start)));
    }
}

}  // namespace ZET::Core
