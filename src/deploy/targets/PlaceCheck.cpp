#include "deploy/targets/PlaceCheck.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iterator>
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

std::vector<Problem> CheckRegular(const std::string& path) {
    const FileState state = StateOf(path);
    if (!state.exists || state.IsRegular()) return {};
    return {{path, 0, 0, "is no regular file", "move it away"}};
}

std::vector<Problem> CheckFileToWrite(const std::string& path, const std::string& entry, bool isCutShort) {
    std::vector<Problem> problems;
    const FileState state = StateOf(path);
    if (state.exists && !state.IsRegular())
        problems.push_back({path, 0, 0, "is no regular file", "move it away, or correct " + entry});
    if (std::optional<Problem> problem = CheckReplaceable(path)) problems.push_back(std::move(*problem));
    for (const char* const suffix : {ZETReserveSuffix, ZETAbsenceSuffix}) {
        std::vector<Problem> more = CheckRegular(path + suffix);
        problems.insert(problems.end(), std::make_move_iterator(more.begin()),
                        std::make_move_iterator(more.end()));
    }
    if (std::optional<Problem> problem = CheckTemporary(path, isCutShort))
        problems.push_back(std::move(*problem));
    return problems;
}

std::optional<Problem> CheckTemporary(const std::string& path, bool isCutShort) {
    const std::string temporary = path + ZETTemporarySuffix;
    if (isCutShort || !StateOf(temporary).exists) return std::nullopt;
    return Problem{temporary, 0, 0, "is in the way of writing " + path, "move it away"};
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
