#include "deploy/host/ListedDirectory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/Descriptor.h"
#include "posix/DirectoryStream.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

void RequireWayTo(const Paths& paths, const std::string& directory) {
    std::string found = directory;
    FileState state;
    while (state = StateOf(found), !state.exists)
        found = DirectoryOf(found);
    if (!S_ISLNK(state.mode)) return;
    const std::string end = paths.Resolved(paths.NameInside(found));
    if (StateOf(end).exists) return;
    throw Failure({.file = found,
                   .text = Words("is a link to %s, which is not there", end),
                   .remedy = _("correct the link, or remove it")});
}

/// Not by std::filesystem, whose iterator ends the program when memory runs out.
std::vector<std::string> NamesIn(const Paths& paths, const std::string& directory,
                                 const std::string& suffix) {
    const std::string opened = paths.Resolved(paths.NameInside(directory));
    const DirectoryStream entries(opendir(opened.c_str()));
    if (!entries && errno == ENOENT) {
        // A name that is no link is simply missing, so only the way to it is left to check.
        RequireWayTo(paths, opened == directory ? DirectoryOf(directory) : directory);
        return {};
    }
    std::vector<std::string> names;
    const dirent* entry = nullptr;
    while (entries && (errno = 0, entry = readdir(entries.get())) != nullptr) {
        const std::string_view name = entry->d_name;
        if (!name.starts_with('.') && name.ends_with(suffix)) names.emplace_back(name);
    }
    if (errno != 0) {
        const int error = errno;
        throw SystemFailure({.file = directory,
                             .text = _("cannot be read"),
                             .remedy = _("make it a directory that can be read")},
                            error);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<Names> AllNamesIn(int directory, std::size_t most) {
    Descriptor opened(openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const DirectoryStream entries(opened.IsOpen() ? fdopendir(opened) : nullptr);
    if (!entries) return std::nullopt;
    opened.Release();
    Names names;
    errno = 0;
    while (const dirent* const entry = readdir(entries.get()))
        if (names.emplace(entry->d_name); names.size() > most) return std::nullopt;
    return errno == 0 ? std::optional(std::move(names)) : std::nullopt;
}

std::string ReadInside(const Paths& paths, const std::string& file) {
    if (!paths.StaysInside(file))
        throw Failure({.file = file,
                       .text = _("is a link that leads out of the root directory"),
                       .remedy = _("put a file there")});
    return ReadFileBytes(paths.Resolved(paths.NameInside(file)));
}

}  // namespace ZET::Deploy
