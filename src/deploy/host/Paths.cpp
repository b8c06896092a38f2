#include "deploy/host/Paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "deploy/host/Accounts.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

bool IsLink(const std::string& path) {
    char target[1];
    if (readlink(path.c_str(), target, sizeof target) >= 0) return true;
    if (errno == EINVAL || errno == ENOENT || errno == ENOTDIR) return false;
    FailOfCall(path, _("cannot be looked at"));
}

}  // namespace

std::string AbsolutePath(const std::string& path) {
    if (path.starts_with('/')) return path;
    const std::unique_ptr<char, decltype(&std::free)> directory(getcwd(nullptr, 0), std::free);
    if (!directory)
        throw Failure(
            {.text = _("the current directory cannot be found"), .remedy = _("change to one that exists")},
            errno);
    return PathIn(directory.get(), path);
}

Paths::Paths(const std::string& root) {
    if (root.empty()) return;
    struct stat status = {};
    if (stat(root.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        throw Failure({.file = root,
                       .text = _("is no directory that can serve as root"),
                       .remedy = _("create it, or correct --root")});
    }
    m_root = Walk("", PathWalk::Unseen::Fails).To(AbsolutePath(root)).path;
    m_rootsOwners.push_back(status.st_uid);
    m_judge = PathJudge(m_rootsOwners);
    if (m_root == "/") m_root.clear();
}

PathJudge Paths::Judge(const std::string& trusted) const {
    if (trusted.empty()) return m_judge;
    std::vector<uid_t> harmless = m_rootsOwners;
    if (const std::optional<User> user = UserNamed(*this, trusted)) harmless.push_back(user->number);
    return PathJudge(std::move(harmless));
}

PathWalk Paths::Walk(const std::string& root, PathWalk::Unseen unseen, const std::string& trusted) const {
    return PathWalk(m_known, root, Judge(trusted), unseen);
}

/// Under a root, a relative path begins at the root.
std::string Paths::StartOf(const std::string& path) const {
    return HasRoot() ? path : AbsolutePath(path);
}

std::string Paths::Resolved(const std::string& path) const {
    if (!HasRoot() && !IsLink(path)) return path;
    return Find(path).path;
}

std::string Paths::Resolved(const std::string& path, const FoundFile& found) const {
    return HasRoot() || found.endsInLink ? found.path : path;
}

FoundFile Paths::Find(const std::string& path, const std::string& trusted) const {
    return Walk(m_root, PathWalk::Unseen::Fails, trusted).To(StartOf(path));
}

FoundFile Paths::FindReal(const std::string& path, const std::string& trusted) const {
    return Walk(m_root, PathWalk::Unseen::Fails, trusted).ToLink(StartOf(NameInside(path)));
}

std::string Paths::Canonical(const std::string& path) const {
    return Walk(m_root, PathWalk::Unseen::IsTakenAsWritten).To(StartOf(path)).path;
}

std::string Paths::RealName(const std::string& path) const {
    try {
        return Canonical(NameInside(path));
    } catch (const Failure&) {
        return path;
    }
}

std::string Paths::WithRealDirectory(const std::string& path, PathWalk::Unseen unseen) const {
    if (HasRoot()) return path;
    const std::string directory = Walk("", unseen).To(StartOf(DirectoryOf(path))).path;
    return PathIn(directory, BaseNameOf(path));
}

std::optional<std::string> Paths::NewNameOf(const std::string& directory) const {
    try {
        const FoundFile found = Find(directory);
        const bool isRoots = !found.judge.Objection() && !found.judge.Holder();
        if (!found.isThroughLink || !isRoots || !found.status || !S_ISDIR(found.status->st_mode))
            return std::nullopt;
        return NameInside(PathIn(found.path, ""));
    } catch (const Failure&) {
        return std::nullopt;
    }
}

bool Paths::StaysInside(const std::string& path) const {
    if (!HasRoot()) return true;
    return IsBelow(Walk("", PathWalk::Unseen::IsTakenAsWritten).To(path).path, m_root);
}

std::string Paths::NameInside(const std::string& path) const {
    return IsBelow(path, m_root) ? path.substr(m_root.size()) : path;
}

}  // namespace ZET::Deploy
