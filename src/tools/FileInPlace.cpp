#include "FileInPlace.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "ExitStatus.h"
#include "Paths.h"
#include "zet/ZETHost.h"

namespace ZET {

namespace {

/// Unlike anything that somebody would write, so that it can be found in a message.
constexpr char kHere[] = "././";

/// The directory in which relative names are looked up is the process's, unless a thread has one of its own.
bool HasDirectoryOfItsOwn() {
    return __libc_single_threaded != 0 || unshare(CLONE_FS) == 0;
}

std::string PartBeforeName(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

}  // namespace

thread_local FileInPlace::Visit* FileInPlace::s_visit = nullptr;

FileInPlace::FileInPlace(FoundFile found, const std::string& path, Access access)
    : m_path(path), m_found(std::move(found)), m_access(access) {
    if (!m_found.directory) {
        throw Failure(DirectoryOf(path) + ": is no directory that " + path +
                      " can be in (create it, or correct the path)");
    }
    const std::optional<Problem>& objection = m_found.judge.Objection();
    if (geteuid() == 0 && objection) throw Failure(objection->Describe());
}

std::optional<uid_t> FileInPlace::Holder() const {
    return geteuid() == 0 ? m_found.judge.Holder() : std::nullopt;
}

FileInPlace::Visit::Visit(const FileInPlace& file) : m_file(file) {
    Enter();
    s_visit = this;
}

FileInPlace::Visit::~Visit() {
    if (s_visit == this) Leave();
    s_visit = nullptr;
}

void FileInPlace::Visit::Enter() {
    m_name = m_file.m_path;
    if (m_file.m_access == Access::ByPath) return;
    GoThere();
    m_name = m_prefix + m_file.m_found.name;
    if (const std::optional<uid_t> holder = m_file.Holder())
        m_rights = std::make_unique<RightsOf>(*holder, m_file.m_found.status->st_gid);
    SetLogWording([this](const std::string& text) { return Readable(text); });
}

void FileInPlace::Visit::GoThere() {
    const int directory = m_file.m_found.directory->descriptor;
    if (HasDirectoryOfItsOwn()) m_former = OwnedDescriptor(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (m_former < 0) {
        // Where it cannot be gone to, or not come back from.
        m_prefix = "/proc/self/fd/" + std::to_string(directory) + "/";
        return;
    }
    m_prefix = kHere;
    if (fchdir(directory) != 0) {
        throw Failure(m_file.m_found.directory->name + ": cannot be used: " + std::strerror(errno) +
                      " (run the command as a user who may)");
    }
}

/// Nothing in here can fail but going back, and that only where the former directory was closed to this user
/// meanwhile; what is looked up there fails then, too.
void FileInPlace::Visit::Leave() noexcept {
    SetLogWording({});
    m_rights.reset();
    if (m_former >= 0) static_cast<void>(fchdir(m_former) == 0);
}

std::string FileInPlace::Visit::Readable(const std::string& text) const {
    std::string readable = text;
    if (m_prefix.empty()) return readable;
    const std::string before = PartBeforeName(m_file.m_path);
    for (std::size_t at = readable.find(m_prefix); at != std::string::npos;
         at = readable.find(m_prefix, at + before.size()))
        readable.replace(at, m_prefix.size(), before);
    return readable;
}

FileInPlace::Visit* FileInPlace::Suspend() {
    if (s_visit != nullptr) s_visit->Leave();
    return std::exchange(s_visit, nullptr);
}

void FileInPlace::Resume(Visit* visit) {
    s_visit = visit;
    if (visit != nullptr) visit->Enter();
}

}  // namespace ZET
