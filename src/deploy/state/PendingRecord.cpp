#include "deploy/state/PendingRecord.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Staging.h"
#include "deploy/host/TextStreams.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/state/StateFile.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

/// What a run that was cut short can have left beside one of its files.
class LeftOvers {
  public:
    /// `begun` is when the run began to write.
    LeftOvers(HostProduct& product, const std::string& path, const struct timespec& begun)
        : m_product(product), m_path(path), m_begun(begun) {}

    /// `name` is that of the file, in its directory.
    void Clear(const std::string& name) {
        struct stat status = {};
        for (const std::string& owned : {name, name + ZETReserveSuffix}) {
            if (lstat(owned.c_str(), &status) == 0) m_owners.insert(status.st_uid);
        }
        ClearOne(name + ZETTemporarySuffix);
        for (const std::string& copy : Copies(name))
            ClearOne(copy);
    }

  private:
    std::vector<std::string> Copies(const std::string& name) const {
        std::vector<std::string> copies;
        const std::string own = BaseNameOf(name);
        const std::unique_ptr<DIR, DirectoryCloser> directory(opendir(DirectoryOf(name).c_str()));
        while (const dirent* entry = directory ? readdir(directory.get()) : nullptr) {
            for (const std::string& copied : {own, own + ZETReserveSuffix}) {
                if (IsCopyOf(entry->d_name, copied))
                    copies.push_back(DirectoryOf(name) + "/" + entry->d_name);
            }
        }
        return copies;
    }

    void ClearOne(const std::string& leftOver) {
        struct stat status = {};
        if (lstat(leftOver.c_str(), &status) != 0) return;
        const std::string shown = ParentOf(m_path) + BaseNameOf(leftOver);
        if (!IsOfTheRun(status)) {
            m_product.Out().Warning(shown +
                                    ": stays, as it cannot be what the run that was cut short left (look at "
                                    "it, and move it away)");
            return;
        }
        RemoveFile(leftOver);
        m_product.Out().Remark("removed " + shown + ", which a run that was cut short left");
    }

    bool IsOfTheRun(const struct stat& status) const {
        const auto at = [](const struct timespec& time) { return std::pair(time.tv_sec, time.tv_nsec); };
        return S_ISREG(status.st_mode) && status.st_nlink == 1 && m_owners.count(status.st_uid) != 0 &&
               at(status.st_ctim) >= at(m_begun);
    }

    static std::string ParentOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

    HostProduct& m_product;
    const std::string& m_path;
    const struct timespec m_begun;
    std::set<uid_t> m_owners{geteuid()};
};

}  // namespace

PendingRecord::PendingRecord(HostProduct& product, const std::vector<std::string>& paths)
    : m_file(FileOf(product)) {
    std::string text;
    for (const std::string& path : paths) {
        text += product.HostPaths().NameInside(path) + "\n";
    }
    try {
        ReplaceStateFile(m_file, text);
    } catch (...) {
        unlink(m_file.c_str());
        throw;
    }
}

// A record that stays is harmless: the next run removes it.
PendingRecord::~PendingRecord() {
    unlink(m_file.c_str());
}

std::string PendingRecord::FileOf(HostProduct& product) {
    return StateDirectory(product).Pending();
}

std::set<std::string> PendingRecord::Read(HostProduct& product) {
    std::set<std::string> paths;
    const std::string file = FileOf(product);
    if (!HasStateFile(file)) return paths;
    TextReader lines(ReadFileBytes(file));
    for (std::string line; std::getline(lines, line);) {
        const std::string path = product.HostPaths().FromInside(line);
        if (product.HostPaths().StaysInside(path)) paths.insert(path);
    }
    return paths;
}

std::set<std::string> PendingRecord::ClearLeftOvers(HostProduct& product) {
    const std::set<std::string> paths = Read(product);
    struct stat record = {};
    if (!paths.empty() && stat(FileOf(product).c_str(), &record) != 0) return {};
    for (const std::string& path : paths) {
        try {
            LeftOvers leftOvers(product, path, record.st_mtim);
            FileInPlace(product.HostPaths().FindReal(path, product.TrustedAt(path)), path)
                .Within([&](const std::string& name) { leftOvers.Clear(name); });
        } catch (const Failure& failure) {
            product.Out().Warning(failure.what());
        } catch (const EZETError& error) {
            product.Out().Warning(WithRemedy(error.what()));
        }
    }
    ReplaceStateFile(FileOf(product), "");
    return paths;
}

std::set<std::string> PendingRecord::ClearAllLeftOvers(HostProduct& product) {
    std::set<std::string> paths = ClearLeftOvers(product);
    Staging::RemoveLeftOvers(product.Param("ZET_VAR_LIB_DIR"));
    return paths;
}

}  // namespace ZET::Deploy
