#include "deploy/state/LeftOvers.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/CapturedFile.h"
#include "posix/Clock.h"
#include "posix/DirectoryStream.h"
#include "posix/PathNames.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

/// What a run that was cut short can have left beside one of its files.
class LeftOvers {
  public:
    LeftOvers(Observer& observer, const CutShortFile& file)
        : m_observer(observer), m_file(file), m_owners(file.owners) {
        m_owners.insert(geteuid());
    }

    /// `name` is the file's name in its directory.
    void Clear(const std::string& name) {
        struct stat status = {};
        for (const std::string& owned : {name, name + ZETReserveSuffix}) {
            if (lstat(owned.c_str(), &status) == 0) m_owners.insert(status.st_uid);
        }
        ClearOne(name + ZETTemporarySuffix);
        for (const char* const suffix : {ZETReserveSuffix, ZETAbsenceSuffix})
            ClearOne(name + suffix + ZETTemporarySuffix);
        for (const std::string& copy : Copies(name))
            ClearOne(copy);
    }

  private:
    std::vector<std::string> Copies(const std::string& name) const {
        std::vector<std::string> copies;
        const std::string own = BaseNameOf(name);
        const DirectoryStream directory(opendir(DirectoryOf(name).c_str()));
        while (const dirent* entry = directory ? readdir(directory.get()) : nullptr) {
            for (const std::string& copied : {own, own + ZETReserveSuffix}) {
                if (IsCopyOf(entry->d_name, copied))
                    copies.push_back(PathIn(DirectoryOf(name), entry->d_name));
            }
        }
        return copies;
    }

    void ClearOne(const std::string& leftOver) {
        struct stat status = {};
        if (lstat(leftOver.c_str(), &status) != 0) return;
        const std::string shown = PartBeforeName(m_file.path) + BaseNameOf(leftOver);
        if (!IsOfTheRun(status) || !IsTextOfTheRun(leftOver, status)) {
            m_observer.Warning(
                Words("%s: stays, as it cannot be what the run that was cut short left (look at it, and move "
                      "it away)",
                      shown));
            return;
        }
        RemoveFile(leftOver);
        m_observer.Remark(Words("removed %s, which a run that was cut short left", shown));
    }

    bool IsOfTheRun(const struct stat& status) const {
        return S_ISREG(status.st_mode) && status.st_nlink == 1 && m_owners.count(status.st_uid) != 0 &&
               NanosecondsOf(status.st_ctim) >= m_file.begun;
    }

    /// Others who write beside the file at the same time write something else.
    bool IsTextOfTheRun(const std::string& leftOver, const struct stat& status) const {
        if (m_file.isAnyText || status.st_size == 0) return true;
        return IsBegunText(leftOver, static_cast<std::size_t>(status.st_size)) ||
               std::any_of(m_file.whole.begin(), m_file.whole.end(),
                           [&](const RecordedState& state) { return HasRecordedText(leftOver, state); });
    }

    bool IsBegunText(const std::string& leftOver, std::size_t size) const {
        const bool isAnyAsLong = std::any_of(m_file.texts.begin(), m_file.texts.end(),
                                             [&](const std::string& text) { return size <= text.size(); });
        if (!isAnyAsLong) return false;
        const std::string begin = ReadFileBytes(leftOver);
        return std::any_of(m_file.texts.begin(), m_file.texts.end(),
                           [&](const std::string& text) { return text.starts_with(begin); });
    }

    Observer& m_observer;
    const CutShortFile& m_file;
    std::set<uid_t> m_owners;
};

}  // namespace

void ClearLeftOvers(Host& host, const CutShortFile& file) {
    try {
        LeftOvers leftOvers(host.Out(), file);
        FileInPlace(host.HostPaths().FindReal(file.path, host.TrustedAt(file.path)), file.path)
            .Within([&](const std::string& name) { leftOvers.Clear(name); });
    } catch (const Failure& failure) {
        host.Out().Warning(failure.what());
    } catch (const EZETError& error) {
        host.Out().Warning(FailureOf(error).what());
    }
}

}  // namespace ZET::Deploy
