#include "deploy/host/Remedy.h"

#include <cerrno>
#include <cstring>

namespace ZET::Deploy {

namespace {

constexpr struct {
    int error;
    const char* remedy;
} kRemedies[] = {
    {EACCES, "run the command as a user who may"},
    {EPERM, "run the command as a user who may"},
    {EROFS, "let the file system be writable"},
    {ENOSPC, "make room, then run the command again"},
    {EDQUOT, "make room, then run the command again"},
    {EFBIG, "allow larger files, then run the command again"},
    {ENOENT, "create it, or correct the path"},
    {ENOTDIR, "correct the path"},
    {EISDIR, "move the directory away, or name a file"},
    {ELOOP, "correct the links"},
    {ENAMETOOLONG, "choose a shorter name"},
    {EMFILE, "let the command open more files"},
    {ENFILE, "let the system open more files"},
    {EIO, "repair or replace the file or its file system"},
};

}  // namespace

std::string RemedyFor(int error) {
    for (const auto& entry : kRemedies) {
        if (entry.error == error) return std::string(" (") + entry.remedy + ")";
    }
    return "";
}

std::string WithRemedy(const std::string& message, const std::string& otherwise) {
    if (message.ends_with(')')) return message;
    std::string text = message.substr(0, message.size() - (message.ends_with('.') ? 1 : 0));
    for (const auto& entry : kRemedies) {
        // The message was made in the reader's language, or in that of the files.
        if (text.ends_with(std::strerror(entry.error)) || text.ends_with(strerrordesc_np(entry.error)))
            return text + " (" + entry.remedy + ")";
    }
    return otherwise.empty() ? message : text + " (" + otherwise + ")";
}

}  // namespace ZET::Deploy
