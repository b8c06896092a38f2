#include "deploy/targets/OwnCheck.h"

#include <algorithm>
#include <cstring>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Process.h"
#include "deploy/host/Words.h"
#include "deploy/targets/Secrets.h"

namespace ZET::Deploy {

namespace {

constexpr std::size_t kKeptOutput = 4096;

/// The command, with the file in place of each "{}".
std::vector<std::string> ArgumentsFor(const std::vector<std::string>& check, const std::string& staged) {
    std::vector<std::string> arguments = check;
    for (std::string& argument : arguments) {
        for (std::size_t place = argument.find("{}"); place != std::string::npos;
             place = argument.find("{}", place + staged.size()))
            argument.replace(place, 2, staged);
    }
    return arguments;
}

std::string SignalName(int number) {
    const char* name = sigabbrev_np(number);
    return name == nullptr ? Words("signal %s", std::to_string(number)) : "SIG" + std::string(name);
}

/// Puts the result of one run into words.
class Verdict {
  public:
    /// `excuse` replaces the output of the command, which may quote the file; empty if everybody may see it.
    Verdict(const Target& target, const std::string& path, const std::string& excuse)
        : m_target(target), m_path(path), m_excuse(excuse) {}

    std::optional<Problem> Of(const ProcessResult& result) const {
        const std::string& made = m_target.templateName;
        std::optional<Problem> problem;
        if (result.isLate) {
            problem = Against(Words("took longer over what [%s] renders to than %s s and was ended", made,
                                    std::to_string(m_target.checkTimeout.count())),
                              _("see why, or give it more seconds with check_timeout"));
        } else if (result.signal != 0) {
            problem = Against(Words("was ended by %s when it looked at what [%s] renders to",
                                    SignalName(result.signal), made),
                              _("run it by hand to see why"));
        } else if (result.status != 0) {
            problem = Against(
                Words("refuses what [%s] renders to, with status %s", made, std::to_string(result.status)),
                _("correct the template"));
        }
        if (problem) problem->output = m_excuse.empty() ? result.output : m_excuse;
        return problem;
    }

    Problem OfChangedFile() const {
        return Against(_("changed the file it was given"), _("let it only read"));
    }

    Problem OfFailure(const Failure& failure) const {
        Problem problem = ProblemOf(m_path, failure);
        problem.text =
            Words("what [%s] renders to cannot be checked: %s", m_target.templateName, problem.text);
        return problem;
    }

  private:
    Problem Against(const std::string& what, const std::string& remedy) const {
        return {m_path, 0, 0, Words("its check \"%s\" %s", m_target.check.front(), what), remedy};
    }

    const Target& m_target;
    const std::string& m_path;
    const std::string m_excuse;
};

std::string ExcuseFor(Deployment& product, const std::string& path, const std::string& staged) {
    Secrets& secrets = product.HostSecrets();
    const bool isHidden =
        secrets.Hides(path) || (Secrets::IsClosed(staged) && !product.Wanted().showsSecrets);
    return isHidden ? "(" + secrets.Excuse(path) + ")" : "";
}

}  // namespace

bool RunsOwnChecks(const Options& wanted) {
    return wanted.runsChecks && (wanted.root.empty() || wanted.runsChecksOfTree);
}

std::size_t CountChecksNotRun(const Options& wanted, const std::vector<Target>& targets) {
    if (RunsOwnChecks(wanted)) return 0;
    return static_cast<std::size_t>(std::count_if(
        targets.begin(), targets.end(), [](const Target& target) { return !target.check.empty(); }));
}

std::optional<Problem> OwnCheckProblem(Deployment& product, const Target& target, const std::string& path,
                                       const std::string& staged) {
    if (target.check.empty()) return std::nullopt;
    const Verdict verdict(target, path, ExcuseFor(product, path, staged));
    const mode_t mode = StateOf(staged).mode;
    const std::string bytes = ReadFileBytes(staged);
    ProcessResult result;
    try {
        result = RunProcess(ArgumentsFor(target.check, staged),
                            {.directory = "/", .timeLimit = target.checkTimeout, .keptOutput = kKeptOutput});
    } catch (const Failure& failure) {
        throw Failure(verdict.OfFailure(failure), failure.ErrorNumber());
    }
    if (std::optional<Problem> problem = verdict.Of(result)) return problem;
    // What was checked must be what is written.
    const FileState now = StateOf(staged);
    if (now.IsRegular() && now.mode == mode && ReadFileBytes(staged) == bytes) return std::nullopt;
    return verdict.OfChangedFile();
}

}  // namespace ZET::Deploy
