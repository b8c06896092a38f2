#include "deploy/state/Writing.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/state/Instructions.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

/// The record has a path a line.
bool FitsRecord(const std::string& path) {
    return path.find('\n') == std::string::npos;
}

std::string AbsolutePath(const std::string& path) {
    return std::filesystem::absolute(path).string();
}

void RequireDirectory(HostProduct& product, const std::string& path) {
    const std::string directory = DirectoryOf(path);
    struct stat status = {};
    if (stat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        throw Failure(directory + ": is no directory that " + path +
                      " can be in (create it, or correct the path)");
    }
    if (access(directory.c_str(), W_OK | X_OK) == 0) return;
    const int error = errno;
    const std::string text = directory + ": cannot be written, so " + path +
                             " cannot be replaced: " + std::strerror(error) + RemedyFor(error);
    if (!product.Wanted().dryRun) throw Failure(text);
    product.Out().Warning(text);
}

/// Temporary files that a killed run left were cleared away where they are recorded, so what is still there
/// is somebody else's. Where they cannot be recorded, a plain file is taken for such a left-over.
void RequireFreeNames(const std::string& path, bool canRecord, const std::set<std::string>& leftOvers) {
    const bool isAnybodys = canRecord && FitsRecord(path) && leftOvers.count(AbsolutePath(path)) == 0;
    const std::string temporary = path + ZETTemporarySuffix;
    const FileState found = StateOf(temporary);
    if (found.exists && (!found.IsRegular() || found.links != 1 || isAnybodys)) {
        throw Failure(temporary + ": is in the way of writing " + path +
                      ", and not from here (move it away)");
    }
    const std::string reserve = path + ZETReserveSuffix;
    const FileState state = StateOf(reserve);
    if (state.exists && !state.IsRegular()) {
        throw Failure(reserve + ": is no regular file, so " + path + " has no reserve (move it away)");
    }
}

}  // namespace

Writing::Writing(HostProduct& product, const std::vector<std::string>& paths, Right right)
    : m_product(product),
      m_paths(paths),
      m_canRecord(access(product.Param("ZET_VAR_LIB_DIR").c_str(), W_OK | X_OK) == 0) {
    const bool isDryRun = product.Wanted().dryRun;
    RequireOwnInstructions(product);
    if (!isDryRun) {
        m_lock = right == Right::OfTheProduct ? std::make_unique<WriteLock>(product)
                                              : std::make_unique<WriteLock>(product, paths.front());
        // The record is that of whoever holds the product's lock.
        m_canRecord = m_lock->IsProducts();
        if (m_canRecord) ClearLeftOvers();
    }
    const std::set<std::string> leftOvers =
        isDryRun && m_canRecord ? PendingRecord::Read(product) : std::set<std::string>();
    for (const std::string& path : paths) {
        RequireDirectory(product, path);
        RequireFreeNames(path, m_canRecord, leftOvers);
    }
}

/// The directories of killed runs may be in many places: whoever writes a few files looks there only where
/// the run before him may have left one.
void Writing::ClearLeftOvers() {
    if (m_lock->MayFollowOneCutShort()) {
        PendingRecord::ClearAllLeftOvers(m_product);
    } else {
        PendingRecord::ClearLeftOvers(m_product);
    }
}

void Writing::Begin() {
    SignalGuard::Check();
    if (m_pending) return;
    std::vector<std::string> toRecord;
    for (const std::string& path : m_paths) {
        if (m_canRecord && FitsRecord(path)) toRecord.push_back(AbsolutePath(path));
    }
    if (!toRecord.empty()) m_pending = std::make_unique<PendingRecord>(m_product, toRecord);
}

}  // namespace ZET::Deploy
