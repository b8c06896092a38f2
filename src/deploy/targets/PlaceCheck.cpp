#include "deploy/targets/PlaceCheck.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

#include "deploy/host/FileState.h"
#include "deploy/host/Words.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

std::vector<Problem> CheckDirectory(const std::string& directory, const std::string& purpose,
                                    const std::string& name) {
    const auto problem = [&](const std::string& text, const std::string& remedy) {
        return std::vector<Problem>{{directory, 0, 0, text, remedy}};
    };
    struct stat status = {};
    if (stat(directory.c_str(), &status) != 0)
        return problem(Words("the directory of %s cannot be used: %s", purpose, std::strerror(errno)),
                       Words("create it, or correct %s", name));
    if (!S_ISDIR(status.st_mode))
        return problem(Words("is no directory, but %s is to be in it", purpose), Words("correct %s", name));
    if ((status.st_mode & S_IWOTH) != 0)
        return problem(Words("others may write the directory of %s", purpose), _("chmod o-w it"));
    if (access(directory.c_str(), W_OK | X_OK) != 0) {
        std::vector<Problem> ofUser =
            problem(Words("the directory of %s cannot be written: %s", purpose, std::strerror(errno)),
                    _("run as a user who may, or on a file system that can be written"));
        ofUser.front().isOfUser = true;
        return ofUser;
    }
    return {};
}

std::vector<Problem> CheckRegular(const std::string& path) {
    const FileState state = StateOf(path);
    if (!state.exists || state.IsRegular()) return {};
    return {{path, 0, 0, _("is no regular file"), _("move it away")}};
}

std::vector<Problem> CheckFileToWrite(const std::string& path, const std::string& entry, bool isCutShort) {
    std::vector<Problem> problems;
    const FileState state = StateOf(path);
    if (state.exists && !state.IsRegular())
        problems.push_back(
            {path, 0, 0, _("is no regular file"), Words("move it away, or correct %s", entry)});
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
    return Problem{temporary, 0, 0, Words("is in the way of writing %s", path), _("move it away")};
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
