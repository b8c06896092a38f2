#include "deploy/targets/SecretTexts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "deploy/host/FileBytes.h"
#include "deploy/state/store/Digest.h"

namespace ZET::Deploy {

namespace {

bool LookAtRegular(const std::string& file, struct stat& status) {
    return lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool IsReadable(const std::string& file) {
    return access(file.c_str(), R_OK) == 0;
}

std::string DigestOfFile(const std::string& file) {
    DigestInProgress digest;
    ReadChunks(file, [&](std::string_view lines) { digest.Add(lines); });
    return digest.Bytes();
}

}  // namespace

void SecretTexts::Add(const std::string& file) {
    struct stat status = {};
    if (!LookAtRegular(file, status)) return;
    m_files.emplace(status.st_dev, status.st_ino);
    if (status.st_size > 0) m_bySize[status.st_size].unread.push_back(file);
}

bool SecretTexts::HasTextOf(const std::string& file) {
    struct stat status = {};
    if (m_files.empty() || !LookAtRegular(file, status) || !IsReadable(file)) return false;
    if (m_files.contains({status.st_dev, status.st_ino})) return true;
    const auto ofSize = m_bySize.find(status.st_size);
    if (ofSize == m_bySize.end()) return false;
    Read(ofSize->second);
    const auto [first, last] = ofSize->second.byDigest.equal_range(DigestOfFile(file));
    return std::any_of(first, last, [&](const auto& each) { return HaveSameBytes(file, each.second); });
}

/// What this user cannot read, he has made no copy of.
void SecretTexts::Read(OfSize& files) {
    for (const std::string& file : std::exchange(files.unread, {}))
        if (IsReadable(file)) files.byDigest.emplace(DigestOfFile(file), file);
}

}  // namespace ZET::Deploy
