#include "deploy/lists/ListFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/Descriptor.h"
#include "posix/Printable.h"

namespace ZET::Deploy {

namespace {

constexpr std::size_t kMostBytesOfLine = std::size_t{64} * 1024;

/// The parser nests a table for each dot between names, and recurses through all of them.
constexpr std::ptrdiff_t kMostDotsOfLine = 500;

/// Empty if the remedy follows from the error number.
std::string RemedyToOpen(bool isShipped, int error) {
    if (error != ENOENT) return "";
    return isShipped ? _("install the product's templates, or correct ZET_CFG_TEMPL_DIR")
                     : _("correct the link, or remove it");
}

Descriptor OpenList(const std::string& file, bool isShipped) {
    Descriptor list(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (list < 0 || fstat(list, &status) != 0) {
        const int error = errno;
        throw SystemFailure({.file = file,
                             .text = _("the list of targets cannot be read"),
                             .remedy = RemedyToOpen(isShipped, error)},
                            error);
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure({.file = file,
                       .text = _("the list of targets is no regular file"),
                       .remedy = isShipped ? _("put the product's own in its place") : _("move it away")});
    }
    const bool othersMayWrite = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 || status.st_uid != 0;
    if (geteuid() == 0 && othersMayWrite) {
        throw Failure({.file = file,
                       .text = _("others may write the list of targets, so root does not use it"),
                       .remedy = _("chown root and chmod go-w")});
    }
    return list;
}

/// The index of the first byte that is no UTF-8, or npos.
std::size_t FirstOfNoText(std::string_view line) {
    for (std::size_t i = 0; i < line.size();) {
        const std::size_t length = CharacterAt(line, i);
        if (length == 0) return i;
        i += length;
    }
    return std::string_view::npos;
}

/// What is wrong with a line, without its file and number.
std::optional<Problem> ProblemOfListLine(std::string_view line) {
    const auto problem = [](std::size_t place, const std::string& text, const std::string& remedy) {
        return Problem{"", 0, static_cast<int>(place + 1), text, remedy};
    };
    if (line.size() > kMostBytesOfLine) {
        return Problem{"", 0, 0, Words("is longer than %s bytes", std::to_string(kMostBytesOfLine)),
                       _("shorten the line; an array may go over several")};
    }
    if (const std::size_t place = line.find('\0'); place != std::string_view::npos)
        return problem(place, _("holds a NUL byte"), _("take it out"));
    if (const std::size_t place = line.find('\r'); place != std::string_view::npos)
        return problem(place, _("holds a carriage return"), _("end the lines with a line feed only"));
    if (const std::size_t place = FirstOfNoText(line); place != std::string_view::npos)
        return problem(place, _("holds a byte that is no UTF-8"), _("save the list as UTF-8"));
    if (std::count(line.begin(), line.end(), '.') > kMostDotsOfLine) {
        return Problem{"", 0, 0, Words("has more than %s dots", std::to_string(kMostDotsOfLine)),
                       _("shorten the line; an array may go over several")};
    }
    return std::nullopt;
}

}  // namespace

std::string ReadListFile(const std::string& file, bool isShipped) {
    const Descriptor list = OpenList(file, isShipped);
    std::string text;
    char part[16384];
    while (text.size() <= kMostBytesOfList) {
        const ssize_t length = read(list, part, sizeof part);
        if (length == 0) return text;
        if (length > 0) text.append(part, static_cast<std::size_t>(length));
        if (length < 0 && errno != EINTR) {
            throw SystemFailure({.file = file,
                                 .text = _("reading the list of targets broke off"),
                                 .remedy = _("repair its file system")},
                                errno);
        }
    }
    text.resize(kMostBytesOfList + 1);
    return text;
}

std::optional<Problem> FormProblem(const std::string& file, std::string_view text) {
    if (text.size() > kMostBytesOfList) {
        return Problem{file, 0, 0,
                       Words("the list of targets is larger than %s MiB",
                             std::to_string(kMostBytesOfList / 1024 / 1024)),
                       _("take out what does not belong there")};
    }
    for (int number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (std::optional<Problem> problem = ProblemOfListLine(line)) {
            problem->file = file;
            problem->line = number;
            return problem;
        }
    }
    return std::nullopt;
}

}  // namespace ZET::Deploy
