#ifndef ZET_TARGET_KEYS_H
#define ZET_TARGET_KEYS_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "deploy/host/Words.h"
#include "deploy/lists/KeyReader.h"
#include "text/ShellWord.h"

namespace ZET::Deploy {

/// Takes the values of one template's keys.
class TargetKeys : KeyReader {
  public:
    TargetKeys(Target& target, ListProblems& problems) : KeyReader(target, problems), m_target(target) {}

    void Take(const Entry& entry) {
        static const std::map<std::string, void (TargetKeys::*)(const Entry&)> kKeys = {
            {"target", &TargetKeys::TakePath},     {"roles", &TargetKeys::TakeRoles},
            {"when", &TargetKeys::TakeWhen},       {"check", &TargetKeys::TakeCheck},
            {"restart", &TargetKeys::TakeRestart}, {"check_timeout", &TargetKeys::TakeTimeout},
            {"reload", &TargetKeys::TakeReload},   {"secret", &TargetKeys::TakeSecret},
            {"notice", &TargetKeys::TakeNotice},   {"trust", &TargetKeys::TakeTrusted},
            {"mode", &TargetKeys::TakeMode},       {"owner", &TargetKeys::TakeOwner},
            {"enabled", &TargetKeys::TakeEnabled},
        };
        const auto key = kKeys.find(entry.Name());
        if (key != kKeys.end()) return (this->*key->second)(entry);
        AddUnknown(entry, _("target, roles, when, check, check_timeout, restart, reload, secret, notice, "
                            "trust, mode, owner or enabled"));
    }

  private:
    using Services = std::map<Role, std::vector<std::string>>;

    void TakePath(const Entry& entry) { m_target.path = PathOf(entry).value_or(""); }

    void TakeCheck(const Entry& entry) {
        m_target.check = WordsOf(entry, _("write an array of words, as [\"COMMAND\", \"{}\"]"));
        if (!m_target.check.empty() && m_target.check.front().empty())
            Problems().Add(entry.ValuePlace(), _("check names no command"), _("put its name first"));
    }

    void TakeTimeout(const Entry& entry) {
        constexpr int kLongest = 86400;  // a day
        const std::string remedy = Words("write a number of seconds from 1 to %s", std::to_string(kLongest));
        const auto* const number = entry.value->as_integer();
        if (number == nullptr) return AddKind(entry, remedy);
        const std::int64_t seconds = number->get();
        if (seconds < 1 || seconds > kLongest)
            return Problems().Add(entry.ValuePlace(), Words("check_timeout is %s", std::to_string(seconds)),
                                  remedy);
        m_target.checkTimeout = std::chrono::seconds(seconds);
    }

    void TakeRestart(const Entry& entry) { TakeServices(entry, m_target.restarts); }
    void TakeReload(const Entry& entry) { TakeServices(entry, m_target.reloads); }

    void TakeServices(const Entry& entry, Services& services) {
        services.clear();
        const toml::table* const byRole = entry.value->as_table();
        if (byRole == nullptr) {
            const std::vector<std::string> ofAll = ServicesOf(entry);
            for (const Role role : kRoles)
                services[role] = ofAll;
            return;
        }
        if (byRole->empty()) AddEmpty(entry);
        for (const Entry& ofRole : InOrder(*byRole)) {
            if (const std::optional<Role> role = RoleNamed(ofRole.Name())) {
                services[*role] = ServicesOf(ofRole);
            } else {
                Problems().Add(ofRole.KeyPlace(), Words("%s has no role \"%s\"", entry.Name(), ofRole.Name()),
                               _("use server and client"));
            }
        }
    }

    /// Names of services and, where no service is in charge, commands, each given as an array of words.
    std::vector<std::string> ServicesOf(const Entry& entry) {
        const toml::array* const array = entry.value->as_array();
        if (array == nullptr) {
            AddKind(entry, _("write an array of services, or { server = [...], client = [...] }"));
            return {};
        }
        if (array->empty()) AddEmpty(entry);
        std::vector<std::string> services;
        for (const toml::node& node : *array) {
            if (node.is_array()) {
                services.push_back(CommandOf({entry.key, &node}));
            } else if (const std::optional<std::string> name = WordOf(entry, node)) {
                if (!IsOneWord(*name))
                    Problems().Add(entry.ValuePlace(), Words("\"%s\" is no name of a service", *name),
                                   _("write each service in quotes of its own"));
                services.push_back(*name);
            }
        }
        return services;
    }

    /// The command as it is typed in a shell. A service is one word, so that blanks tell a command from it.
    std::string CommandOf(const Entry& entry) {
        const std::vector<std::string> words = WordsOf(entry, _("write an array of words"));
        std::string command;
        // Several words in the place of the first were meant to be words of their own.
        if (!words.empty() && !IsOneWord(words.front()))
            Problems().Add(entry.ValuePlace(), Words("\"%s\" is no word of a command", words.front()),
                           _("write each word in quotes of its own"));
        for (const std::string& word : words) {
            if (HasEnd(word))
                Problems().Add(entry.ValuePlace(), Words("%s holds a NUL byte or a line feed", entry.Name()),
                               _("take it out"));
            command += (command.empty() ? "" : " ") + Text::ShellWord(word);
        }
        if (words.size() == 1)
            Problems().Add(entry.ValuePlace(), Words("the command \"%s\" could be a service", command),
                           Words("write [\"command\", \"%s\"]", command));
        return command;
    }

    static bool IsOneWord(const std::string& text) {
        return !text.empty() && text.find_first_of(" \t") == std::string::npos && !HasEnd(text);
    }

    /// A value that is no boolean keeps the text from everybody.
    void TakeSecret(const Entry& entry) { m_target.isSecret = IsTrue(entry, true); }
    void TakeNotice(const Entry& entry) { m_target.hasNotice = IsTrue(entry, true); }

    void TakeTrusted(const Entry& entry) {
        const std::optional<std::string> user = TextOf(entry, _("write the name of a user in quotes"));
        if (!user) return;
        if (user->empty())
            Problems().Add(entry.ValuePlace(), _("trust is empty"), _("name a user, or remove the line"));
        m_target.trusted = *user;
    }

    /// Takes permissions only: no file of settings gives its owner's rights to those who run it.
    void TakeMode(const Entry& entry) {
        const char* const remedy = _("write three octal digits in quotes, as \"0640\"");
        const std::optional<std::string> text = TextOf(entry, remedy);
        if (!text) return;
        const std::string digits = text->size() == 4 && text->front() == '0' ? text->substr(1) : *text;
        if (digits.size() != 3 || digits.find_first_not_of("01234567") != std::string::npos)
            return Problems().Add(entry.ValuePlace(), Words("mode is \"%s\"", *text), remedy);
        m_target.mode = static_cast<mode_t>(std::stoul(digits, nullptr, 8));
    }

    void TakeOwner(const Entry& entry) {
        const char* const remedy = _("write \"USER:GROUP\", or \"USER\"");
        const std::optional<std::string> text = TextOf(entry, remedy);
        if (!text) return;
        const std::size_t colon = text->find(':');
        const bool isName = !text->empty() && colon != 0 && colon != text->size() - 1 &&
                            text->find(':', std::min(colon, text->size() - 1) + 1) == std::string::npos &&
                            text->find_first_of(" \t") == std::string::npos;
        if (!isName) return Problems().Add(entry.ValuePlace(), Words("owner is \"%s\"", *text), remedy);
        m_target.owner = *text;
    }

    Target& m_target;
};

}  // namespace ZET::Deploy

#endif
