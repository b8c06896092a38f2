#include "deploy/host/StagingPlaces.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "deploy/host/Staging.h"

namespace ZET::Deploy {

namespace {

constexpr std::uintmax_t kMegabyte = std::uintmax_t{1} << 20;

/// Empty when it is not set.
std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// Nobody else can put another directory in the place of one that this user makes there.
bool IsSafe(const std::string& directory) {
    struct stat status = {};
    if (stat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
    if (status.st_uid != 0 && status.st_uid != geteuid()) return false;
    return (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 || (status.st_mode & S_ISVTX) != 0;
}

/// Rendering takes more than the templates; what is left is for the rest of the host.
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

/// The directory that the session of this user has for such things; other users' do not count.
std::string RuntimeDirectory() {
    std::string directory = Variable("XDG_RUNTIME_DIR");
    struct stat status = {};
    const bool isOwn = directory.starts_with('/') && stat(directory.c_str(), &status) == 0 &&
                       status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
    return isOwn ? directory : "";
}

std::vector<std::string> PlacesInMemory(std::uintmax_t size) {
    std::vector<std::string> places;
    const std::string own = RuntimeDirectory();
    for (const std::string& place : {own, std::string("/run"), std::string("/dev/shm")}) {
        struct statfs system = {};
        const bool isUsable = !place.empty() && access(place.c_str(), W_OK | X_OK) == 0 && IsSafe(place) &&
                              statfs(place.c_str(), &system) == 0 && HasRoom(system, size);
        if (isUsable && (place == own || IsInMemory(system))) places.push_back(place);
    }
    return places;
}

}  // namespace

std::vector<std::string> PlacesForStaging(const std::string& lastResort, std::uintmax_t size) {
    const std::string temporary = Variable("TMPDIR");
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
