#ifndef ZET_CLI_CONTINUATIONS_H
#define ZET_CLI_CONTINUATIONS_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <vector>

#include "cli/OwnWords.h"

/// Only for CommandLine.cpp, since CLI11 takes long to compile.
namespace ZET::Cli {

/// What may follow the part of a command line that was understood.
class Continuations {
  public:
    explicit Continuations(const CLI::App& app) : m_app(app), m_last(&app), m_words(app.get_name()) {
        AddOptions();
        while (!m_last->get_subcommands().empty()) {
            m_last = m_last->get_subcommands().front();
            m_words += " " + m_last->get_name();
            AddOptions();
        }
    }

    const std::string& Program() const { return m_app.get_name(); }

    /// The program and the commands that were named, as in "zet-client param set".
    const std::string& Words() const { return m_words; }

    /// Whether the words end before a required command.
    bool LacksCommand() const { return m_last->get_require_subcommand_min() > 0; }

    /// The first word that the last command took as an operand; empty if it took none.
    std::string FirstOperand() const {
        for (const CLI::Option* option : m_last->get_options())
            if (option->get_positional() && option->count() != 0) return option->results().front();
        return "";
    }

    /// Whether a word follows the last command that was named.
    bool IsBehindLast(const std::string& word, const std::vector<std::string>& arguments) const {
        const auto last = std::find(arguments.begin(), arguments.end(), m_last->get_name());
        return std::find(last, arguments.end(), word) != arguments.end();
    }

    /// Includes those of the commands that may follow.
    std::vector<std::string> Options() const {
        std::vector<const CLI::Option*> options = m_options;
        for (const CLI::App* command : Below())
            for (const CLI::Option* option : command->get_options())
                options.push_back(option);
        std::vector<std::string> names;
        for (const CLI::Option* option : options) {
            for (const std::string& name : option->get_lnames())
                names.push_back("--" + name);
            for (const std::string& name : option->get_snames())
                names.push_back("-" + name);
        }
        return names;
    }

    /// The library's `sentence` in the user's words, if it is about one of the known options; else unchanged.
    std::string InOwnWords(const std::string& sentence) const {
        for (const CLI::Option* option : m_options) {
            std::string words = OwnWords(*option, sentence);
            if (!words.empty()) return words;
        }
        return sentence;
    }

    std::vector<std::string> Commands() const {
        std::vector<std::string> names;
        for (const CLI::App* command : Below())
            names.push_back(command->get_name());
        return names;
    }

  private:
    std::vector<const CLI::App*> Below() const {
        return m_last->get_subcommands([](const CLI::App*) { return true; });
    }

    void AddOptions() {
        for (const CLI::Option* option : m_last->get_options())
            m_options.push_back(option);
    }

    const CLI::App& m_app;
    const CLI::App* m_last;
    std::string m_words;
    std::vector<const CLI::Option*> m_options;
};

}  // namespace ZET::Cli

#endif
