#include "Sandbox.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "zet/ZETFormat.h"

namespace ZET {

namespace {

void Require(bool done, const std::string& what) {
    if (!done) throw std::runtime_error("The sandbox failed: " + what);
}

void WriteBytes(const std::string& path, const std::string& bytes, mode_t mode) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    Require(file >= 0, "open " + path);
    Require(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "write " + path);
    Require(fchmod(file, mode) == 0, "chmod " + path);
    close(file);
}

std::string ReadBytes(const std::string& path, std::size_t size) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return "(unreadable)";
    std::string bytes(size, '\0');
    Require(read(file, bytes.data(), size) == static_cast<ssize_t>(size), "read " + path);
    close(file);
    return bytes;
}

/// Where the bytes of a file of two names, or behind a link, are.
std::string Elsewhere(const std::string& path) {
    return path + ".elsewhere";
}

std::string LinkOf(const std::string& path) {
    return std::filesystem::read_symlink(path).string();
}

std::vector<std::string> NamesIn(const std::string& directory) {
    std::vector<std::string> names;
    DIR* handle = opendir(directory.c_str());
    if (handle == nullptr) return names;
    while (const dirent* entry = readdir(handle)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    closedir(handle);
    std::sort(names.begin(), names.end());
    return names;
}

void Describe(const std::string& path, std::string& text) {
    struct stat status = {};
    Require(lstat(path.c_str(), &status) == 0, "lstat " + path);
    text += path + " " + std::to_string(status.st_mode) + " of " + std::to_string(status.st_uid) + ":" +
            std::to_string(status.st_gid);
    if (S_ISREG(status.st_mode)) {
        text += " names " + std::to_string(status.st_nlink) + " ";
        text += Quoted(ReadBytes(path, static_cast<std::size_t>(status.st_size)));
    }
    if (S_ISLNK(status.st_mode)) text += " -> " + LinkOf(path);
    text += "\n";
    if (!S_ISDIR(status.st_mode)) return;
    for (const std::string& name : NamesIn(path))
        Describe(path + "/" + name, text);
}

void GiveAway(const std::string& path, const Place& place) {
    constexpr uid_t kUser = 65534;
    constexpr gid_t kGroup = 65533;
    if (!place.isForeign || geteuid() != 0) return;
    Require(lchown(path.c_str(), kUser, kGroup) == 0, "lchown " + path);
    // A new owner costs a file some bits of its mode.
    struct stat status = {};
    Require(lstat(path.c_str(), &status) == 0, "lstat " + path);
    if (S_ISREG(status.st_mode)) Require(chmod(path.c_str(), place.mode) == 0, "chmod " + path);
}

// A directory of memory saves the machine's disk tens of thousands of files.
std::string FastDirectory() {
    return access("/dev/shm", W_OK | X_OK) == 0 ? "/dev/shm"
                                                : std::filesystem::temp_directory_path().string();
}

void RemoveTree(const std::string& path) {
    for (const std::string& name : NamesIn(path)) {
        const std::string inner = path + "/" + name;
        if (unlink(inner.c_str()) != 0) RemoveTree(inner);
    }
    Require(rmdir(path.c_str()) == 0, "remove " + path);
}

}  // namespace

Sandbox::Sandbox() : m_root(FastDirectory() + "/zet-sandbox-XXXXXX") {
    Require(mkdtemp(m_root.data()) != nullptr, "mkdtemp " + m_root);
}

Sandbox::~Sandbox() {
    std::error_code ignored;  // nobody is hurt by a left-over directory
    std::filesystem::remove_all(m_root, ignored);
}

void Sandbox::Prepare(const Scenario& scenario) {
    RemoveTree(m_root);
    Require(mkdir(m_root.c_str(), 0755) == 0, "mkdir " + m_root);
    Require(mkdir(ConfigDirectory().c_str(), 0755) == 0, "mkdir templates");
    const bool fromTemplate = scenario.opening == Scenario::Opening::Template;
    if (fromTemplate) Put(ConfigDirectory() + "/" + TemplateName(), scenario.source);
    if (fromTemplate && scenario.targetDirectoryIsMissing) return;
    Require(mkdir((m_root + "/etc").c_str(), 0755) == 0, "mkdir etc");
    Put(FileName(), fromTemplate ? scenario.target : scenario.source);
    Put(FileName() + ZETTemporarySuffix, scenario.temporary);
    Put(FileName() + ZETReserveSuffix, scenario.reserve);
    Put(FileName() + ZETAbsenceSuffix, scenario.absence);
}

void Sandbox::Put(const std::string& path, const Place& place) {
    if (place.kind == Place::Kind::Missing) return;
    Make(path, place);
    GiveAway(path, place);
    if (place.kind == Place::Kind::Link) GiveAway(Elsewhere(path), place);
}

void Sandbox::Make(const std::string& path, const Place& place) {
    const std::string elsewhere = Elsewhere(path);
    switch (place.kind) {
        case Place::Kind::Missing:
            return;
        case Place::Kind::Regular:
            return WriteBytes(path, place.bytes, place.mode);
        case Place::Kind::Directory:
            return Require(mkdir(path.c_str(), 0755) == 0, "mkdir " + path);
        case Place::Kind::Fifo:
            return Require(mkfifo(path.c_str(), 0644) == 0, "mkfifo " + path);
        case Place::Kind::DanglingLink:
            return Require(symlink("nowhere", path.c_str()) == 0, "symlink " + path);
        case Place::Kind::Link:
            WriteBytes(elsewhere, place.bytes, place.mode);
            return Require(symlink(elsewhere.c_str(), path.c_str()) == 0, "symlink " + path);
        case Place::Kind::SecondName:
            WriteBytes(elsewhere, place.bytes, place.mode);
            return Require(link(elsewhere.c_str(), path.c_str()) == 0, "link " + path);
    }
}

bool Sandbox::HasTemporary() const {
    struct stat status = {};
    return lstat((FileName() + ZETTemporarySuffix).c_str(), &status) == 0;
}

std::string Sandbox::TextOfFile() const {
    return ReadBytes(FileName(), std::filesystem::file_size(FileName()));
}

std::string Sandbox::Snapshot() const {
    std::string text;
    Describe(m_root, text);
    return text;
}

}  // namespace ZET
