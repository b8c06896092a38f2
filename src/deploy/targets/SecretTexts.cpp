#include "deploy/targets/SecretTexts.h"

#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string_view>

#include "deploy/host/FileBytes.h"
#include "deploy/host/FileVersion.h"
#include "deploy/state/store/Digest.h"
#include "deploy/targets/TemplateFiles.h"
#include "posix/Clock.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

std::optional<struct stat> StatusOfRegular(const std::string& file) {
    struct stat status = {};
    const bool isRegular = lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    return isRegular ? std::optional(status) : std::nullopt;
}

bool CanRead(const std::string& file) {
    return access(file.c_str(), R_OK) == 0;
}

std::string DigestOfFile(const std::string& file) {
    DigestInProgress digest;
    ReadChunks(file, [&](std::string_view lines) { digest.Add(lines); });
    return digest.Bytes();
}

}  // namespace

bool SecretTexts::IsIn(const std::string& file) {
    const std::optional<struct stat> status = StatusOfRegular(file);
    if (!status || !CanRead(file)) return false;
    if (!IsOlderThanLook(file, *status)) Look();
    return IsHardLink(*status) || IsCopy(file, *status);
}

void SecretTexts::Wrote(const std::string& file) {
    m_written.insert(file);
    if (IsOf(file)) LookAt(file);
}

/// A file that has not changed since the look cannot be a copy of a text that is newer than the look.
bool SecretTexts::IsOlderThanLook(const std::string& file, const struct stat& status) const {
    return HasLooked() && (m_written.count(file) != 0 || VersionFrom(status).changed < m_looked);
}

void SecretTexts::Look() {
    m_byInode.clear();
    m_bySize.clear();
    m_written.clear();
    m_looked = 0;
    const std::int64_t begun = CoarseNow();
    for (const std::string& file : m_files)
        LookAt(file);
    m_looked = begun;
}

void SecretTexts::LookAt(const std::string& file) {
    for (const char* const suffix : {"", ZETReserveSuffix, kKeptSuffix}) {
        const std::string name = file + suffix;
        const std::optional<struct stat> status = StatusOfRegular(name);
        if (!status) continue;
        m_byInode.emplace(std::pair(status->st_dev, status->st_ino), name);
        if (status->st_size != 0) m_bySize[status->st_size].unread.push_back(name);
    }
}

/// A file that this run wrote since then has another inode, and another file may have got its former one.
bool SecretTexts::IsHardLink(const struct stat& status) const {
    const auto [begin, end] = m_byInode.equal_range({status.st_dev, status.st_ino});
    return std::any_of(begin, end, [&](const auto& known) {
        const std::optional<struct stat> now = StatusOfRegular(known.second);
        return now && now->st_dev == status.st_dev && now->st_ino == status.st_ino;
    });
}

/// The bytes are compared, too: a text that was made to have the same digest is no copy.
bool SecretTexts::IsCopy(const std::string& file, const struct stat& status) {
    const auto known = m_bySize.find(status.st_size);
    if (known == m_bySize.end()) return false;
    SameSize& files = known->second;
    for (; !files.unread.empty(); files.unread.pop_back()) {
        const std::string& unread = files.unread.back();
        if (CanRead(unread)) files.byDigest.emplace(DigestOfFile(unread), unread);
    }
    const auto [begin, end] = files.byDigest.equal_range(DigestOfFile(file));
    return std::any_of(begin, end, [&](const auto& other) {
        return StatusOfRegular(other.second) && CanRead(other.second) && HaveSameBytes(file, other.second);
    });
}

}  // namespace ZET::Deploy
