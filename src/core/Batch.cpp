#include "Batch.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <new>
#include <system_error>
#include <thread>

#include "Message.h"
#include "Sync.h"
#include "posix/PathNames.h"
#include "zet/ZETHost.h"

namespace ZET::Core {

namespace {

thread_local Batch* present = nullptr;

/// Concurrent syncs share the file system's work: for 128 new files, one thread reaches 300 syncs a second,
/// eight reach 12,000.
constexpr std::size_t kThreads = 8;

/// Blocks all signals: threads that start meanwhile must not handle the caller's signals.
class NoSignals {
  public:
    NoSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_former);
    }
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

  private:
    sigset_t m_former;
};

/// Calls `work` in `count` threads, this one included; in fewer if the system grants fewer.
template <typename Work>
void InThreads(std::size_t count, const Work& work) {
    std::vector<std::thread> threads;
    threads.reserve(count);
    {
        const NoSignals noSignals;
        try {
            while (threads.size() + 1 < count)
                threads.emplace_back(work);
        } catch (const std::system_error&) {
            // Continue with fewer threads.
        } catch (const std::bad_alloc&) {
            // Likewise: the threads that were started must be joined.
        }
    }
    work();
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace

Batch::Batch() : m_user(::geteuid()) {
    present = this;
}

/// Removes unfinished copies, which nobody else knows of.
Batch::~Batch() {
    present = nullptr;
    for (const Collected& collected : m_files) {
        if (!collected.file.final.empty())
            ::unlinkat(collected.directory->descriptor.Number(), collected.file.name.c_str(), 0);
    }
    for (const auto& [key, directory] : m_directories) {
        if (directory.isToSync) SyncQuietly(directory.descriptor);
    }
}

Batch* Batch::Present() {
    return present != nullptr && IsSyncing() && ::geteuid() == present->m_user ? present : nullptr;
}

/// A relative path, or one below /proc, is meaningful only to the host at this moment; messages use the
/// subject's directory instead.
std::string Batch::Readable(const std::string& directory) const {
    const bool isOwn = directory.compare(0, 1, "/") == 0 && directory.compare(0, 6, "/proc/") != 0;
    return isOwn || m_subject.empty() ? directory : DirectoryOf(m_subject);
}

Batch::Held& Batch::Hold(int directory, const std::string& name) {
    const std::string path = Readable(name);
    struct stat status;
    if (::fstat(directory, &status) != 0)
        FailSystem(path, "Failed to open directory '%s': %m.", path.c_str());
    Held& held = m_directories[{status.st_dev, status.st_ino}];
    if (held.descriptor.IsOpen()) return held;
    held.path = path;
    held.descriptor.Reset(::fcntl(directory, F_DUPFD_CLOEXEC, 0));
    if (!held.descriptor.IsOpen()) FailSystem(path, "Failed to open directory '%s': %m.", path.c_str());
    return held;
}

void Batch::Collect(WaitingFile file, int directory, const std::string& path) {
    Held& held = Hold(directory, DirectoryOf(path));
    held.isToSync = true;
    m_files.push_back({std::move(file), &held, PathIn(held.path, BaseNameOf(path))});
}

void Batch::SyncLater(int directory, const std::string& name) {
    Hold(directory, name).isToSync = true;
}

void Batch::SyncFiles() const {
    std::atomic<std::size_t> next = 0;
    std::vector<int> errors(m_files.size());
    InThreads(std::min(kThreads, m_files.size()), [&] {
        for (std::size_t i = next++; i < m_files.size(); i = next++)
            if (!SyncQuietly(m_files[i].file.file)) errors[i] = errno;
    });
    for (std::size_t i = 0; i < errors.size(); ++i) {
        errno = errors[i];
        const std::string& path = m_files[i].path;
        if (errno != 0) FailSystem(path, "Failed to sync file '%s': %m.", path.c_str());
    }
}

void Batch::SyncDirectories() {
    for (auto& [key, directory] : m_directories) {
        if (directory.isToSync && !SyncQuietly(directory.descriptor))
            FailSystem(directory.path, "Failed to sync directory '%s': %m.", directory.path.c_str());
        directory.isToSync = false;
    }
}

void Batch::NameFiles() {
    SyncFiles();
    m_isCollecting = false;
    for (Collected& collected : m_files) {
        if (collected.file.final.empty()) continue;
        const int directory = collected.directory->descriptor.Number();
        if (::renameat(directory, collected.file.name.c_str(), directory, collected.file.final.c_str()) != 0)
            FailSystem(collected.path, "Failed to rename file '%s' to '%s': %m.", collected.file.name.c_str(),
                       collected.path.c_str());
        collected.file.final.clear();
    }
    m_files.clear();
    SyncDirectories();
}

void Batch::Finish() {
    NameFiles();
}

}  // namespace ZET::Core

namespace ZET {

class CZETBatch::Implementation : public Core::Batch {};

CZETBatch::CZETBatch() : m_implementation(std::make_unique<Implementation>()) {}

CZETBatch::~CZETBatch() = default;

void CZETBatch::SetSubject(const std::string& path) {
    m_implementation->SetSubject(path);
}

void CZETBatch::NameFiles() {
    m_implementation->NameFiles();
}

void CZETBatch::Finish() {
    m_implementation->Finish();
}

}  // namespace ZET
