#include "deploy/targets/TargetListReader.h"

#include <map>
#include <optional>
#include <utility>

#include "deploy/targets/ListFile.h"
#include "deploy/targets/ListProblems.h"
#include "deploy/targets/Toml.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

bool LeavesDirectory(const std::string& name) {
    return name.empty() || name.front() == '/' || HasStepUp(name);
}

/// What would end a name early for the system, or in the records of a commit.
bool HasEnd(const std::string& name) {
    return name.find('\0') != std::string::npos || name.find('\n') != std::string::npos;
}

/// Takes the values of one template's keys.
class TargetReader {
  public:
    TargetReader(Target& target, ListProblems& problems) : m_target(target), m_problems(problems) {}

    void Take(const Entry& entry) {
        static const std::map<std::string, void (TargetReader::*)(const Entry&)> kKeys = {
            {"target", &TargetReader::TakePath},     {"roles", &TargetReader::TakeRoles},
            {"check", &TargetReader::TakeCheck},     {"check_timeout", &TargetReader::TakeTimeout},
            {"restart", &TargetReader::TakeRestart}, {"secret", &TargetReader::TakeSecret},
            {"trust", &TargetReader::TakeTrusted},
        };
        const auto key = kKeys.find(entry.Name());
        if (key != kKeys.end()) return (this->*key->second)(entry);
        m_problems.Add(entry.KeyPlace(), "unknown key \"" + entry.Name() + "\"",
                       "use target, roles, check, check_timeout, restart, secret or trust");
    }

  private:
    void TakePath(const Entry& entry) {
        const std::string remedy = "begin it with \"/\", and end it with the name of a file";
        const std::optional<std::string> path = TextOf(entry, "write a path in quotes; " + remedy);
        if (!path) return;
        if (path->starts_with('/') && !path->ends_with('/')) {
            m_target.path = *path;
        } else {
            m_problems.Add(entry.ValuePlace(), "target \"" + *path + "\" is no absolute path of a file",
                           remedy);
        }
    }

    void TakeRoles(const Entry& entry) {
        constexpr char kRemedy[] = "write \"server\", \"client\" or \"both\"";
        const std::optional<std::string> roles = TextOf(entry, kRemedy);
        if (!roles) return;
        if (const std::optional<Role> role = RoleNamed(*roles)) m_target.roles = {*role};
        if (*roles == "both") m_target.roles = {std::begin(kRoles), std::end(kRoles)};
        if (m_target.roles.empty())
            m_problems.Add(entry.ValuePlace(), "roles is \"" + *roles + "\"", kRemedy);
    }

    void TakeCheck(const Entry& entry) {
        m_target.check = WordsOf(entry, "write an array of words, as [\"COMMAND\", \"{}\"]");
        if (!m_target.check.empty() && m_target.check.front().empty())
            m_problems.Add(entry.ValuePlace(), "check names no command", "put its name first");
    }

    void TakeTimeout(const Entry& entry) {
        constexpr int kLongest = 86400;  // a day
        const std::string remedy = "write a number of seconds from 1 to " + std::to_string(kLongest);
        const auto* const number = entry.value->as_integer();
        if (number == nullptr) return AddKind(entry, remedy);
        const std::int64_t seconds = number->get();
        if (seconds < 1 || seconds > kLongest)
            return m_problems.Add(entry.ValuePlace(), "check_timeout is " + std::to_string(seconds), remedy);
        m_target.checkTimeout = std::chrono::seconds(seconds);
    }

    void TakeRestart(const Entry& entry) {
        const toml::table* const byRole = entry.value->as_table();
        if (byRole == nullptr) {
            const std::vector<std::string> services = ServicesOf(entry);
            for (const Role role : kRoles)
                m_target.restarts[role] = services;
            return;
        }
        if (byRole->empty()) AddEmpty(entry);
        for (const Entry& ofRole : InOrder(*byRole)) {
            if (const std::optional<Role> role = RoleNamed(ofRole.Name())) {
                m_target.restarts[*role] = ServicesOf(ofRole);
            } else {
                m_problems.Add(ofRole.KeyPlace(), "restart has no role \"" + ofRole.Name() + "\"",
                               "use server and client");
            }
        }
    }

    std::vector<std::string> ServicesOf(const Entry& entry) {
        std::vector<std::string> services =
            WordsOf(entry, "write an array of services, or { server = [...], client = [...] }");
        for (const std::string& service : services) {
            if (service.empty() || service.find_first_of(" \t") != std::string::npos || HasEnd(service))
                m_problems.Add(entry.ValuePlace(), "\"" + service + "\" is no name of a service",
                               "write each service in quotes of its own");
        }
        return services;
    }

    /// What cannot be told is kept from everybody.
    void TakeSecret(const Entry& entry) {
        const auto* const isSecret = entry.value->as_boolean();
        if (isSecret == nullptr) AddKind(entry, "write true or false, without quotes");
        m_target.isSecret = isSecret == nullptr || isSecret->get();
    }

    void TakeTrusted(const Entry& entry) {
        const std::optional<std::string> user = TextOf(entry, "write the name of a user in quotes");
        if (!user) return;
        if (user->empty())
            m_problems.Add(entry.ValuePlace(), "trust is empty", "name a user, or remove the line");
        m_target.trusted = *user;
    }

    std::optional<std::string> TextOf(const Entry& entry, const std::string& remedy) {
        const auto* const text = entry.value->as_string();
        if (text == nullptr) {
            AddKind(entry, remedy);
            return std::nullopt;
        }
        if (!HasEnd(text->get())) return text->get();
        m_problems.Add(entry.ValuePlace(), entry.Name() + " holds a NUL byte or a line feed", "take it out");
        return std::nullopt;
    }

    std::vector<std::string> WordsOf(const Entry& entry, const std::string& remedy) {
        const toml::array* const array = entry.value->as_array();
        if (array == nullptr) {
            AddKind(entry, remedy);
            return {};
        }
        if (array->empty()) AddEmpty(entry);
        std::vector<std::string> words;
        for (const toml::node& node : *array) {
            const auto* const word = node.as_string();
            if (word == nullptr) {
                m_problems.Add(PlaceOf(node.source()), entry.Name() + " holds " + KindOf(node),
                               "write each word in quotes");
            } else if (word->get().find('\0') != std::string::npos) {
                m_problems.Add(PlaceOf(node.source()), entry.Name() + " holds a NUL byte", "take it out");
            } else {
                words.push_back(word->get());
            }
        }
        return words;
    }

    void AddKind(const Entry& entry, const std::string& remedy) {
        m_problems.Add(entry.ValuePlace(), entry.Name() + " is " + KindOf(*entry.value), remedy);
    }

    void AddEmpty(const Entry& entry) {
        m_problems.Add(entry.ValuePlace(), entry.Name() + " is empty", "fill it, or remove the line");
    }

    Target& m_target;
    ListProblems& m_problems;
};

class ListReader {
  public:
    ListReader(const std::string& file, std::string_view text) : m_text(text), m_problems(file, text) {
        m_list.file = file;
    }

    TargetList Read() {
        if (std::optional<Problem> problem = FormProblem(m_list.file, m_text)) {
            m_list.isUnderstood = false;
            m_list.problems.push_back(std::move(*problem));
            return std::move(m_list);
        }
        const toml::parse_result parsed = toml::parse(m_text);
        if (parsed) {
            TakeList(parsed.table());
        } else {
            m_list.isUnderstood = false;
            AddOfSyntax(parsed.error());
        }
        m_list.problems = m_problems.Take();
        return std::move(m_list);
    }

  private:
    /// A header that is there twice is told here: the parser misspells names in quotes.
    void AddOfSyntax(const toml::parse_error& error) {
        const Place place = PlaceOf(error.source());
        const std::string line(m_problems.LineAt(place.line));
        int earlier = 1;
        while (earlier < place.line && m_problems.LineAt(earlier) != line)
            ++earlier;
        if (line.starts_with('[') && earlier < place.line) {
            m_problems.Add(place, line + " is there twice",
                           "see line " + std::to_string(earlier) + ", put both into one");
        } else {
            m_problems.Add(place, "is no TOML: " + std::string(error.description()),
                           "correct it: texts stand in quotes, each name and each key is there once");
        }
    }

    void TakeList(const toml::table& list) {
        for (const Entry& entry : InOrder(list)) {
            if (entry.Name() != "templates") {
                m_problems.Add(entry.KeyPlace(), "unknown key \"" + entry.Name() + "\"",
                               "put what a template has below [templates.\"NAME\"]");
            } else if (const toml::table* const templates = entry.value->as_table()) {
                for (const Entry& each : InOrder(*templates))
                    TakeTemplate(each);
            } else {
                m_problems.Add(entry.KeyPlace(), "templates is " + KindOf(*entry.value),
                               "write [templates.\"NAME\"]");
            }
        }
    }

    void TakeTemplate(const Entry& entry) {
        const std::string name = entry.Name();
        const toml::table* const table = entry.value->as_table();
        if (table == nullptr) {
            m_problems.Add(entry.KeyPlace(), "template [" + name + "] is " + KindOf(*entry.value),
                           "write [templates.\"NAME\"] above its keys");
        } else if (LeavesDirectory(name)) {
            m_problems.Add(entry.KeyPlace(), "template [" + name + "] leaves the directory of the templates",
                           "name a template below it");
        } else if (HasEnd(name)) {
            m_problems.Add(entry.KeyPlace(),
                           "template [" + name + "] has a NUL byte or a line feed in its name",
                           "give it another name");
        } else {
            TakeKeys(entry, *table);
        }
    }

    void TakeKeys(const Entry& entry, const toml::table& table) {
        Target target;
        target.templateName = entry.Name();
        target.line = static_cast<int>(entry.KeyPlace().line);
        TargetReader reader(target, m_problems);
        bool isTemplate = table.empty();
        for (const Entry& each : InOrder(table)) {
            const toml::table* const part = each.Name() == "restart" ? nullptr : NextPart(*each.value);
            if (part == nullptr) {
                reader.Take(each);
                isTemplate = true;
            } else {
                TellUnquoted(target.templateName + "." + each.Name(), each, *part);
            }
        }
        if (!isTemplate) return;
        RequireKeys(entry, table);
        if (!target.path.empty()) ClaimFile(target, PlaceOf(table.get("target")->source()));
        m_list.targets.push_back(std::move(target));
    }

    void RequireKeys(const Entry& entry, const toml::table& table) {
        const std::string name = "template [" + entry.Name() + "] ";
        if (!table.contains("target"))
            m_problems.Add(entry.KeyPlace(), name + "has no target", "add target = \"/PATH\"");
        if (!table.contains("roles"))
            m_problems.Add(entry.KeyPlace(), name + "has no roles",
                           "add roles = \"server\", \"client\" or \"both\"");
    }

    /// `table` is what the name leads to so far.
    void TellUnquoted(const std::string& name, const Entry& entry, const toml::table& table) {
        bool isWhole = table.empty();
        for (const Entry& each : InOrder(table)) {
            const toml::table* const part = each.Name() == "restart" ? nullptr : NextPart(*each.value);
            if (part == nullptr) {
                isWhole = true;
            } else {
                TellUnquoted(name + "." + each.Name(), each, *part);
            }
        }
        if (isWhole)
            m_problems.Add(entry.KeyPlace(), "the name of the template [" + name + "] is not quoted",
                           "write [templates.\"" + name + "\"]");
    }

    struct Claim {
        std::string templateName;
        Place place;
    };
    using Claims = std::map<std::string, Claim>;

    /// For each role that the target is for.
    void ClaimFile(const Target& target, const Place& place) {
        const Claim claim{target.templateName, place};
        const Claim* earlier = nullptr;
        for (const Role role : target.roles) {
            const auto [known, isFirst] = m_claims[role].emplace(target.path, claim);
            if (!isFirst) earlier = &known->second;
        }
        if (earlier == nullptr) return;
        m_problems.Add(
            place, "target " + target.path + " is made from [" + earlier->templateName + "] too",
            "see line " + std::to_string(earlier->place.line) + ", give each file to one template");
    }

    const std::string_view m_text;
    TargetList m_list;
    ListProblems m_problems;
    std::map<Role, Claims> m_claims;
};

}  // namespace

TargetList ReadTargetFile(const std::string& file) {
    return ReadTargetText(file, ReadListFile(file));
}

TargetList ReadTargetText(const std::string& file, std::string_view text) {
    return ListReader(file, text).Read();
}

}  // namespace ZET::Deploy
