#include "TargetCheck.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <map>

#include "Diff.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "PendingRecord.h"
#include "Render.h"
#include "TemplateCheck.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

void Append(std::vector<Problem>& problems, std::vector<Problem> more) {
    problems.insert(problems.end(), std::make_move_iterator(more.begin()),
                    std::make_move_iterator(more.end()));
}

/// What is wrong with a directory that files are to be written in; empty when nothing is.
std::vector<Problem> CheckDirectory(const std::string& directory, const std::string& purpose) {
    struct stat status = {};
    if (stat(directory.c_str(), &status) != 0) {
        return {{directory, 0, 0, "the directory of " + purpose + " cannot be used: " + std::strerror(errno),
                 "create it, or correct its name"}};
    }
    if (!S_ISDIR(status.st_mode)) {
        return {{directory, 0, 0, "is no directory, but " + purpose + " is to be in it", "correct the name"}};
    }
    if ((status.st_mode & S_IWOTH) != 0) {
        return {{directory, 0, 0, "others may write the directory of " + purpose, "chmod o-w it"}};
    }
    if (access(directory.c_str(), W_OK | X_OK) != 0) {
        return {{directory, 0, 0,
                 "the directory of " + purpose + " cannot be written: " + std::strerror(errno),
                 "run as a user who may, or on a file system that can be written"}};
    }
    return {};
}

/// Directories of the product itself that a commit writes to.
std::vector<Problem> CheckOwnDirectories(Session& session) {
    std::vector<Problem> problems =
        CheckDirectory(session.Param("ZET_CFG_DIR"), "the templates' working copies");
    Append(problems, CheckDirectory(session.Param("ZET_VAR_LIB_DIR"), "the status"));
    return problems;
}

}  // namespace

std::vector<Problem> CheckTemplateFile(Session& session, const std::string& templateName,
                                       const StringMap& values, std::set<std::string>* used) {
    const std::string file = TemplateFile(session, templateName);
    if (file.empty()) {
        return {{session.Param("ZET_CFG_TEMPL_DIR") + "/" + templateName, 0, 0, "the template is missing",
                 "install it there, or correct its name"}};
    }
    try {
        return CheckTemplate(file, ReadFileBytes(file), values, used);
    } catch (const Failure& failure) {
        return {{file, 0, 0, std::string("the template cannot be read: ") + failure.what(), "repair it"}};
    }
}

std::vector<Problem> CheckTargetFile(const std::string& path) {
    std::vector<Problem> problems = CheckDirectory(DirectoryOf(path), path);
    struct stat status = {};
    if (lstat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        problems.push_back({path, 0, 0, "is no regular file", "move it away, or correct the target"});
    }
    return problems;
}

std::vector<Problem> CheckTargets(Session& session, const std::vector<Target>& targets,
                                  std::set<std::string>* used) {
    std::vector<Problem> problems = CheckOwnDirectories(session);
    const std::set<std::string> pending = PendingRecord::Read(session);
    std::map<std::string, std::string> templateOf;
    for (const Target& target : targets) {
        const std::string path = session.FilePath(target.path);
        Append(problems,
               CheckTemplateFile(session, target.templateName, session.Config().TemplatesValues(), used));
        Append(problems, CheckTargetFile(path));
        const std::string temporary = path + ZETTemporarySuffix;
        if (pending.count(path) == 0 && StateOf(temporary).exists) {
            problems.push_back({temporary, 0, 0, "is in the way of writing " + path, "move it away"});
        }
        const auto [other, isNew] = templateOf.emplace(path, target.templateName);
        if (!isNew) {
            problems.push_back({path, 0, 0,
                                "is made from both [" + other->second + "] and [" + target.templateName + "]",
                                "give each file to one template"});
        }
    }
    return problems;
}

}  // namespace ZET
