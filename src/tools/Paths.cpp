#include "Paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <deque>
#include <memory>
#include <vector>

#include "ExitStatus.h"

namespace ZET {

namespace {

constexpr int kMostLinks = 40;  // what the system itself allows

/// The target of a symbolic link; empty when the path is none.
std::string LinkTarget(const std::string& path) {
    char target[PATH_MAX];
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    return length > 0 ? std::string(target, static_cast<std::size_t>(length)) : std::string();
}

void PrependComponents(const std::string& path, std::deque<std::string>& components) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (end > begin) parts.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    components.insert(components.begin(), parts.begin(), parts.end());
}

/// Walks `path` inside `root`, component by component.
std::string ResolveInside(const std::string& root, const std::string& path) {
    std::deque<std::string> toWalk;
    PrependComponents(path, toWalk);
    std::vector<std::string> walked;
    const auto current = [&] {
        std::string name = root;
        for (const std::string& component : walked)
            name += "/" + component;
        return name;
    };
    for (int links = 0; !toWalk.empty();) {
        const std::string component = toWalk.front();
        toWalk.pop_front();
        if (component == ".") continue;
        if (component == "..") {
            if (!walked.empty()) walked.pop_back();
            continue;
        }
        walked.push_back(component);
        const std::string target = LinkTarget(current());
        if (target.empty()) continue;
        if (++links > kMostLinks)
            throw Failure(path +
                          ": too many symbolic links, as when one leads back to itself (correct the links)");
        walked.pop_back();
        if (target.front() == '/') walked.clear();
        PrependComponents(target, toWalk);
    }
    const std::string resolved = current();
    return resolved.empty() ? "/" : resolved;
}

std::string AbsolutePath(const std::string& path) {
    if (path.starts_with('/')) return path;
    const std::unique_ptr<char, decltype(&std::free)> directory(getcwd(nullptr, 0), std::free);
    if (!directory) throw Failure("the current directory cannot be found (change to one that exists)");
    return std::string(directory.get()) + "/" + path;
}

}  // namespace

Paths::Paths(const std::string& root) {
    if (root.empty()) return;
    struct stat status = {};
    if (stat(root.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        throw Failure(root + ": is no directory that can serve as root (create it, or correct --root)");
    }
    m_root = ResolveInside("", AbsolutePath(root));
    if (m_root == "/") m_root.clear();
}

std::string Paths::Resolved(const std::string& path) const {
    if (!m_root.empty()) return ResolveInside(m_root, path);
    return LinkTarget(path).empty() ? path : ResolveInside("", AbsolutePath(path));
}

std::string Paths::Canonical(const std::string& path) const {
    return ResolveInside(m_root, m_root.empty() ? AbsolutePath(path) : path);
}

std::string Paths::RealName(const std::string& path) const {
    try {
        return Canonical(NameInside(path));
    } catch (const Failure&) {
        return path;
    }
}

std::string Paths::WithRealDirectory(const std::string& path) const {
    if (HasRoot()) return path;
    const std::string directory = RealName(DirectoryOf(path));
    return (directory == "/" ? "" : directory) + "/" + BaseNameOf(path);
}

bool Paths::StaysInside(const std::string& path) const {
    return m_root.empty() || ResolveInside("", path).starts_with(m_root + "/");
}

std::string Paths::NameInside(const std::string& path) const {
    return path.starts_with(m_root + "/") ? path.substr(m_root.size()) : path;
}

std::string DirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string BaseNameOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace ZET
