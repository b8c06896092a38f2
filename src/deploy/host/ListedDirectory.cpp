#include "deploy/host/ListedDirectory.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"

namespace ZET::Deploy {

std::vector<std::string> NamesIn(const Paths& paths, const std::string& directory,
                                 const std::string& suffix) {
    std::error_code error;
    std::vector<std::string> names;
    const std::string opened = paths.Resolved(paths.NameInside(directory));
    std::filesystem::directory_iterator entry(opened, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::string name = entry->path().filename().string();
        if (!name.starts_with('.') && name.ends_with(suffix)) names.push_back(std::move(name));
    }
    if (error && error.value() != ENOENT)
        throw SystemFailure(
            {.file = directory, .text = "cannot be read", .remedy = "make it a directory that can be read"},
            error.value());
    std::sort(names.begin(), names.end());
    return names;
}

std::string ReadInside(const Paths& paths, const std::string& file) {
    if (!paths.StaysInside(file))
        throw Failure({.file = file,
                       .text = "is a link that leads out of the root directory",
                       .remedy = "put a file there"});
    return ReadFileBytes(paths.Resolved(paths.NameInside(file)));
}

}  // namespace ZET::Deploy
