#include "cli/CommandLine.h"
#include "cli/Names.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <initializer_list>
#include <set>
#include <sstream>
#include <string_view>

#include "cli/ExitStatus.h"
#include "cli/Report.h"
#include "cli/commands/Commands.h"
#include "deploy/host/Installed.h"

namespace ZET {

namespace {

/// What a command takes beside the options of all; the order is that of the help.
class CommandLine {
  public:
    using Words = std::set<std::string_view>;

    /// Of the commands, only those are made known that `words`, the arguments, may ask for: a command line
    /// that knows all takes longer to build than a small file takes to edit.
    CommandLine(Request& request, CLI::App& app, const Words& words) : m_request(request), m_app(app) {
        AddOptionsOfAll();
        if (AsksForHelp(words) || !AddCommands([&](std::string_view name) { return words.count(name) != 0; }))
            AddCommands([](std::string_view) { return true; });
    }

  private:
    using Run = int (*)(Session&);

    /// A help lists all commands. Its letter may stand in a group of them.
    static bool AsksForHelp(const Words& words) {
        return std::any_of(words.begin(), words.end(), [](std::string_view word) {
            return word.starts_with('-') && word.find('h') != std::string_view::npos;
        });
    }

    /// Adds the groups of which a command is wanted; false when there is none.
    template <typename IsWanted>
    bool AddCommands(IsWanted isWanted) {
        const struct {
            std::initializer_list<std::string_view> names;
            void (CommandLine::*add)();
        } groups[] = {
            {{"commit-config", "check-config", "rollback-config", "status", "values"},
             &CommandLine::AddConfigCommands},
            {{"template"}, &CommandLine::AddTemplateCommands},
            {{"param"}, &CommandLine::AddParamCommands},
            {{"line"}, &CommandLine::AddLineCommands},
            {{"file"}, &CommandLine::AddFileCommands},
            {{"option"}, &CommandLine::AddOptionCommands},
            {{"explain", "doctor"}, &CommandLine::AddDiagnosisCommands},
        };
        bool any = false;
        for (const auto& group : groups) {
            if (std::none_of(group.names.begin(), group.names.end(), isWanted)) continue;
            (this->*group.add)();
            any = true;
        }
        return any;
    }

    /// Such a file need not have anything to do with the product.
    static bool IsAboutAnyFile(std::string_view words) {
        const std::string_view first = words.substr(0, words.find(' '));
        return first == "param" || first == "line" || first == "file" || first == "explain" ||
               first == "doctor";
    }

    CLI::App* Command(CLI::App& parent, const char* name, Run run, const char* help) {
        CLI::App* command = parent.add_subcommand(name, help)->fallthrough();
        const std::string words = &parent == &m_app ? name : parent.get_name() + " " + name;
        command->callback([this, run, words] {
            m_request.command = words;
            m_request.run = run;
            m_request.isConfigFileNamed = m_app.count("--config") != 0;
            m_request.needsConfigFile = !IsAboutAnyFile(words);
        });
        return command;
    }

    CLI::App& Family(const char* name, const char* help) {
        return *m_app.add_subcommand(name, help)->require_subcommand(1)->fallthrough();
    }

    void AddFile(CLI::App* command) { command->add_option("FILE", m_request.file, "The file")->required(); }

    void AddOptionsOfAll() {
        m_app.require_subcommand(1);
        // An empty name, of a variable that was never set, must not stand for the host itself.
        const CLI::Validator isNamed(
            [](const std::string& name) { return name.empty() ? "its name is empty" : ""; }, "");
        m_app.add_option("-c,--config", m_request.configFile, "The product's main configuration file")
            ->type_name("FILE")
            ->check(isNamed);
        m_app.add_option("--root", m_request.root, "Work on the host tree in DIR")
            ->type_name("DIR")
            ->check(isNamed);
        m_app.add_option("--module", m_request.moduleFile, "Load this module")
            ->type_name("FILE")
            ->check(isNamed);
        m_app.add_flag("-n,--dry-run", m_request.dryRun, "Say what would change, and change nothing");
        m_app.add_flag("--diff", m_request.diff, "Show each change as a unified diff");
        m_app.add_flag("--json", m_request.json, "Report as one JSON document");
        m_app.add_flag("--show-secrets", m_request.showSecrets, "Show text that is not for everybody, too");
        CLI::Option* quiet = m_app.add_flag("-q,--quiet", m_request.quiet, "Only errors");
        m_app.add_flag("-v,--verbose", m_request.verbose, "Tell more")->excludes(quiet);
        m_app.add_option("--color", m_request.color, "Color diffs")
            ->check(CLI::IsMember({"auto", "always", "never"}));
        m_app.add_option("--log", m_request.log, "Where log records go")
            ->check(CLI::IsMember({"stderr", "syslog"}));
        m_app.set_help_flag("-h,--help", "Print this help and exit");
        m_app.set_version_flag("-V,--version", m_request.program + " " + ProductVersion());
    }

    void AddConfigCommands() {
        CLI::App* commit = Command(m_app, "commit-config", RunCommitConfig,
                                   "Render the templates of the role into their targets");
        commit->add_option("TEMPLATE", m_request.names, "Only these templates");
        AddRunChecks(commit);
        commit->add_option("--set", m_request.assignments, "With -n: as if a parameter had this value")
            ->type_name("NAME=VALUE")
            ->allow_extra_args(false);

        CLI::App* check = Command(m_app, "check-config", RunCheckConfig,
                                  "Tell every problem of the templates and their targets");
        check->add_option("TEMPLATE", m_request.names, "Only these templates");
        AddRunChecks(check);
        check->add_flag("--no-checks", m_request.noChecks, "Run no check commands of the targets");

        CLI::App* rollback = Command(m_app, "rollback-config", RunRollbackConfig,
                                     "Put back what was there before the first commit");
        rollback->add_option("TARGET", m_request.names, "Only these files");
        rollback->add_flag("--force", m_request.force, "Files that were edited since, too");

        Command(m_app, "status", RunStatus, "Tell the role and the state of each target");
        Command(m_app, "values", RunValues, "List the template values");
    }

    void AddRunChecks(CLI::App* command) {
        command->add_flag("--run-checks", m_request.runChecks,
                          "With --root: run the tree's check commands, on this host");
    }

    void AddTemplateCommands() {
        CLI::App& family = Family("template", "Work on single templates");
        CLI::App* install =
            Command(family, "install", RunTemplateInstall, "Install the working copy of a template");
        install->add_option("NAME", m_request.names, "The templates")->required();
        install->add_flag("--force", m_request.force, "Over a differing one, which is kept as NAME.old");

        CLI::App* process = Command(family, "process", RunTemplateProcess, "Render one template into a file");
        process->add_option("NAME", m_request.name, "The template")->required();
        process->add_option("TARGET", m_request.target, "The file, or - for standard output")->required();
        process->add_option("--value", m_request.assignments, "Another value for this run (NAME without ${})")
            ->type_name("NAME=VALUE")
            ->allow_extra_args(false);
    }

    void AddForce(CLI::App* command) {
        command->add_flag("--force", m_request.edit.force, "Edit a committed target, too");
    }

    void AddEditOptions(CLI::App* command) {
        AddForce(command);
        command->add_flag("--no-markers", m_request.edit.noMarkers, "Edit without marker lines");
        command->add_flag("--no-backup", m_request.edit.noBackup, "Keep no reserve of the file");
    }

    void AddParamCommands() {
        CLI::App& param = Family("param", "Look up and edit name=value parameters of a file");
        AddLookup(Command(param, "get", RunParamGet, "Print the value of a parameter"), "NAME",
                  m_request.name);
        AddSet(Command(param, "set", RunParamSet, "Set a parameter"), "NAME", m_request.name, "VALUE");
        AddRestore(Command(param, "restore", RunParamRestore, "Bring back a parameter's former line"), "NAME",
                   m_request.name);
    }

    void AddLineCommands() {
        CLI::App& line = Family("line", "Look up and edit lines of a file by a regular expression");
        AddLookup(Command(line, "get", RunLineGet, "Print the first line that matches"), "PATTERN",
                  m_request.pattern);
        AddSet(Command(line, "set", RunLineSet, "Set every line that matches"), "PATTERN", m_request.pattern,
               "LINE");
        AddRestore(Command(line, "restore", RunLineRestore, "Bring back former lines that match"), "PATTERN",
                   m_request.pattern);
    }

    void AddLookup(CLI::App* command, const char* keyName, std::string& key) {
        AddFile(command);
        command->add_option(keyName, key, "What to look for")->required();
    }

    void AddSet(CLI::App* command, const char* keyName, std::string& key, const char* textName) {
        AddLookup(command, keyName, key);
        command->add_option(textName, m_request.text, "The new text")->required();
        AddEditOptions(command);
    }

    void AddRestore(CLI::App* command, const char* keyName, std::string& key) {
        AddLookup(command, keyName, key);
        command->add_flag("--all-blocks", m_request.edit.allBlocks, "Drop the managed blocks of others too");
        AddEditOptions(command);
    }

    void AddFileCommands() {
        CLI::App& family = Family("file", "Work on whole files");
        CLI::App* strip = Command(family, "strip", RunFileStrip, "Take the managed blocks out");
        AddFile(strip);
        strip->add_flag("--no-backup", m_request.edit.noBackup, "Keep no reserve of the file");
        AddForce(strip);
        const struct {
            const char* name;
            Run run;
            const char* help;
        } rest[] = {{"reserve", RunFileReserve, "Keep the file as it is now"},
                    {"restore", RunFileRestore, "Put the reserve back"}};
        for (const auto& entry : rest)
            AddFile(Command(family, entry.name, entry.run, entry.help));
        CLI::App* forget = Command(family, "forget", RunFileForget, "Drop the reserve");
        AddFile(forget);
        AddForce(forget);
    }

    void AddOptionCommands() {
        CLI::App& family = Family("option", "The product's main configuration file");
        Command(family, "get", RunOptionGet, "Print the value of a parameter")
            ->add_option("NAME", m_request.name, "The parameter")
            ->required();
        CLI::App* set = Command(family, "set", RunOptionSet, "Set a parameter");
        set->add_option("NAME", m_request.name, "The parameter")->required();
        set->add_option("VALUE", m_request.text, "Its value")->required();
    }

    void AddDiagnosisCommands() {
        Command(m_app, "explain", RunExplain, "Tell where the lines of a file come from")
            ->add_option("FILE[:LINE]", m_request.file, "The file, and one line of it")
            ->required();
        AddFile(Command(m_app, "doctor", RunDoctor, "Tell damaged markers of a file and a repair"));
    }

    Request& m_request;
    CLI::App& m_app;
};

std::string WhatIsWrong(const std::vector<std::string>& unknown, const std::string& message,
                        bool isCommandMissing) {
    if (!isCommandMissing) return message;
    return unknown.empty() ? "a command is missing" : "unknown command \"" + unknown.front() + "\"";
}

/// What is wrong with the command line, whose last argument is `last`, and what to do about it.
std::string DescribeMistake(const CLI::App& app, const CLI::ParseError& error, std::string_view last) {
    const std::vector<std::string> unknown = app.remaining(true);
    const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    const bool isCommand = isMissing && std::string(error.what()).find("ubcommand") != std::string::npos;
    // What is missing may be there, and have been taken for an option.
    const auto isOption = [](std::string_view word) { return word.starts_with('-'); };
    const bool isTaken =
        isMissing && !isCommand && (isOption(last) || std::any_of(unknown.begin(), unknown.end(), isOption));
    return WhatIsWrong(unknown, error.what(), isCommand) + " (" +
           (isTaken ? "put \"--\" before a value that begins with \"-\", or " : "") + "see \"" +
           app.get_name() + " --help\")";
}

/// The help or the version; returns the exit status.
int Print(Request request, const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream text;
    app.exit(error, text, text);
    request.json = false;
    Report report(request);
    report.Text(text.str());
    return report.Finish(kDone);
}

/// What was read before the mistake may lack the option that the reader relies on.
bool AsksForDocument(int count, char** arguments) {
    return std::find(arguments, arguments + count, std::string_view("--json")) != arguments + count;
}

}  // namespace

std::optional<Request> ParseCommandLine(const std::string& program, int count, char** arguments,
                                        int& status) {
    Request request;
    request.program = program;
    request.role = program == "zet-init" ? "server" : "client";
    CLI::App app("Join this host to a network domain in the role of a " + request.role, program);
    const CommandLine commandLine(request, app, {arguments + std::min(count, 1), arguments + count});
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            status = Print(request, app, error);
        } else {
            request.json = request.json || AsksForDocument(count, arguments);
            Report report(request);
            report.Error(DescribeMistake(app, error, arguments[count - 1]));
            status = report.Finish(kWrongUse);
        }
        return std::nullopt;
    }
    return request;
}

}  // namespace ZET
