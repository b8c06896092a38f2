#include "deploy/host/PathWalk.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

constexpr int kMostLinks = 40;         // what the system itself allows
constexpr std::size_t kMostHeld = 64;  // each is an open file

/// Adds the components in reverse order, so that the first one ends up last.
void PutOnTop(std::vector<std::string>& components, std::string_view path) {
    for (std::size_t end = path.size(); end > 0;) {
        const std::size_t slash = path.rfind('/', end - 1);
        const std::size_t begin = slash == std::string_view::npos ? 0 : slash + 1;
        const std::string_view part = path.substr(begin, end - begin);
        if (!part.empty() && part != ".") components.emplace_back(part);
        end = begin == 0 ? 0 : begin - 1;
    }
}

std::string TargetOf(int link, const std::string& path) {
    char target[PATH_MAX];
    const ssize_t length = readlinkat(link, "", target, sizeof target);
    if (length <= 0) FailOfCall(path, _("cannot be looked at"));
    return std::string(target, static_cast<std::size_t>(length));
}

std::shared_ptr<const HeldDirectory> Held(Descriptor descriptor, const std::string& name,
                                          const struct stat& status) {
    auto directory = std::make_shared<HeldDirectory>();
    directory->descriptor = std::move(descriptor);
    directory->name = name;
    directory->status = status;
    directory->hasOtherWriters = HasOtherWriters(name, status);
    return directory;
}

}  // namespace

PathWalk::PathWalk(HeldDirectories& known, const std::string& root, PathJudge judge, Unseen unseen)
    : m_known(known), m_judge(std::move(judge)), m_unseen(unseen) {
    const std::string name = root.empty() ? "/" : root;
    const auto start = m_known.byName.find(name);
    if (start != m_known.byName.end()) {
        m_walked.push_back(start->second);
        return;
    }
    Descriptor descriptor(open(name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (descriptor < 0) FailOfCall(name, _("cannot be looked at"));
    const struct stat status = StatusOfOpened(descriptor, name);
    m_walked.push_back(Remember(Held(std::move(descriptor), name, status)));
}

FoundFile PathWalk::To(const std::string& path) {
    m_path = path;
    const std::string_view name = std::string_view(path).substr(path.rfind('/') + 1);
    const std::string_view directory(path.data(), path.size() - name.size());
    const bool endsWithName = !name.empty() && name != "." && name != "..";
    const bool isWayKnown = endsWithName && GoKnownWay(directory);
    PutOnTop(m_toWalk, isWayKnown ? name : path);
    while (!m_toWalk.empty()) {
        if (endsWithName && !isWayKnown && m_toWalk.size() == 1) RememberWay(directory);
        const std::string component = std::move(m_toWalk.back());
        m_toWalk.pop_back();
        Take(component);
    }
    return Result();
}

/// Most walks of a run lead to files in a few directories. The directories on the way are held, so they need
/// not be looked at again: one lookup instead of one for each of them, and a tenth fewer instructions for a
/// commit of 1,000 targets.
bool PathWalk::GoKnownWay(std::string_view directory) {
    const auto known = m_known.ways.find(directory);
    if (known == m_known.ways.end()) return false;
    const WalkedWay& way = known->second;
    if (way.walked.front() != m_walked.front() || !way.judge.JudgesAs(m_judge)) return false;
    m_walked = way.walked;
    m_judge = way.judge;
    return true;
}

/// Does not remember a way with a link, which is looked at each time, or with something missing, which may
/// come.
void PathWalk::RememberWay(std::string_view directory) {
    if (m_links > 0 || !m_beyond.empty() || HasStepUp(m_path)) return;
    // All or nothing: memory may run out in between.
    WalkedWay way{m_walked, m_judge};
    m_known.ways.insert_or_assign(std::string(directory), std::move(way));
}

FoundFile PathWalk::ToLink(const std::string& path) {
    m_followsLast = false;
    return To(path);
}

void PathWalk::Take(const std::string& component) {
    if (component == "..") {
        GoUp();
    } else if (!m_beyond.empty()) {
        m_beyond.push_back(component);
    } else if (!GoIntoKnown(component)) {
        GoInto(component);
    }
}

void PathWalk::GoUp() {
    m_end.reset();
    if (!m_beyond.empty()) {
        m_beyond.pop_back();
    } else if (m_walked.size() > 1) {
        m_walked.pop_back();
    }
}

bool PathWalk::GoIntoKnown(const std::string& component) {
    const auto known = m_known.byName.find(NameOf(component));
    if (known == m_known.byName.end()) return false;
    JudgeStep(component, &known->second->status, IsEnd());
    m_walked.push_back(known->second);
    return true;
}

/// Most walks end at a file, which need not be held, or where there is none: one call instead of three.
bool PathWalk::EndAtFile(const std::string& component) {
    struct stat status = {};
    const int directory = m_walked.back()->descriptor;
    if (fstatat(directory, component.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT && EndAtNothing(component);
    if (S_ISDIR(status.st_mode) || S_ISLNK(status.st_mode)) return false;
    JudgeStep(component, &status, true);
    m_beyond.push_back(component);
    m_end = status;
    return true;
}

bool PathWalk::EndAtNothing(const std::string& component) {
    JudgeStep(component, nullptr, IsEnd());
    m_beyond.push_back(component);
    return true;
}

void PathWalk::GoInto(const std::string& component) {
    if (IsEnd() && EndAtFile(component)) return;
    constexpr int kFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
    Descriptor entry(openat(m_walked.back()->descriptor, component.c_str(), kFlags));
    if (entry < 0) {
        const bool isUnseen = errno == EACCES && m_unseen == Unseen::IsTakenAsWritten;
        if (errno != ENOENT && !isUnseen) FailOfCall(NameOf(component), _("cannot be looked at"));
        EndAtNothing(component);
        return;
    }
    const struct stat status = StatusOfOpened(entry, NameOf(component));
    if (S_ISLNK(status.st_mode) && (m_followsLast || !IsEnd())) return Follow(component, entry, status);
    JudgeStep(component, &status, IsEnd());
    if (S_ISDIR(status.st_mode)) {
        const std::string name = NameOf(component);
        m_walked.push_back(Remember(Held(std::move(entry), name, status)));
    } else {
        m_beyond.push_back(component);
        m_end = status;
    }
}

void PathWalk::Follow(const std::string& component, const Descriptor& link, const struct stat& status) {
    JudgeStep(component, &status, false);
    m_endsInLink = m_endsInLink || IsEnd();
    if (++m_links > kMostLinks) {
        throw Failure({.file = m_path,
                       .text = _("too many symbolic links, as when one leads back to itself"),
                       .remedy = _("correct the links")});
    }
    const std::string target = TargetOf(link, NameOf(component));
    if (target.front() == '/') m_walked.resize(1);
    PutOnTop(m_toWalk, target);
}

void PathWalk::JudgeStep(const std::string& entryName, const struct stat* entry, bool isLast) {
    const HeldDirectory& from = *m_walked.back();
    m_judge.Step({from.name, from.status, from.hasOtherWriters}, entryName, entry, isLast);
}

std::shared_ptr<const HeldDirectory> PathWalk::Remember(std::shared_ptr<const HeldDirectory> directory) {
    if (m_known.byName.size() >= kMostHeld) m_known = {};
    m_known.byName[directory->name] = directory;
    return directory;
}

std::string PathWalk::NameOf(const std::string& component) const {
    return PathIn(m_walked.back()->name, component);
}

FoundFile PathWalk::Result() const {
    FoundFile found{m_walked.back()->name, "", nullptr, std::nullopt, m_links > 0, m_endsInLink, m_judge};
    if (m_beyond.empty()) {
        found.directory = m_walked[m_walked.size() > 1 ? m_walked.size() - 2 : 0];
        found.name = m_walked.size() > 1 ? BaseNameOf(found.path) : ".";
        found.status = m_walked.back()->status;
        return found;
    }
    if (found.path == "/") found.path.clear();
    for (const std::string& component : m_beyond)
        found.path += "/" + component;
    found.name = m_beyond.back();
    if (m_beyond.size() > 1) return found;
    found.directory = m_walked.back();
    found.status = m_end;
    return found;
}

}  // namespace ZET::Deploy
