#include "deploy/targets/PlaceCheck.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/OpenDirectory.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/Instructions.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

std::string PurposeOf(const std::string& ownDirectory) {
    if (ownDirectory == "ZET_CFG_DIR") return _("the templates' working copies");
    return ownDirectory == "ZET_VAR_LIB_DIR" ? _("the status") : _("the templates");
}

/// The remedy for an attribute that keeps even root from replacing files in the directory; null if it has
/// none.
const char* RemedyOfFixed(const std::string& directory) {
    struct statx status = {};
    if (statx(AT_FDCWD, directory.c_str(), 0, STATX_TYPE, &status) != 0) return nullptr;
    const auto attributes = status.stx_attributes & status.stx_attributes_mask;
    if ((attributes & STATX_ATTR_IMMUTABLE) != 0) return ZET_TEXT("chattr -i it");
    return (attributes & STATX_ATTR_APPEND) != 0 ? ZET_TEXT("chattr -a it") : nullptr;
}

}  // namespace

std::vector<Problem> CheckDirectory(const std::string& directory, const std::string& purpose,
                                    const std::string& name) {
    const auto problem = [&](const std::string& text, const std::string& remedy) {
        return std::vector<Problem>{{directory, 0, 0, text, remedy}};
    };
    struct stat status = {};
    if (stat(directory.c_str(), &status) != 0)
        return problem(Words("the directory of %s cannot be used: %s", purpose, ReasonOf(errno)),
                       Words("create it, or correct %s", name));
    if (!S_ISDIR(status.st_mode))
        return problem(Words("is no directory, but %s is to be in it", purpose), Words("correct %s", name));
    if ((status.st_mode & S_IWOTH) != 0)
        return problem(Words("others may write the directory of %s", purpose), RemedyOfOpen(status));
    if (const char* const remedy = RemedyOfFixed(directory))
        return problem(
            Words("the directory of %s has an attribute that keeps its files from being replaced", purpose),
            _(remedy));
    if (access(directory.c_str(), W_OK | X_OK) != 0) {
        const int error = errno;
        std::vector<Problem> problems =
            problem(Words("the directory of %s cannot be written: %s", purpose, ReasonOf(error)),
                    _("run as a user who may, or on a file system that can be written"));
        problems.front().isOfUser = error == EACCES;
        return problems;
    }
    return {};
}

std::vector<Problem> CheckOwnDirectory(const Paths& paths, const std::string& name,
                                       const std::string& directory) {
    std::vector<Problem> problems = CheckDirectory(directory, PurposeOf(name), name);
    if (!problems.empty()) return problems;
    if (std::optional<Problem> problem = CheckInstruction(paths, directory))
        problems.push_back(std::move(*problem));
    return problems;
}

namespace {

/// A file by its name in a directory, and by the path that the reader knows.
struct NamedFile {
    int directory;
    const std::string& name;
    const std::string& path;
    const Names* names = nullptr;  ///< all names in the directory; null: not known

    FileState StateOfCompanion(const char* suffix) const {
        const std::string companion = name + suffix;
        if (names != nullptr && !names->contains(companion)) return {};
        return StateIn(directory, companion, path + suffix);
    }
};

std::optional<Problem> ProblemOfCompanion(const NamedFile& file, const char* suffix, const FileState& state) {
    if (!state.exists || state.IsRegular()) return std::nullopt;
    return Problem{file.path + suffix, 0, 0, _("is no regular file"), _("move it away")};
}

std::optional<Problem> CheckTemporaryOf(const NamedFile& file, bool isCutShort) {
    if (isCutShort || !file.StateOfCompanion(ZETTemporarySuffix).exists) return std::nullopt;
    return Problem{file.path + ZETTemporarySuffix, 0, 0, Words("is in the way of writing %s", file.path),
                   _("move it away")};
}

/// `mode` is none if the file is not there.
FileToWrite CheckToWrite(const NamedFile& file, std::optional<mode_t> mode, const char* entry,
                         bool isCutShort) {
    FileToWrite checked;
    std::vector<Problem>& problems = checked.problems;
    if (mode && !S_ISREG(*mode))
        problems.push_back({file.path, 0, 0, _("is no regular file"),
                            Words("move it away, or correct %s", std::string(_(entry)))});
    if (mode) Append(problems, CheckReplaceableIn(file.directory, file.name, file.path));
    for (const char* const suffix : {ZETReserveSuffix, ZETAbsenceSuffix}) {
        const FileState state = file.StateOfCompanion(suffix);
        checked.hasCompanion = checked.hasCompanion || state.exists;
        Append(problems, ProblemOfCompanion(file, suffix, state));
    }
    Append(problems, CheckTemporaryOf(file, isCutShort));
    return checked;
}

}  // namespace

std::vector<Problem> CheckRegular(const std::string& path) {
    const FileState state = StateOf(path);
    if (!state.exists || state.IsRegular()) return {};
    return {ProblemOfIrregular(path, state)};
}

FileToWrite CheckFileToWrite(const std::string& path, const char* entry, bool isCutShort) {
    const FileState state = StateOf(path);
    return CheckToWrite({AT_FDCWD, path, path}, state.exists ? std::optional(state.mode) : std::nullopt,
                        entry, isCutShort);
}

FileToWrite CheckFileToWrite(const FoundFile& found, const std::string& path, const char* entry,
                             bool isCutShort, const Names* names) {
    if (!found.directory) return CheckFileToWrite(path, entry, isCutShort);
    return CheckToWrite({found.directory->descriptor, found.name, path, names},
                        found.status ? std::optional(found.status->st_mode) : std::nullopt, entry,
                        isCutShort);
}

std::optional<Problem> CheckTemporary(const std::string& path, bool isCutShort) {
    return CheckTemporaryOf({AT_FDCWD, path, path}, isCutShort);
}

std::vector<Problem> ObjectionsTo(const Paths& paths, const std::set<std::string>& names,
                                  const std::string& path) {
    std::vector<Problem> problems;
    const auto judge = [&](const FoundFile& place) { Append(problems, place.judge.Objection()); };
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
