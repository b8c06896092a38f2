#include "deploy/targets/PlaceCheck.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "deploy/host/FileState.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

std::vector<Problem> CheckDirectory(const std::string& directory, const std::string& purpose,
                                    const std::string& name) {
    const auto problem = [&](const std::string& text, const std::string& remedy) {
        return std::vector<Problem>{{directory, 0, 0, text, remedy}};
    };
    const std::string what = "the directory of " + purpose;
    struct stat status = {};
    if (stat(directory.c_str(), &status) != 0)
        return problem(what + " cannot be used: " + std::strerror(errno), "create it, or correct " + name);
    if (!S_ISDIR(status.st_mode))
        return problem("is no directory, but " + purpose + " is to be in it", "correct " + name);
    if ((status.st_mode & S_IWOTH) != 0) return problem("others may write " + what, "chmod o-w it");
    if (access(directory.c_str(), W_OK | X_OK) != 0) {
        std::vector<Problem> ofUser =
            problem(what + " cannot be written: " + std::strerror(errno),
                    "run as a user who may, or on a file system that can be written");
        ofUser.front().isOfUser = true;
        return ofUser;
    }
    return {};
}

namespace {

/// A file by its name in a directory, and by that which its reader knows.
struct NamedFile {
    int directory;
    const std::string& name;
    const std::string& path;

    FileState StateOfCompanion(const char* suffix) const {
        return StateIn(directory, name + suffix, path + suffix);
    }
};

std::optional<Problem> CheckRegularCompanion(const NamedFile& file, const char* suffix) {
    const FileState state = file.StateOfCompanion(suffix);
    if (!state.exists || state.IsRegular()) return std::nullopt;
    return Problem{file.path + suffix, 0, 0, "is no regular file", "move it away"};
}

std::optional<Problem> CheckTemporaryOf(const NamedFile& file, bool isCutShort) {
    if (isCutShort || !file.StateOfCompanion(ZETTemporarySuffix).exists) return std::nullopt;
    return Problem{file.path + ZETTemporarySuffix, 0, 0, "is in the way of writing " + file.path,
                   "move it away"};
}

/// `mode` is none of a file that is not there.
std::vector<Problem> CheckToWrite(const NamedFile& file, std::optional<mode_t> mode, const std::string& entry,
                                  bool isCutShort) {
    std::vector<Problem> problems;
    const auto add = [&](std::optional<Problem> problem) {
        if (problem) problems.push_back(std::move(*problem));
    };
    if (mode && !S_ISREG(*mode))
        problems.push_back({file.path, 0, 0, "is no regular file", "move it away, or correct " + entry});
    if (mode) add(CheckReplaceableIn(file.directory, file.name, file.path));
    for (const char* const suffix : {ZETReserveSuffix, ZETAbsenceSuffix})
        add(CheckRegularCompanion(file, suffix));
    add(CheckTemporaryOf(file, isCutShort));
    return problems;
}

}  // namespace

std::vector<Problem> CheckRegular(const std::string& path) {
    const std::optional<Problem> problem = CheckRegularCompanion({AT_FDCWD, path, path}, "");
    return problem ? std::vector<Problem>{*problem} : std::vector<Problem>();
}

std::vector<Problem> CheckFileToWrite(const std::string& path, const std::string& entry, bool isCutShort) {
    const FileState state = StateOf(path);
    return CheckToWrite({AT_FDCWD, path, path}, state.exists ? std::optional(state.mode) : std::nullopt,
                        entry, isCutShort);
}

std::vector<Problem> CheckFileToWrite(const FoundFile& found, const std::string& path,
                                      const std::string& entry, bool isCutShort) {
    if (!found.directory) return CheckFileToWrite(path, entry, isCutShort);
    return CheckToWrite({found.directory->descriptor, found.name, path},
                        found.status ? std::optional(found.status->st_mode) : std::nullopt, entry,
                        isCutShort);
}

std::optional<Problem> CheckTemporary(const std::string& path, bool isCutShort) {
    return CheckTemporaryOf({AT_FDCWD, path, path}, isCutShort);
}

std::vector<Problem> ObjectionsTo(const Paths& paths, const std::set<std::string>& names,
                                  const std::string& path) {
    std::vector<Problem> problems;
    const auto judge = [&](const FoundFile& place) {
        if (place.judge.Objection()) problems.push_back(*place.judge.Objection());
    };
    for (const std::string& name : names)
        judge(paths.Find(name));
    if (names.empty()) judge(paths.FindReal(path));
    return problems;
}

void WarnOfRights(Observer& observer, std::vector<Problem>& problems) {
    std::erase_if(problems, [&](const Problem& problem) {
        if (problem.isOfUser) observer.Warning(problem.Describe());
        return problem.isOfUser;
    });
}

}  // namespace ZET::Deploy
