#include "deploy/host/FileInPlace.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/PathNames.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

/// Unlike anything that somebody would write, so that it can be found in messages.
constexpr char kHere[] = "././";

/// Relative names are looked up in a directory that all threads share, unless a thread gets one of its own.
bool HasDirectoryOfItsOwn() {
    return __libc_single_threaded != 0 || unshare(CLONE_FS) == 0;
}

/// None if this thread must not leave it, as another thread may look up names in it.
Descriptor OpenPresentDirectory() {
    return HasDirectoryOfItsOwn() ? Descriptor(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) : Descriptor();
}

void ReplaceAll(std::string& text, const std::string& former, const std::string& present) {
    for (std::size_t at = text.find(former); at != std::string::npos;
         at = text.find(former, at + present.size()))
        text.replace(at, former.size(), present);
}

}  // namespace

thread_local FileInPlace::Visit* FileInPlace::s_visit = nullptr;
thread_local const Descriptor* FileInPlace::s_start = nullptr;

FileInPlace::FileInPlace(FoundFile found, const std::string& path, Access access)
    : m_path(path), m_found(std::move(found)), m_access(access) {
    if (!m_found.directory) throw Failure(ProblemOfNoDirectory(path));
    if (geteuid() != 0) return;
    const std::optional<Problem>& objection = m_found.judge.Objection();
    if (objection) throw Failure(*objection);
    m_holder = m_found.judge.Holder();
}

FileState FileInPlace::State(const std::string& suffix) const {
    return StateIn(Directory(), NameInDirectory() + suffix, m_path + suffix);
}

FileVersion FileInPlace::Version() const {
    return VersionIn(Directory(), NameInDirectory(), m_path);
}

FileInPlace::Start::Start()
    : m_directory(OpenPresentDirectory()), m_outer(std::exchange(s_start, &m_directory)) {}

FileInPlace::Start::~Start() {
    s_start = m_outer;
}

FileInPlace::Visit::Visit(const FileInPlace& file) : m_file(file), m_name(file.m_path) {
    if (m_file.m_access == Access::FromWithinItsDirectory) FindWay();
    Enter();
    s_visit = this;
}

FileInPlace::Visit::~Visit() {
    if (s_visit == this) Leave();
    s_visit = nullptr;
}

/// If this thread cannot change into the directory and back, names go through its descriptor.
void FileInPlace::Visit::FindWay() {
    const int directory = m_file.m_found.directory->descriptor;
    if (s_start == nullptr) m_own = OpenPresentDirectory();
    m_former = s_start == nullptr ? m_own : *s_start;
    m_prefix = m_former >= 0 ? kHere : "/proc/self/fd/" + std::to_string(directory) + "/";
    m_name = m_prefix + m_file.m_found.name;
    if (const std::optional<uid_t> holder = m_file.Holder())
        m_rights.emplace(*holder, m_file.m_found.status->st_gid);
}

void FileInPlace::Visit::Enter() {
    if (m_former >= 0 && fchdir(m_file.m_found.directory->descriptor) != 0) {
        throw SystemFailure({.file = m_file.m_found.directory->name,
                             .text = _("cannot be used"),
                             .remedy = _("run the command as a user who may")},
                            errno);
    }
    try {
        if (m_rights) m_rights->Take();
        if (!m_prefix.empty())
            m_formerWording = SetLogWording([this](const std::string& text) { return Readable(text); });
    } catch (...) {
        Leave();
        throw;
    }
}

/// Only going back can fail, and only if the former directory was closed to this user meanwhile; then lookups
/// there fail, too.
void FileInPlace::Visit::Leave() noexcept {
    if (m_formerWording) SetLogWording(std::move(*m_formerWording));
    m_formerWording.reset();
    if (m_rights) m_rights->Drop();
    if (m_former >= 0) static_cast<void>(fchdir(m_former) == 0);
}

std::string FileInPlace::Visit::Readable(const std::string& text) const {
    if (m_prefix.empty()) return text;
    std::string readable = text;
    ReplaceAll(readable, m_prefix, PartBeforeName(m_file.m_path));
    // The directory itself is named only in quotes.
    ReplaceAll(readable, "'" + m_prefix.substr(0, m_prefix.size() - 1) + "'",
               "'" + DirectoryOf(m_file.m_path) + "'");
    return readable;
}

std::string FileInPlace::Visit::ReadablePath(const std::string& path) const {
    const bool isDirectory = !m_prefix.empty() && path + "/" == m_prefix;
    return isDirectory ? DirectoryOf(m_file.m_path) : Readable(path);
}

EZETHostError FileInPlace::Visit::Readable(const EZETHostError& error) const {
    ZETCause cause = error.GetCause();
    cause.path = ReadablePath(cause.path);
    cause.text = Readable(cause.text);
    return EZETHostError(Readable(error.GetMessage()), error.GetDetail(), cause);
}

Failure FileInPlace::Visit::Readable(const Failure& failure) const {
    Problem facts = failure.Facts();
    facts.file = ReadablePath(facts.file);
    facts.text = Readable(facts.text);
    facts.remedy = Readable(facts.remedy);
    return Failure(Readable(failure.what()), facts, failure.ErrorNumber());
}

FileInPlace::Visit* FileInPlace::Suspend() {
    if (s_visit != nullptr) s_visit->Leave();
    return std::exchange(s_visit, nullptr);
}

void FileInPlace::Resume(Visit* visit) {
    s_visit = visit;
    if (visit != nullptr) visit->Enter();
}

}  // namespace ZET::Deploy
