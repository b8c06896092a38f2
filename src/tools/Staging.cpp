#include "Staging.h"

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>

#include "ExitStatus.h"

namespace ZET {

namespace {

namespace fs = std::filesystem;

constexpr char kPrefix[] = "zet-staging.";

std::string ParentOrDefault(const std::string& parent) {
    if (!parent.empty()) return parent;
    const char* temporary = std::getenv("TMPDIR");
    return temporary != nullptr && *temporary != '\0' ? temporary : "/tmp";
}

std::string MakeDirectory(const std::string& parent) {
    std::string path = parent + "/" + kPrefix + "XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw Failure(parent + ": no directory for temporary files can be made here: " +
                      std::strerror(errno) + " (make room, or name another directory with TMPDIR)");
    }
    return path;
}

/// The descriptor that holds the directory's lock; -1 when somebody else holds it or it is no directory of
/// this user.
int LockedDirectory(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) return -1;
    struct stat status = {};
    if (fstat(descriptor, &status) == 0 && status.st_uid == geteuid() && status.st_nlink > 0 &&
        flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        return descriptor;
    }
    close(descriptor);
    return -1;
}

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

int RemoveEntry(const char* path, const struct stat* /*status*/, int /*kind*/, struct FTW* /*place*/) {
    remove(path);
    return 0;
}

/// Nothing that throws: it has to work when memory has run out. A left-over is harmless, and the next run
/// that may do so removes it.
void RemoveTree(const std::string& path) noexcept {
    constexpr int kMostOpen = 16;
    nftw(path.c_str(), RemoveEntry, kMostOpen, FTW_DEPTH | FTW_PHYS);
}

}  // namespace

Staging::Staging(const std::string& parent) {
    const std::string place = ParentOrDefault(parent);
    // Between the making and the locking, another run can take the directory for a left-over and remove it.
    constexpr int kMostTries = 10;
    for (int tries = 0; m_lock < 0; ++tries) {
        if (tries == kMostTries) {
            throw Failure(place + ": temporary directories do not stay here (name another with TMPDIR)");
        }
        m_directory = MakeDirectory(place);
        m_lock = LockedDirectory(m_directory);
        if (m_lock >= 0 && !fs::exists(m_directory)) {
            close(m_lock);
            m_lock = -1;
        }
    }
}

Staging::~Staging() {
    RemoveTree(m_directory);
    close(m_lock);
}

std::string Staging::PathOf(const std::string& name) const {
    const fs::path path = m_directory / fs::path("/" + name).lexically_normal().relative_path();
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (error) {
        throw Failure(path.parent_path().string() + ": cannot be made: " + error.message() +
                      " (make room, or name another directory with TMPDIR)");
    }
    return path.string();
}

void Staging::RemoveLeftOvers(const std::string& parent) {
    const std::string place = ParentOrDefault(parent);
    // The iterator of std::filesystem ends the program when it runs out of memory.
    const std::unique_ptr<DIR, DirectoryCloser> directory(opendir(place.c_str()));
    if (!directory) return;
    while (const dirent* entry = readdir(directory.get())) {
        const std::string_view name = entry->d_name;
        if (!name.starts_with(kPrefix)) continue;
        const std::string path = place + "/" + std::string(name);
        const int lock = LockedDirectory(path);
        if (lock < 0) continue;
        RemoveTree(path);
        close(lock);
    }
}

}  // namespace ZET
