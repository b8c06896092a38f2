#include "Targets.h"

#include <ini.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sstream>

#include "ExitStatus.h"

namespace ZET {

namespace {

using Stream = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

Stream OpenList(const std::string& file) {
    Stream stream(std::fopen(file.c_str(), "re"), std::fclose);
    struct stat status = {};
    if (!stream || fstat(fileno(stream.get()), &status) != 0) {
        throw Failure(file + ": the list of targets cannot be read: " + std::strerror(errno) +
                      " (install the product's templates, or correct ZET_CFG_TEMPL_DIR)");
    }
    if (!S_ISREG(status.st_mode)) throw Failure(file + ": the list of targets is no regular file");
    const bool othersMayWrite = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 || status.st_uid != 0;
    if (geteuid() == 0 && othersMayWrite) {
        throw Failure(
            file +
            ": others may write the list of targets, so root does not use it (chown root and chmod go-w)");
    }
    return stream;
}

/// Collects the entries of the list while inih reads it line by line.
class ListReader {
  public:
    explicit ListReader(const std::string& file) { m_list.file = file; }

    TargetList Read() {
        const Stream stream = OpenList(m_list.file);
        m_stream = stream.get();
        const int brokenLine = ini_parse_stream(NextLine, this, TakeEntry, this);
        if (brokenLine > 0 && !HasProblemAt(brokenLine)) {
            AddProblem(brokenLine, "is neither a section nor KEY = VALUE", "correct the line");
        }
        if (std::ferror(m_stream) != 0)
            throw Failure(m_list.file + ": reading the list of targets broke off");
        for (const Target& target : m_list.targets)
            CheckWhole(target);
        return std::move(m_list);
    }

  private:
    static char* NextLine(char* line, int size, void* reader) {
        auto& self = *static_cast<ListReader*>(reader);
        char* const read = std::fgets(line, size, self.m_stream);
        if (read == nullptr) return nullptr;
        ++self.m_line;
        const std::size_t length = std::strlen(line);
        if (length + 1 == static_cast<std::size_t>(size) && line[length - 1] != '\n') {
            self.AddProblem(self.m_line, "is longer than " + std::to_string(size - 2) + " bytes",
                            "shorten the line");
            for (int c = 0; c != '\n' && c != EOF;)
                c = std::fgetc(self.m_stream);
        }
        return read;
    }

    static int TakeEntry(void* reader, const char* section, const char* key, const char* value) {
        auto& self = *static_cast<ListReader*>(reader);
        self.Take(section, key, value);
        return 1;
    }

    void Take(const std::string& section, const std::string& key, const std::string& value) {
        if (section.empty()) {
            AddProblem(m_line, "key \"" + key + "\" stands before the first section",
                       "put it below the [TEMPLATE] it belongs to");
            return;
        }
        Target& target = TargetOf(section);
        if (key == "target") {
            SetPath(target, value);
        } else if (key == "roles") {
            SetRoles(target, value);
        } else if (key == "check") {
            std::istringstream words(value);
            for (std::string word; words >> word;)
                target.check.push_back(word);
        } else if (key == "restart") {
            target.restart = value;
        } else if (key == "secret") {
            if (value != "true" && value != "false") {
                AddProblem(m_line, "secret is \"" + value + "\"", "write true or false");
            }
            target.isSecret = value != "false";
        } else {
            AddProblem(m_line, "unknown key \"" + key + "\"", "use target, roles, check, restart or secret");
        }
    }

    Target& TargetOf(const std::string& section) {
        std::vector<Target>& targets = m_list.targets;
        const auto known = std::find_if(targets.begin(), targets.end(),
                                        [&](const Target& target) { return target.templateName == section; });
        if (known != targets.end()) return *known;
        Target target;
        target.templateName = section;
        target.line = m_line;
        if (section.front() == '/' || ("/" + section + "/").find("/../") != std::string::npos) {
            AddProblem(m_line, "section [" + section + "] leaves the directory of the templates",
                       "name a template below it");
        }
        return targets.emplace_back(std::move(target));
    }

    void SetPath(Target& target, const std::string& value) {
        if (value.empty() || value.front() != '/') {
            AddProblem(m_line, "target \"" + value + "\" is no absolute path", "begin it with \"/\"");
        }
        for (const Target& other : m_list.targets) {
            if (&other != &target && other.path == value) {
                AddProblem(m_line, "target " + value + " is made from [" + other.templateName + "] too",
                           "see line " + std::to_string(other.line) + ", give each file to one template");
            }
        }
        target.path = value;
    }

    void SetRoles(Target& target, const std::string& value) {
        target.forServer = value == "server" || value == "both";
        target.forClient = value == "client" || value == "both";
        if (!target.forServer && !target.forClient) {
            AddProblem(m_line, "roles is \"" + value + "\"", "write server, client or both");
        }
    }

    void CheckWhole(const Target& target) {
        const std::string section = "section [" + target.templateName + "] ";
        if (target.path.empty()) AddProblem(target.line, section + "has no target", "add target = /PATH");
        if (!target.forServer && !target.forClient && !HasProblemIn(target)) {
            AddProblem(target.line, section + "has no roles", "add roles = server, client or both");
        }
    }

    bool HasProblemIn(const Target& target) const {
        return std::any_of(m_list.problems.begin(), m_list.problems.end(), [&](const Problem& problem) {
            return problem.line >= target.line && problem.text.starts_with("roles ");
        });
    }

    bool HasProblemAt(int line) const {
        return std::any_of(m_list.problems.begin(), m_list.problems.end(),
                           [&](const Problem& problem) { return problem.line == line; });
    }

    void AddProblem(int line, const std::string& text, const std::string& remedy) {
        m_list.problems.push_back({m_list.file, line, 0, text, remedy});
    }

    TargetList m_list;
    std::FILE* m_stream = nullptr;
    int m_line = 0;
};

}  // namespace

TargetList ReadTargetList(Session& session) {
    return ListReader(session.Param("ZET_CFG_TEMPL_DIR") + "/targets.ini").Read();
}

std::vector<Target> SelectTargets(Session& session, const std::vector<std::string>& templateNames) {
    TargetList list = ReadTargetList(session);
    if (!list.problems.empty()) {
        std::string text = "the list of targets is broken:";
        for (const Problem& problem : list.problems)
            text += "\n" + problem.Describe();
        throw Failure(text);
    }
    std::vector<Target> selected;
    for (Target& target : list.targets) {
        const bool isNamed = templateNames.empty() || std::find(templateNames.begin(), templateNames.end(),
                                                                target.templateName) != templateNames.end();
        if (isNamed && target.IsFor(session.Role())) selected.push_back(std::move(target));
    }
    for (const std::string& name : templateNames) {
        const bool isThere = std::any_of(selected.begin(), selected.end(),
                                         [&](const Target& target) { return target.templateName == name; });
        if (!isThere) {
            throw UsageError(list.file + ": has no template \"" + name + "\" for the role " + session.Role() +
                             " (name one that it has, or add a section)");
        }
    }
    return selected;
}

const Target* FindTargetByPath(Session& session, const std::vector<Target>& targets,
                               const std::string& path) {
    const std::string resolved = session.FilePath(path);
    const auto found = std::find_if(targets.begin(), targets.end(), [&](const Target& target) {
        return session.FilePath(target.path) == resolved;
    });
    return found == targets.end() ? nullptr : &*found;
}

}  // namespace ZET
