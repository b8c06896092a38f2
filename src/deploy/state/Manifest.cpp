#include "deploy/state/Manifest.h"

#include <sys/stat.h>

#include <cerrno>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/TextStreams.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/state/StateFile.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

/// A file to which no way leads any more keeps the name that it had.
std::string NameOf(const Paths& paths, const std::string& recorded) {
    const std::string path = paths.FromInside(recorded);
    try {
        return paths.WithRealDirectory(path, PathWalk::Unseen::IsTakenAsWritten);
    } catch (const LinkLoop&) {
        return path;
    }
}

}  // namespace

std::string Manifest::FileOf(HostProduct& product, const std::string& role) {
    return StateDirectory(product).Manifest(role);
}

Manifest::Manifest(HostProduct& product, const std::string& role)
    : Manifest(product, role, Damaged::IsFailure) {}

Manifest::Manifest(HostProduct& product, const std::string& role, Damaged damaged)
    : m_product(product), m_file(FileOf(product, role)) {
    try {
        Read();
    } catch (const Damage& failure) {
        if (damaged == Damaged::IsFailure) throw;
        m_isDamaged = true;
        m_entries.clear();
        product.Out().Warning(failure.what());
    }
}

void Manifest::Read() {
    if (!HasStateFile(m_file)) return;
    TextReader lines(ReadFileBytes(m_file));
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        TextReader words(line);
        Entry entry;
        std::string path;
        words >> entry.inode >> entry.size >> entry.time >> std::oct >> entry.mode >> std::ws;
        if (!words || !std::getline(words, path) || path.front() != '/') {
            throw Damage({.file = m_file,
                          .line = number,
                          .text = "is no line INODE SIZE MTIME MODE PATH",
                          .remedy = "remove the file, then commit again"});
        }
        Add(NameOf(m_product.HostPaths(), path), entry);
    }
}

// Of several names that led to one file, the last one written to tells what it is.
void Manifest::Add(const std::string& path, const Entry& entry) {
    const auto [known, isNew] = m_entries.emplace(path, entry);
    if (!isNew && entry == EntryOf(path)) known->second = entry;
}

Manifest::Entry Manifest::EntryOf(const std::string& path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return {};
        throw SystemFailure({.file = path,
                             .text = "its status cannot be read",
                             .remedy = "run the command as a user who may search its directory"},
                            errno);
    }
    constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
    return {status.st_ino, static_cast<std::uint64_t>(status.st_size),
            status.st_mtim.tv_sec * kNanosecondsPerSecond + status.st_mtim.tv_nsec, status.st_mode};
}

std::vector<std::string> Manifest::Paths() const {
    std::vector<std::string> paths;
    for (const auto& [path, entry] : m_entries)
        paths.push_back(path);
    return paths;
}

bool Manifest::IsUntouched(const std::string& path) const {
    const auto entry = m_entries.find(path);
    return entry != m_entries.end() && entry->second == EntryOf(path);
}

bool Manifest::IsEdited(HostProduct& product, const std::string& path) {
    bool isRecorded = false;
    for (const char* role : {kServer, kClient}) {
        const Manifest manifest(product, role);
        if (manifest.IsUntouched(path)) return false;
        isRecorded = isRecorded || manifest.Has(path);
    }
    return isRecorded;
}

void Manifest::Record(const std::string& path) {
    m_entries[path] = EntryOf(path);
}

void Manifest::Save() const {
    if (m_isDamaged) return;
    TextWriter text;
    for (const auto& [path, entry] : m_entries) {
        text << std::dec << entry.inode << ' ' << entry.size << ' ' << entry.time << ' ' << std::oct
             << entry.mode << ' ' << m_product.HostPaths().NameInside(path) << '\n';
    }
    ReplaceStateFile(m_file, text.str());
}

}  // namespace ZET::Deploy
