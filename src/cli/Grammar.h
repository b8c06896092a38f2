#ifndef ZET_CLI_GRAMMAR_H
#define ZET_CLI_GRAMMAR_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/CommandLine.h"
#include "cli/Names.h"  // IWYU pragma: keep, no name of it is ever written
#include "cli/OwnWords.h"
#include "cli/Translation.h"
#include "cli/WordFilter.h"
#include "cli/commands/Registrations.h"
#include "deploy/host/Installed.h"
#include "zet/deploy/Role.h"

/// Only for CommandLine.cpp: the library that parses the words takes long to compile.
namespace ZET::Cli {

constexpr char kOptionsOfAll[] = ZET_TEXT("Options of all commands");
constexpr char kOptions[] = ZET_TEXT("Options");
constexpr char kCommands[] = ZET_TEXT("Subcommands");
constexpr char kHelp[] = "-h,--help";
constexpr char kServerHelp[] =
    ZET_TEXT("Write, edit and take back the configuration files of this host, a server of a network domain");
constexpr char kClientHelp[] =
    ZET_TEXT("Write, edit and take back the configuration files of this host, a client of a network domain");

/// The help of a command also shows the options of all commands, in a group of their own.
class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter() {
        label("Usage", _("Usage"));
        label("OPTIONS", _("OPTIONS"));
        label("SUBCOMMAND", _("SUBCOMMAND"));
        label("REQUIRED", _("REQUIRED"));
        label("Positionals", _("Positionals"));
        label("Excludes", _("Excludes"));
    }

    std::string make_group(std::string group, bool isPositional,
                           std::vector<const CLI::Option*> options) const override {
        return Formatter::make_group(_(group.c_str()), isPositional, std::move(options));
    }

    std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const override {
        const std::string subcommands = Formatter::make_subcommands(app, mode);
        if (app->get_parent() == nullptr) return subcommands;
        while (app->get_parent() != nullptr)
            app = app->get_parent();
        const auto isOption = [](const CLI::Option* option) { return option->nonpositional(); };
        return make_group(kOptionsOfAll, false, app->get_options(isOption)) + subcommands;
    }
};

/// The product's commands and options, registered with the library.
class Grammar {
  public:
    /// Registers all options, but no command yet.
    explicit Grammar(Role role)
        : m_app(_(role == Role::Server ? kServerHelp : kClientHelp), ProgramOf(role)) {
        m_app.formatter(std::make_shared<HelpFormatter>());
        Begin(role);
    }

    /// Registers only what the filter accepts, and no help: enough for a correct command line. With one
    /// command and its options, this takes a third of the time of registering all options.
    Grammar(Role role, const WordFilter& filter) : m_app("", ProgramOf(role)), m_filter(&filter) {
        m_app.set_help_flag();
        Begin(role);
        AddWanted([&](std::string_view word) { return filter.MayNameCommand(word); });
    }
    Grammar(const Grammar&) = delete;
    Grammar& operator=(const Grammar&) = delete;

    /// Registers only the commands that `words`, the arguments, may name: registering all takes longer than
    /// editing a small file.
    void AddCommands(const WordFilter& words) {
        if (AsksForVersionAlone(words.All())) return;
        const auto isNamed = [&](std::string_view word) { return words.MayNameCommand(word); };
        if (AsksForHelp(words.All()) || !AddWanted(isNamed)) AddAll();
    }

    void AddAll() {
        AddWanted([](std::string_view) { return true; });
    }

    CLI::App& App() { return m_app; }
    CallInReading& Asked() { return m_call; }

  private:
    static bool AsksForVersionAlone(const WordFilter::Words& words) {
        return words == WordFilter::Words{"-V"} || words == WordFilter::Words{"--version"};
    }

    /// The help lists all commands. Its letter may be part of a group.
    static bool AsksForHelp(const WordFilter::Words& words) {
        return std::any_of(words.begin(), words.end(), [](std::string_view word) {
            return word.starts_with('-') && word.find('h') != std::string_view::npos;
        });
    }

    /// False if no command is wanted.
    template <typename IsWanted>
    bool AddWanted(IsWanted isWanted) {
        CommandLine line(m_app, m_call, m_filter);
        bool any = false;
        for (const Registration& registration : kRegistrations) {
            if (!isWanted(registration.word)) continue;
            registration.add(line);
            any = true;
        }
        return any;
    }

    void Begin(Role role) {
        m_call.call.options.program = ProgramOf(role);
        m_call.call.options.role = role;
        m_app.require_subcommand(1);
        m_app.option_defaults()->group(kOptionsOfAll)->disable_flag_override();
        AddOptionsOfAll();
        m_app.option_defaults()->group(kOptions);
    }

    bool IsWanted(const char* names) const { return m_filter == nullptr || m_filter->MayNameOption(names); }

    void AddOptionsOfAll() {
        GlobalOptions& options = m_call.call.options;
        AddPath("-c,--config", options.configFile, "FILE", _("The product's main configuration file"));
        AddPath("--root", options.root, "DIR", _("Work on the host tree in DIR"));
        AddModule();
        AddText("-m,--message", options.message, _("Why, for the history of what was done"));
        AddFlag("-n,--dry-run", options.dryRun, _("Say what would change, and change nothing"));
        AddFlag("--diff", options.wantsDiffs, _("Show each change as a unified diff"));
        AddFlag("--json", options.json, _("Report as one JSON document"));
        AddFlag("--show-secrets", options.showsSecrets, _("Show text that is not for everybody, too"));
        CLI::Option* const quiet = AddFlag("-q,--quiet", options.quiet, _("Only changes and errors"));
        CLI::Option* const verbose = AddFlag("-v,--verbose", options.verbose, _("Tell more"));
        if (quiet != nullptr && verbose != nullptr) verbose->excludes(quiet);
        AddChoice("--color", options.color, {"auto", "always", "never"}, _("Color diffs"));
        AddChoice("--log", options.log, {"stderr", "syslog"}, _("Where log records go"));
        if (m_filter == nullptr) m_app.set_help_flag(kHelp, _("Print this help and exit"));
        if (IsWanted("-V,--version"))
            m_app.set_version_flag("-V,--version", options.program + " " + ProductVersion(),
                                   _("Print the version and exit"));
    }

    void AddText(const char* names, std::string& text, const char* help) {
        if (IsWanted(names)) m_app.add_option(names, text, help)->type_name("TEXT");
    }

    /// Null if it is not wanted.
    CLI::Option* AddFlag(const char* names, bool& flag, const char* help) {
        return IsWanted(names) ? m_app.add_flag(names, flag, help) : nullptr;
    }

    void AddChoice(const char* name, std::string& choice, const std::vector<std::string>& words,
                   const char* help) {
        if (IsWanted(name)) m_app.add_option(name, choice, help)->check(OneOfWords(words));
    }

    /// If the module is built in, the help does not show the option, and using it is an error that says why.
    void AddModule() {
        if (!HasBuiltInModule())
            return AddPath("--module", m_call.call.options.moduleFile, "FILE", _("Load this module"));
        const auto refuse = [](const std::string& /*file*/) {
            throw CLI::ValidationError("--module",
                                       _("the module is built into this program (leave the option out)"));
        };
        m_app.add_option_function<std::string>("--module", refuse)->group("");
    }

    /// An empty path, as from an unset variable, must not mean the host itself.
    void AddPath(const char* name, std::string& path, const char* type, const char* help) {
        if (!IsWanted(name)) return;
        m_app.add_option(name, path, help)
            ->type_name(type)
            ->check(CLI::Validator(
                [](const std::string& given) { return given.empty() ? _("its name is empty") : ""; }, ""));
    }

    CallInReading m_call;
    CLI::App m_app;
    const WordFilter* m_filter = nullptr;
};

}  // namespace ZET::Cli

#endif
