#ifndef ZET_CLI_GRAMMAR_H
#define ZET_CLI_GRAMMAR_H

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/CommandLine.h"
#include "cli/Names.h"  // IWYU pragma: keep, no name of it is ever written
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "deploy/host/Installed.h"

/// For CommandLine.cpp alone: the library that reads the words takes long to compile.
namespace ZET::Cli {

constexpr char kOptionsOfAll[] = ZET_TEXT("Options of all commands");
constexpr char kOptions[] = ZET_TEXT("Options");
constexpr char kCommands[] = ZET_TEXT("Subcommands");
constexpr char kHelp[] = "-h,--help";
constexpr char kServerHelp[] =
    ZET_TEXT("Write, edit and take back the configuration files of this host, a server of a network domain");
constexpr char kClientHelp[] =
    ZET_TEXT("Write, edit and take back the configuration files of this host, a client of a network domain");

/// The help of a command shows the options of all, too, in a group of their own.
class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter() {
        label("Usage", _("Usage"));
        label("OPTIONS", _("OPTIONS"));
        label("SUBCOMMAND", _("SUBCOMMAND"));
        label("REQUIRED", _("REQUIRED"));
        label("Positionals", _("Positionals"));
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

/// The words of the product, as the library has to know them.
class Grammar {
  public:
    using Words = std::set<std::string_view>;

    explicit Grammar(const std::string& program)
        : m_app(_(RoleOf(program) == Role::Server ? kServerHelp : kClientHelp), program) {
        m_call.options.program = program;
        m_call.options.role = RoleOf(program);
        m_app.formatter(std::make_shared<HelpFormatter>());
        AddOptionsOfAll();
    }
    Grammar(const Grammar&) = delete;
    Grammar& operator=(const Grammar&) = delete;

    /// Of the commands, only those are made known that `words`, the arguments, may ask for: a command line
    /// that knows all takes longer to build than a small file takes to edit.
    void AddCommands(const Words& words) {
        if (AsksForVersionAlone(words)) return;
        if (AsksForHelp(words) || !AddWanted([&](std::string_view word) { return words.count(word) != 0; }))
            AddAll();
    }

    void AddAll() {
        AddWanted([](std::string_view) { return true; });
    }

    CLI::App& App() { return m_app; }
    Call& Asked() { return m_call; }

  private:
    static Role RoleOf(const std::string& program) {
        return program == "zet-init" ? Role::Server : Role::Client;
    }

    static bool AsksForVersionAlone(const Words& words) {
        return words == Words{"-V"} || words == Words{"--version"};
    }

    /// A help lists all commands. Its letter may stand in a group of them.
    static bool AsksForHelp(const Words& words) {
        return std::any_of(words.begin(), words.end(), [](std::string_view word) {
            return word.starts_with('-') && word.find('h') != std::string_view::npos;
        });
    }

    /// False when no command is wanted.
    template <typename IsWanted>
    bool AddWanted(IsWanted isWanted) {
        CommandLine line(m_app, m_call);
        bool any = false;
        for (const Registration& registration : kRegistrations) {
            if (!isWanted(registration.word)) continue;
            registration.add(line);
            any = true;
        }
        return any;
    }

    void AddOptionsOfAll() {
        GlobalOptions& options = m_call.options;
        m_app.require_subcommand(1);
        m_app.option_defaults()->group(kOptionsOfAll);
        AddPath("-c,--config", options.configFile, "FILE", _("The product's main configuration file"));
        AddPath("--root", options.root, "DIR", _("Work on the host tree in DIR"));
        AddModule();
        m_app.add_option("-m,--message", options.message, _("Why, for the history of what was done"))
            ->type_name("TEXT");
        m_app.add_flag("-n,--dry-run", options.dryRun, _("Say what would change, and change nothing"));
        m_app.add_flag("--diff", options.diff, _("Show each change as a unified diff"));
        m_app.add_flag("--json", options.json, _("Report as one JSON document"));
        m_app.add_flag("--show-secrets", options.showSecrets, _("Show text that is not for everybody, too"));
        CLI::Option* quiet = m_app.add_flag("-q,--quiet", options.quiet, _("Only changes and errors"));
        m_app.add_flag("-v,--verbose", options.verbose, _("Tell more"))->excludes(quiet);
        m_app.add_option("--color", options.color, _("Color diffs"))
            ->check(CLI::IsMember({"auto", "always", "never"}));
        m_app.add_option("--log", options.log, _("Where log records go"))
            ->check(CLI::IsMember({"stderr", "syslog"}));
        m_app.set_help_flag(kHelp, _("Print this help and exit"));
        m_app.set_version_flag("-V,--version", options.program + " " + ProductVersion(),
                               _("Print the version and exit"));
        m_app.option_defaults()->group(kOptions);
    }

    /// Where it is built in, the help does not name the option, and whoever gives it is told why.
    void AddModule() {
        if (!HasBuiltInModule())
            return AddPath("--module", m_call.options.moduleFile, "FILE", _("Load this module"));
        m_app.add_option("--module", m_call.options.moduleFile)->group("")->check([](const std::string&) {
            return std::string(_("the module is built into this program (leave the option out)"));
        });
    }

    /// An empty name, of a variable that was never set, must not stand for the host itself.
    void AddPath(const char* name, std::string& path, const char* type, const char* help) {
        m_app.add_option(name, path, help)
            ->type_name(type)
            ->check(CLI::Validator(
                [](const std::string& given) { return given.empty() ? _("its name is empty") : ""; }, ""));
    }

    Call m_call;
    CLI::App m_app;
};

}  // namespace ZET::Cli

#endif
