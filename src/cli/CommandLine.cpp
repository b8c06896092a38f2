#include "cli/CommandLine.h"
#include "cli/Names.h"  // IWYU pragma: keep, no name of it is ever written
#include "cli/Translation.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <sstream>
#include <string_view>
#include <utility>

#include "cli/CommandWords.h"
#include "cli/Continuations.h"
#include "cli/ExitStatus.h"
#include "cli/Grammar.h"
#include "cli/Mistake.h"
#include "cli/OwnWords.h"
#include "cli/Report.h"
#include "cli/Session.h"
#include "cli/WordsTaken.h"
#include "cli/commands/Registrations.h"
#include "deploy/host/Failure.h"
#include "text/Joined.h"

namespace ZET::Cli {

namespace {

using Names = std::vector<std::string>;

CLI::App* AddSubcommand(CLI::App& parent, const char* name, const char* help) {
    CLI::App* command = parent.add_subcommand(name, _(help))->fallthrough();
    if (parent.get_help_ptr() != nullptr)
        command->set_help_flag(kHelp)->group("");  // it is already shown among the options of all commands
    command->group(_(kCommands));
    return command;
}

Names FirstCommands() {
    Names names;
    for (const Registration& registration : kRegistrations)
        names.emplace_back(registration.word);
    return names;
}

/// What nothing took, or something that was not meant.
Names UnknownIn(const CLI::App& app, const Names& arguments) {
    Names unknown = app.remaining(true);
    std::erase(unknown, "--");
    return unknown.empty() ? OptionsBehindMarker(app, arguments) : unknown;
}

/// Whether the command line is right. A "--" that an option would take as its value is not meant to be one.
bool IsRight(Role role, const Names& arguments) {
    Grammar grammar(role, WordFilter({arguments.begin(), arguments.end()}));
    try {
        grammar.App().parse(Names(arguments.rbegin(), arguments.rend()));  // which takes them in reverse
    } catch (const CLI::ParseError&) {
        return false;
    }
    return OptionsBehindMarker(grammar.App(), arguments).empty() &&
           !IsIn(WordsTaken(grammar.App(), false), "--");
}

/// Whether the command line would be right if the unknown options behind "--" stood before it, with all that
/// follows them: there, the library looks for options only if the command takes no more operands.
bool IsRightBeforeMarker(Role role, const Mistake& mistake, Names arguments) {
    const auto unknown = std::find_if(
        mistake.unknown.begin(), mistake.unknown.end(),
        [&](const std::string& word) { return IsOption(word) && IsIn(mistake.behindMarker, word); });
    if (unknown == mistake.unknown.end()) return false;
    const auto marker = std::find(arguments.begin(), arguments.end(), "--");
    std::rotate(marker, std::find(marker, arguments.end(), *unknown), arguments.end());
    return IsRight(role, arguments);
}

/// The help that tells more, and the names that may be meant: what is not the name of a command stands in its
/// place, which is not always behind what was understood.
void AddNames(Mistake& mistake, const Continuations& known, const Names& arguments) {
    const bool isFirst = mistake.isCommandMissing && !mistake.unknown.empty() &&
                         !known.IsBehindLast(mistake.unknown.front(), arguments);
    mistake.command = isFirst ? known.Program() : known.Words();
    mistake.commands = isFirst ? FirstCommands() : known.Commands();
    mistake.options = known.Options();
}

/// What is wrong with the command line.
Mistake MistakeIn(Grammar& grammar, const CLI::ParseError& error, const Names& arguments) {
    const CLI::App& app = grammar.App();
    const Continuations known(app);
    Mistake mistake;
    mistake.unknown = UnknownIn(app, arguments);
    mistake.splitGroups = SplitGroups(app, arguments);
    mistake.behindMarker = BehindMarker(app, arguments);
    if (!arguments.empty()) mistake.lastWord = arguments.back();
    const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    const bool isExtra = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
    const bool lacksCommand = isMissing && known.LacksCommand();
    const bool isOption = !mistake.unknown.empty() && IsOption(mistake.unknown.front()) &&
                          !IsIn(mistake.behindMarker, mistake.unknown.front());
    const bool isUnexpected = lacksCommand ? isOption : isExtra && !mistake.unknown.empty();
    mistake.message =
        isUnexpected ? Unexpected(AsTyped(mistake.unknown, arguments)) : known.InOwnWords(error.what());
    mistake.isWordMissing = isMissing && !isUnexpected;
    mistake.isCommandMissing = lacksCommand && !isUnexpected;
    mistake.isRightBeforeMarker =
        isUnexpected && IsRightBeforeMarker(grammar.Asked().call.options.role, mistake, arguments);
    // A family that takes a word of its own takes a mistyped command for it.
    if (isUnexpected && !DidYouMean(known.FirstOperand(), known.Commands()).empty()) {
        mistake.isCommandMissing = true;
        mistake.unknown = {known.FirstOperand()};
    }
    AddNames(mistake, known, arguments);
    return mistake;
}

/// Prints the help or the version; returns the exit status.
int Print(GlobalOptions options, const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream text;
    app.exit(error, text, text);
    options.json = false;
    Report report(options);
    report.Text(text.str());
    return report.Finish(kDone);
}

/// Searches all arguments, since parsing may have stopped before the option.
bool AsksForDocument(int count, char** arguments) {
    return std::find(arguments, arguments + count, std::string_view("--json")) != arguments + count;
}

Names ArgumentsOf(int count, char** given) {
    return {given + std::min(count, 1), given + count};
}

/// Throws `CLI::ParseError` if there is nothing to run.
Call Read(Grammar&& grammar, int count, char** given) {
    GlobalOptions& options = grammar.Asked().call.options;
    // Asking the library whether an option was given would end the program if memory ran out.
    std::string usualFile = std::exchange(options.configFile, "");
    grammar.App().parse(count, given);
    const Names arguments = ArgumentsOf(count, given);
    for (const auto misread : {SplitGroups, OptionsBehindMarker})
        if (const Names words = misread(grammar.App(), arguments); !words.empty())
            throw CLI::ExtrasError(Unexpected(words), CLI::ExitCodes::ExtrasError);
    options.words = WordsOf(arguments, grammar.Asked());
    options.isConfigFileNamed = !options.configFile.empty();
    if (!options.isConfigFileNamed) options.configFile = std::move(usualFile);
    return std::move(grammar.Asked().call);
}

/// Prints what was requested, or reports the mistake; returns the exit status.
int Answer(Grammar& grammar, const CLI::ParseError& error, int count, char** arguments) {
    GlobalOptions& options = grammar.Asked().call.options;
    if (error.get_exit_code() == 0) return Print(options, grammar.App(), error);
    options.json = options.json || AsksForDocument(count, arguments);
    options.command.clear();  // which may have been read before the mistake was seen
    Report report(options);
    report.Error(Describe(MistakeIn(grammar, error, ArgumentsOf(count, arguments))));
    return report.Finish(kWrongUse);
}

}  // namespace

void Arguments::AddWord(const char* name, const char* help, std::string& word, bool isRequired) {
    if (m_command == nullptr) return;
    CLI::Option* const option = m_command->add_option(name, word, _(help))->required(isRequired);
    if (isRequired) return;
    // An empty word would count as missing.
    option->check([](const std::string& given) {
        return given.empty() ? std::string(_("is empty (name one, or leave it out)")) : std::string();
    });
}

void Arguments::AddWords(const char* name, const char* help, std::vector<std::string>& words,
                         bool isRequired) {
    if (m_command == nullptr) return;
    m_command->add_option(name, words, _(help))->required(isRequired);
}

void Arguments::AddFlag(const char* name, const char* help, bool& flag) {
    if (m_command == nullptr) return;
    m_command->add_flag(name, flag, _(help));
}

void Arguments::AddChoice(const char* name, const std::vector<std::string>& words, const char* help,
                          std::string& word) {
    if (m_command == nullptr) return;
    m_command->add_option(name, word, _(help))->check(OneOfWords(words))->type_name(Text::Joined(words, "|"));
}

void Arguments::AddList(const char* name, const char* type, const char* help,
                        std::vector<std::string>& values) {
    if (m_command == nullptr) return;
    m_command->add_option(name, values, _(help))->type_name(type)->allow_extra_args(false);
}

void Arguments::AddAssignments(const char* name, const char* help, std::vector<std::string>& values) {
    if (m_command == nullptr) return;
    m_call.assignments.push_back(&values);
    m_command->add_option(name, values, _(help))->type_name("NAME=VALUE")->allow_extra_args(false);
}

void Arguments::AddNumber(const char* name, const char* help, std::size_t& number) {
    if (m_command == nullptr) return;
    m_command->add_option(name, number, _(help))->type_name("COUNT")->check([](const std::string& given) {
        std::size_t read = 0;
        const char* const end = given.data() + given.size();
        const auto [after, error] = std::from_chars(given.data(), end, read);
        const bool isCount = error == std::errc() && after == end && read != 0;
        return isCount ? std::string() : Filled(_("\"%s\" is no number from 1"), {given});
    });
}

void Arguments::AddOption(const char* name, const char* type, const char* help,
                          std::optional<std::string>& word) {
    if (m_command == nullptr) return;
    m_command->add_option(name, word, _(help))->type_name(type);
}

void Arguments::AddText(const std::string& text) {
    if (m_command == nullptr) return;
    m_call.texts.push_back(&text);
}

CLI::App* CommandFamily::AddRun(const char* name, const char* help, const std::function<int(Session&)>& run) {
    if (m_filter != nullptr && !m_filter->MayNameCommand(name)) return nullptr;
    CLI::App* command = AddSubcommand(m_app, name, help);
    command->callback([self = *this, run, words = m_prefix + name] { self.Choose(words, run); });
    return command;
}

CLI::App& CommandFamily::AddAlone(const std::function<int(Session&)>& run) {
    m_app.require_subcommand(0, 1);
    m_app.callback([self = *this, run] {
        CLI::App& app = self.m_app;
        if (app.get_subcommands().empty()) return self.Choose(app.get_name(), run);
        // The library assigns words that a command cannot take to its family.
        for (const CLI::Option* option : app.get_options())
            if (option->count() != 0)
                throw CLI::ExtrasError(
                    Unexpected({option->get_positional() ? option->results().front() : option->get_name()}),
                    CLI::ExitCodes::ExtrasError);
    });
    return m_app;
}

void CommandFamily::Choose(const std::string& words, const std::function<int(Session&)>& run) const {
    m_call.call.options.command = words;
    m_call.call.run = [run, subject = m_subject](Session& session) {
        if (subject == Subject::AnyFile) session.Wanted().needsConfigFile = session.Asked().isConfigFileNamed;
        return run(session);
    };
}

CommandFamily CommandLine::Family(const char* name, const char* help, Subject subject) {
    CLI::App* family = AddSubcommand(m_app, name, help)->require_subcommand(1);
    return {*family, std::string(name) + " ", m_call, subject, m_filter};
}

std::optional<Call> ParseCommandLine(Role role, int count, char** arguments, int& status) {
    const WordFilter filter({arguments + std::min(count, 1), arguments + count});
    try {
        // Most command lines are correct, so registering what they do not name is unnecessary.
        return Read(Grammar(role, filter), count, arguments);
    } catch (const CLI::ParseError&) {
    }
    Grammar grammar(role);
    grammar.AddCommands(filter);
    try {
        return Read(std::move(grammar), count, arguments);
    } catch (const CLI::ParseError& error) {
        status = Answer(grammar, error, count, arguments);
        return std::nullopt;
    }
}

std::string HelpText(Role role, const std::vector<std::string>& words) {
    Grammar grammar(role);
    grammar.AddAll();
    CLI::App* command = &grammar.App();
    std::string before;
    for (const std::string& word : words) {
        Names names;
        CLI::App* found = nullptr;
        for (CLI::App* each : command->get_subcommands([](const CLI::App*) { return true; })) {
            names.push_back(each->get_name());
            if (each->get_name() == word) found = each;
        }
        if (found == nullptr) {
            throw UsageError(Filled(_("unknown command \"%s\""), {word}) + " (" + DidYouMean(word, names) +
                             Filled(_("see \"%s --help\""), {ProgramOf(role)}) + ")");
        }
        before += (before.empty() ? "" : " ") + command->get_name();
        command = found;
    }
    return command->help(before);
}

}  // namespace ZET::Cli
