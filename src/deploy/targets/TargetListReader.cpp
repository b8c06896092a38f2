#include "deploy/targets/TargetListReader.h"

#include <fcntl.h>
#include <ini.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <set>
#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/TextStreams.h"
#include "posix/Descriptor.h"

namespace ZET::Deploy {

namespace {

constexpr std::string_view kBlanks = " \t\r\v\f\n";
constexpr std::size_t kLongestSection = 49;  // inih cuts off the rest

/// Never waits, whatever the path leads to.
Descriptor OpenList(const std::string& file) {
    Descriptor list(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (list < 0 || fstat(list, &status) != 0) {
        throw Failure(file + ": the list of targets cannot be read: " + std::strerror(errno) +
                      " (install the product's templates, or correct ZET_CFG_TEMPL_DIR)");
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure(file + ": the list of targets is no regular file (put the product's own in its place)");
    }
    const bool othersMayWrite = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 || status.st_uid != 0;
    if (geteuid() == 0 && othersMayWrite) {
        throw Failure(
            file +
            ": others may write the list of targets, so root does not use it (chown root and chmod go-w)");
    }
    return list;
}

std::string ReadList(const std::string& file) {
    const Descriptor list = OpenList(file);
    std::string text;
    char part[16384];
    for (;;) {
        const ssize_t length = read(list, part, sizeof part);
        if (length == 0) return text;
        if (length > 0) text.append(part, static_cast<std::size_t>(length));
        if (length < 0 && errno != EINTR) {
            throw Failure(file + ": reading the list of targets broke off: " + std::strerror(errno) +
                          " (repair its file system)");
        }
    }
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    const std::size_t end = text.find_last_not_of(kBlanks) + 1;
    return end > begin ? text.substr(begin, end - begin) : std::string_view();
}

bool LeavesDirectory(const std::string& name) {
    return name.empty() || name.front() == '/' || ("/" + name + "/").find("/../") != std::string::npos;
}

bool HaveCommonRole(const Target& one, const Target& other) {
    return (one.forServer && other.forServer) || (one.forClient && other.forClient);
}

/// Takes the entries of the list while inih reads it. inih tells neither of sections without entries or
/// given twice nor of more than one broken line, so the form of each line is looked at before inih gets it.
class ListReader {
  public:
    explicit ListReader(const std::string& file) { m_list.file = file; }

    TargetList Read() {
        const std::string text = ReadList(m_list.file);
        m_rest = text;
        const int brokenLine = ini_parse_stream(NextLine, this, TakeEntry, this);
        if (brokenLine > 0 && !HasProblemAt(brokenLine)) AddFormProblem(brokenLine);
        CheckSections();
        std::stable_sort(m_list.problems.begin(), m_list.problems.end(),
                         [](const Problem& one, const Problem& other) { return one.line < other.line; });
        for (Section& section : m_sections)
            m_list.targets.push_back(std::move(section.target));
        return std::move(m_list);
    }

  private:
    struct Section {
        Target target;
        std::set<std::string> keys;
        int pathLine = 0;
        bool isBroken = false;  ///< a line of it was not understood
    };

    /// Gives inih the next line, or what there is room for in `line`.
    static char* NextLine(char* line, int size, void* reader) {
        auto& self = *static_cast<ListReader*>(reader);
        if (self.m_rest.empty()) return nullptr;
        ++self.m_line;
        const std::size_t end = self.m_rest.find('\n');
        const std::string_view whole = self.m_rest.substr(0, end == std::string_view::npos ? end : end + 1);
        self.m_rest.remove_prefix(whole.size());
        const std::size_t length = whole.copy(line, static_cast<std::size_t>(size) - 1);
        line[length] = '\0';
        if (length < whole.size()) {
            self.AddBrokenLine("is longer than " + std::to_string(size - 2) + " bytes", "shorten the line");
        } else if (whole.find('\0') != std::string_view::npos) {
            self.AddBrokenLine("holds a NUL byte", "take it out");
        } else {
            self.LookAt(whole);
        }
        return line;
    }

    static int TakeEntry(void* reader, const char*, const char* key, const char* value) {
        auto& self = *static_cast<ListReader*>(reader);
        if (!self.HasProblemAt(self.m_line)) self.Take(key, value);
        return 1;
    }

    void LookAt(std::string_view line) {
        const std::string_view text = Trimmed(line);
        if (text.empty() || text.front() == '#' || text.front() == ';') return;
        if (text.front() == '[') {
            const std::size_t end = text.find(']');
            if (end == std::string_view::npos) return AddFormProblem(m_line);
            OpenSection(std::string(text.substr(1, end - 1)));
        } else if (kBlanks.find(line.front()) != std::string_view::npos) {
            AddBrokenLine("begins with a blank, which would make it part of the line before",
                          "begin the line with its key");
        } else if (text.find_first_of("=:") == std::string_view::npos) {
            AddFormProblem(m_line);
        }
    }

    void OpenSection(const std::string& name) {
        const auto known = std::find_if(m_sections.begin(), m_sections.end(), [&](const Section& section) {
            return section.target.templateName == name;
        });
        if (known != m_sections.end()) {
            AddProblem(m_line, "section [" + name + "] is there twice",
                       "see line " + std::to_string(known->target.line) + ", put both into one");
        } else if (name.size() > kLongestSection) {
            AddProblem(m_line,
                       "the name of the section is longer than " + std::to_string(kLongestSection) + " bytes",
                       "give the template a shorter name");
        } else if (LeavesDirectory(name)) {
            AddProblem(m_line, "section [" + name + "] leaves the directory of the templates",
                       "name a template below it");
        }
        m_isIgnored = HasProblemAt(m_line);
        if (m_isIgnored) return;
        m_sections.emplace_back();
        m_sections.back().target.templateName = name;
        m_sections.back().target.line = m_line;
    }

    void Take(const std::string& key, const std::string& value) {
        if (m_isIgnored) return;
        if (m_sections.empty()) {
            AddProblem(m_line, "key \"" + key + "\" stands before the first section",
                       "put it below the [TEMPLATE] it belongs to");
            return;
        }
        Section& section = m_sections.back();
        if (!section.keys.insert(key).second) {
            AddProblem(m_line, "key \"" + key + "\" is there twice in [" + section.target.templateName + "]",
                       "keep one of them");
            return;
        }
        Set(section, key, value);
    }

    void Set(Section& section, const std::string& key, const std::string& value) {
        Target& target = section.target;
        if (key == "target") {
            section.pathLine = m_line;
            SetPath(target, value);
        } else if (key == "roles") {
            SetRoles(target, value);
        } else if (key == "check") {
            TextReader words(value);
            for (std::string word; words >> word;)
                target.check.push_back(word);
        } else if (key == "check_timeout") {
            SetTimeout(target, value);
        } else if (key == "restart") {
            target.restart = value;
        } else if (key == "secret") {
            if (value != "true" && value != "false")
                AddProblem(m_line, "secret is \"" + value + "\"", "write true or false");
            target.isSecret = value != "false";
        } else if (key == "trust") {
            if (value.empty()) AddProblem(m_line, "trust is empty", "name a user, or remove the line");
            target.trusted = value;
        } else {
            AddProblem(m_line, "unknown key \"" + key + "\"",
                       "use target, roles, check, check_timeout, restart, secret or trust");
        }
    }

    void SetPath(Target& target, const std::string& value) {
        if (value.starts_with('/') && !value.ends_with('/')) {
            target.path = value;
        } else {
            AddProblem(m_line, "target \"" + value + "\" is no absolute path of a file",
                       "begin it with \"/\", and end it with the name of a file");
        }
    }

    void SetRoles(Target& target, const std::string& value) {
        target.forServer = value == "server" || value == "both";
        target.forClient = value == "client" || value == "both";
        if (!target.forServer && !target.forClient)
            AddProblem(m_line, "roles is \"" + value + "\"", "write server, client or both");
    }

    void SetTimeout(Target& target, const std::string& value) {
        constexpr int kLongest = 86400;  // a day
        int seconds = 0;
        const char* const end = value.data() + value.size();
        const auto [rest, error] = std::from_chars(value.data(), end, seconds);
        if (error == std::errc() && rest == end && seconds >= 1 && seconds <= kLongest) {
            target.checkTimeout = std::chrono::seconds(seconds);
        } else {
            AddProblem(m_line, "check_timeout is \"" + value + "\"",
                       "write a number of seconds from 1 to " + std::to_string(kLongest));
        }
    }

    void CheckSections() {
        for (const Section& section : m_sections) {
            if (!section.isBroken) CheckKeys(section);
            for (const Section* other = m_sections.data(); other != &section; ++other) {
                if (section.target.path.empty() || section.target.path != other->target.path ||
                    !HaveCommonRole(section.target, other->target))
                    continue;
                AddProblem(
                    section.pathLine,
                    "target " + section.target.path + " is made from [" + other->target.templateName +
                        "] too",
                    "see line " + std::to_string(other->pathLine) + ", give each file to one template");
            }
        }
    }

    void CheckKeys(const Section& section) {
        const std::string name = "section [" + section.target.templateName + "] ";
        if (section.keys.count("target") == 0)
            AddProblem(section.target.line, name + "has no target", "add target = /PATH");
        if (section.keys.count("roles") == 0)
            AddProblem(section.target.line, name + "has no roles", "add roles = server, client or both");
    }

    bool HasProblemAt(int line) const {
        return std::any_of(m_list.problems.begin(), m_list.problems.end(),
                           [&](const Problem& problem) { return problem.line == line; });
    }

    void AddFormProblem(int line) {
        AddProblem(line, "is neither a section nor KEY = VALUE", "correct the line");
        if (!m_sections.empty()) m_sections.back().isBroken = true;
    }

    void AddBrokenLine(const std::string& text, const std::string& remedy) {
        AddProblem(m_line, text, remedy);
        if (!m_sections.empty()) m_sections.back().isBroken = true;
    }

    void AddProblem(int line, const std::string& text, const std::string& remedy) {
        m_list.problems.push_back({m_list.file, line, 0, text, remedy});
    }

    TargetList m_list;
    std::vector<Section> m_sections;
    bool m_isIgnored = false;  ///< the present section is not used
    std::string_view m_rest;   ///< of the list, not read yet
    int m_line = 0;
};

}  // namespace

TargetList ReadTargetFile(const std::string& file) {
    return ListReader(file).Read();
}

}  // namespace ZET::Deploy
