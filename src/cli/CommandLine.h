#ifndef ZET_COMMAND_LINE_H
#define ZET_COMMAND_LINE_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/GlobalOptions.h"
#include "cli/Names.h"
#include "cli/WordFilter.h"
#include "zet/deploy/Role.h"

namespace CLI {
class App;
}

/// The program's command line. Each command registers itself: its name, the structure that holds its
/// arguments, and the function that runs it. Only the source file knows the library that parses the words.
namespace ZET::Cli {

class Session;

/// A parsed command line.
struct Call {
    GlobalOptions options;
    std::function<int(Session&)> run;
};

/// A call during parsing, with pointers that are valid only as long as the commands.
struct CallInReading {
    Call call;
    std::vector<const std::string*> texts{};  ///< arguments that are texts of files, or values
    std::vector<const std::vector<std::string>*> assignments{};  ///< given as NAME=VALUE
};

/// The arguments of a command, independent of the structure that holds them. Without a command nothing is
/// added.
class Arguments {
  protected:
    Arguments(CLI::App* command, CallInReading& call) : m_command(command), m_call(call) {}

    void AddWord(const char* name, const char* help, std::string& word, bool isRequired = true);
    void AddWords(const char* name, const char* help, std::vector<std::string>& words, bool isRequired);
    void AddFlag(const char* name, const char* help, bool& flag);
    void AddChoice(const char* name, const std::vector<std::string>& words, const char* help,
                   std::string& word);
    void AddList(const char* name, const char* type, const char* help, std::vector<std::string>& values);
    void AddAssignments(const char* name, const char* help, std::vector<std::string>& values);
    void AddNumber(const char* name, const char* help, std::size_t& number);
    void AddOption(const char* name, const char* type, const char* help, std::optional<std::string>& word);
    void AddText(const std::string& text);

  private:
    CLI::App* m_command;
    CallInReading& m_call;
};

/// A command to which arguments are added, in the order of the help.
template <typename Given>
class Command : private Arguments {
  public:
    Command(CLI::App* command, CallInReading& call, std::shared_ptr<Given> given)
        : Arguments(command, call), m_given(std::move(given)) {}

    /// A required word.
    Command& operator()(const char* name, std::string Given::*member, const char* help) {
        AddWord(name, help, (*m_given).*member);
        return *this;
    }

    /// An optional word.
    Command& Maybe(const char* name, std::string Given::*member, const char* help) {
        AddWord(name, help, (*m_given).*member, false);
        return *this;
    }

    /// A required word that is a text of a file, or a value: only those who may read the file may see it.
    Command& Text(const char* name, std::string Given::*member, const char* help) {
        AddText((*m_given).*member);
        return (*this)(name, member, help);
    }

    /// `Any` takes any number of words, `Some` at least one.
    Command& Any(const char* name, std::vector<std::string> Given::*member, const char* help) {
        AddWords(name, help, (*m_given).*member, false);
        return *this;
    }
    Command& Some(const char* name, std::vector<std::string> Given::*member, const char* help) {
        AddWords(name, help, (*m_given).*member, true);
        return *this;
    }

    Command& Flag(const char* name, bool Given::*member, const char* help) {
        AddFlag(name, help, (*m_given).*member);
        return *this;
    }

    /// An option with one of these words.
    Command& Choice(const char* name, const std::vector<std::string>& words, std::string Given::*member,
                    const char* help) {
        AddChoice(name, words, help, (*m_given).*member);
        return *this;
    }

    /// An option with any word.
    Command& Option(const char* name, const char* type, std::optional<std::string> Given::*member,
                    const char* help) {
        AddOption(name, type, help, (*m_given).*member);
        return *this;
    }

    /// An option with a number, from 1.
    Command& Number(const char* name, std::size_t Given::*member, const char* help) {
        AddNumber(name, help, (*m_given).*member);
        return *this;
    }

    /// An option with a word, which may be given several times.
    Command& List(const char* name, const char* type, std::vector<std::string> Given::*member,
                  const char* help) {
        AddList(name, type, help, (*m_given).*member);
        return *this;
    }

    /// An option NAME=VALUE, which may be given several times.
    Command& Assignments(const char* name, std::vector<std::string> Given::*member, const char* help) {
        AddAssignments(name, help, (*m_given).*member);
        return *this;
    }

  private:
    std::shared_ptr<Given> m_given;
};

/// For a command without arguments of its own.
struct NoWords {};

/// What a command works on. A file of any kind need not concern the product.
enum class Subject { Product, AnyFile };

/// The commands of a family, or those without one.
class CommandFamily {
  public:
    /// With a filter, only the commands that it accepts are registered.
    CommandFamily(CLI::App& app, std::string prefix, CallInReading& call, Subject subject,
                  const WordFilter* filter)
        : m_app(app), m_prefix(std::move(prefix)), m_call(call), m_subject(subject), m_filter(filter) {}

    /// `run` does the work, reports it, and returns the exit status; it throws on failure.
    template <typename Given>
    Command<Given> Add(const char* name, const char* help, int (*run)(Session&, const Given&)) {
        auto given = std::make_shared<Given>();
        const auto runGiven = [given, run](Session& session) { return run(session, *given); };
        return {AddRun(name, help, runGiven), m_call, given};
    }

    /// What runs if none of the family's commands is named.
    template <typename Given>
    Command<Given> Alone(int (*run)(Session&, const Given&)) {
        auto given = std::make_shared<Given>();
        return {&AddAlone([given, run](Session& session) { return run(session, *given); }), m_call, given};
    }

  private:
    /// Null if the command is not registered.
    CLI::App* AddRun(const char* name, const char* help, const std::function<int(Session&)>& run);
    CLI::App& AddAlone(const std::function<int(Session&)>& run);
    void Choose(const std::string& words, const std::function<int(Session&)>& run) const;

    CLI::App& m_app;
    std::string m_prefix;  ///< of each command's words
    CallInReading& m_call;
    Subject m_subject;
    const WordFilter* m_filter;
};

/// All commands, or those that a filter accepts.
class CommandLine {
  public:
    CommandLine(CLI::App& app, CallInReading& call, const WordFilter* filter)
        : m_app(app), m_call(call), m_filter(filter) {}

    CommandFamily Family(const char* name, const char* help, Subject subject);

    /// Commands of one word.
    CommandFamily Single(Subject subject) { return {m_app, "", m_call, subject, m_filter}; }

  private:
    CLI::App& m_app;
    CallInReading& m_call;
    const WordFilter* m_filter;
};

/// Parses the arguments of the program for that role. If there is nothing to run (help or version, or a
/// mistake), this was reported to the user, `status` is the exit status, and the result is empty.
std::optional<Call> ParseCommandLine(Role role, int count, char** arguments, int& status);

/// The help of the command with these words, or of all commands if there are none; throws a `UsageError` if
/// there is no such command.
std::string HelpText(Role role, const std::vector<std::string>& words);

}  // namespace ZET::Cli

#endif
