#include "deploy/host/StagingPlaces.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "deploy/host/Staging.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

using CText = std::unique_ptr<char, decltype(&std::free)>;

constexpr std::uintmax_t kMegabyte = std::uintmax_t{1} << 20;

/// Empty if it is not set, or holds a line feed, as the value of no parameter can.
std::string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr || std::strchr(value, '\n') != nullptr ? "" : value;
}

/// Whether nobody else can replace one of this user's entries.
bool IsClosed(const struct stat& directory, bool isEntryThere) {
    if (directory.st_uid != 0 && directory.st_uid != geteuid()) return false;
    const bool isKept = isEntryThere && (directory.st_mode & S_ISVTX) != 0;
    return isKept || (directory.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

/// Rendering takes more than the size of the templates, and the rest of the host needs room, too.
std::uintmax_t RoomFor(std::uintmax_t size) {
    if (size == Staging::kUnknownSize) return 64 * kMegabyte;
    return 16 * kMegabyte + 4 * std::min(size, UINTMAX_MAX / 8);
}

bool HasRoom(const struct statfs& system, std::uintmax_t size) {
    return std::uintmax_t{system.f_bavail} * static_cast<std::uintmax_t>(system.f_bsize) >= RoomFor(size);
}

bool IsInMemory(const struct statfs& system) {
    return system.f_type == TMPFS_MAGIC || system.f_type == RAMFS_MAGIC;
}

/// The runtime directory of this user's session; another user's does not count.
std::string RuntimeDirectory() {
    std::string directory = Variable("XDG_RUNTIME_DIR");
    struct stat status = {};
    const bool isOwn = directory.starts_with('/') && stat(directory.c_str(), &status) == 0 &&
                       status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
    return isOwn ? directory : "";
}

std::vector<std::string> PlacesInMemory(std::uintmax_t size) {
    std::vector<std::string> places;
    const std::string own = SafePlace(RuntimeDirectory());
    for (const std::string& place : {own, SafePlace("/run"), SafePlace("/dev/shm")}) {
        struct statfs system = {};
        const bool isUsable = !place.empty() && access(place.c_str(), W_OK | X_OK) == 0 &&
                              statfs(place.c_str(), &system) == 0 && HasRoom(system, size);
        if (isUsable && (place == own || IsInMemory(system))) places.push_back(place);
    }
    return places;
}

}  // namespace

std::string SafePlace(const std::string& directory) {
    if (directory.empty()) return "";
    bool isThere = true;
    std::string each = directory;
    CText real(nullptr, std::free);
    while (!(real = CText(realpath(each.c_str(), nullptr), std::free))) {
        std::string parent = DirectoryOf(each);
        if (errno != ENOENT || parent == each) return "";
        isThere = false;
        each = std::move(parent);
    }
    std::string place = isThere ? real.get() : directory;
    for (each = real.get();; each = DirectoryOf(each)) {
        struct stat status = {};
        if (stat(each.c_str(), &status) != 0 || !IsClosed(status, isThere)) return "";
        if (each == "/") return place;
        isThere = true;
    }
}

std::vector<std::string> PlacesForStaging(const std::string& lastResort, std::uintmax_t size) {
    const std::string named = Variable("TMPDIR");
    const std::string temporary = geteuid() == 0 ? SafePlace(named) : named;
    if (lastResort.empty() && !temporary.empty()) return {temporary};
    std::vector<std::string> places = PlacesInMemory(size);
    places.push_back(lastResort.empty() ? "/tmp" : lastResort);
    return places;
}

std::vector<std::string> PlacesOfStaging(const std::string& lastResort) {
    std::vector<std::string> places;
    for (const std::string& place :
         {Variable("XDG_RUNTIME_DIR"), "/run/user/" + std::to_string(geteuid()), std::string("/run"),
          std::string("/dev/shm"), Variable("TMPDIR"), std::string("/tmp"), lastResort}) {
        const bool isKnown = std::find(places.begin(), places.end(), place) != places.end();
        if (!place.empty() && !isKnown) places.push_back(place);
    }
    return places;
}

}  // namespace ZET::Deploy
