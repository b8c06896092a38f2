#ifndef ZET_POSIX_PATH_NAMES_H
#define ZET_POSIX_PATH_NAMES_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

/// File names as texts: nothing is looked up, so links are not followed.
namespace ZET {

/// The part before the last name, including its "/"; empty if there is none.
inline std::string PartBeforeName(std::string_view path) {
    return std::string(path.substr(0, path.rfind('/') + 1));
}

/// The part after the last "/".
inline std::string BaseNameOf(std::string_view path) {
    return std::string(path.substr(path.rfind('/') + 1));
}

/// The directory that contains the file; "." for a name alone.
inline std::string DirectoryOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return ".";
    return std::string(path.substr(0, slash == 0 ? 1 : slash));
}

/// The path of that name in the directory, which may be "/".
inline std::string PathIn(std::string_view directory, std::string_view name) {
    std::string path;
    path.reserve(directory.size() + 1 + name.size());
    path = directory;
    if (!path.ends_with('/')) path += '/';
    return path.append(name);
}

/// Whether the path is inside the directory, judged by the text alone; an empty directory stands for "/".
inline bool IsBelow(std::string_view path, std::string_view directory) {
    return path.size() > directory.size() && path[directory.size()] == '/' && path.starts_with(directory);
}

/// Whether a part of the path is "..".
inline bool HasStepUp(std::string_view path) {
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (path.substr(start, end - start) == "..") return true;
        start = end + 1;
    }
    return false;
}

/// Removes ".", "..", empty parts and a trailing "/" from an absolute path; ".." removes the part before it
/// and has no effect at the root.
inline std::string Normalised(std::string_view path) {
    std::string result;
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string_view part = path.substr(start, end - start);
        start = end + 1;
        if (part == "..") {
            result.resize(result.empty() ? 0 : result.rfind('/'));
        } else if (!part.empty() && part != ".") {
            result.append("/").append(part);
        }
    }
    return result.empty() ? "/" : result;
}

/// Whether the relative name of something below a directory has no other spelling that is shorter.
inline bool IsPlainName(std::string_view name) {
    return Normalised(name) == "/" + std::string(name);
}

}  // namespace ZET

#endif
