#include "deploy/host/ListedDirectory.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"

namespace ZET::Deploy {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

}  // namespace

/// The iterator of std::filesystem ends the program when it runs out of memory.
std::vector<std::string> NamesIn(const Paths& paths, const std::string& directory,
                                 const std::string& suffix) {
    const std::string opened = paths.Resolved(paths.NameInside(directory));
    const std::unique_ptr<DIR, DirectoryCloser> entries(opendir(opened.c_str()));
    if (!entries && errno == ENOENT) return {};
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

std::string ReadInside(const Paths& paths, const std::string& file) {
    if (!paths.StaysInside(file))
        throw Failure({.file = file,
                       .text = _("is a link that leads out of the root directory"),
                       .remedy = _("put a file there")});
    return ReadFileBytes(paths.Resolved(paths.NameInside(file)));
}

}  // namespace ZET::Deploy
