#include "CommitPlan.h"

#include "ChangeReport.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "Process.h"
#include "Render.h"
#include "Signals.h"

namespace ZET {

namespace {

ProcessResult ResultOfCheck(const Target& target, const std::string& path,
                            const std::vector<std::string>& arguments) {
    try {
        return RunProcess(arguments);
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure& failure) {
        throw Failure(path + ": what [" + target.templateName +
                      "] renders to cannot be checked: " + failure.what());
    }
}

/// `path` is the target as it is on this host, below the root directory.
void RunOwnCheck(const Target& target, const std::string& path, const std::string& staged) {
    if (target.check.empty()) return;
    std::vector<std::string> arguments = target.check;
    for (std::string& argument : arguments) {
        for (std::size_t place = argument.find("{}"); place != std::string::npos;
             place = argument.find("{}", place + staged.size()))
            argument.replace(place, 2, staged);
    }
    const ProcessResult result = ResultOfCheck(target, path, arguments);
    if (result.status == 0) return;
    // What the command prints may quote the file.
    const std::string output = target.isSecret ? "" : "\n" + result.output;
    throw Failure(path + ": its check \"" + target.check.front() + "\" refuses what [" + target.templateName +
                  "] renders to, with status " + std::to_string(result.status) + " (correct the template)" +
                  output);
}

PlannedTarget::Change ChangeOf(const PlannedTarget& planned) {
    if (!planned.before.exists) return PlannedTarget::Change::Create;
    const bool isSame =
        planned.before.mode == planned.after.mode && HaveSameBytes(planned.path, planned.staged);
    return isSame ? PlannedTarget::Change::None : PlannedTarget::Change::Modify;
}

/// What the log has to say comes with the real rendering.
std::string RenderQuietly(Session& session, const Staging& staging, const Target& target) {
    const QuietLog quiet(session.Asked(), ZETLogError);
    return RenderStaged(session, staging, target.templateName);
}

}  // namespace

std::vector<PlannedTarget> PlanTargets(Session& session, const Staging& staging,
                                       const std::vector<Target>& targets, const Manifest& manifest) {
    std::vector<PlannedTarget> plan;
    for (const Target& target : targets) {
        SignalGuard::Check();
        PlannedTarget planned;
        planned.target = target;
        planned.path = session.FilePath(target.path);
        planned.staged = RenderQuietly(session, staging, target);
        RunOwnCheck(target, planned.path, planned.staged);
        planned.before = StateOf(planned.path);
        planned.after = StateInPlace(planned.path, planned.staged);
        planned.change = ChangeOf(planned);
        planned.isTouched = manifest.Has(planned.path) && !manifest.IsUntouched(planned.path);
        plan.push_back(std::move(planned));
    }
    return plan;
}

std::string DiffOf(const PlannedTarget& planned) {
    if (planned.target.isSecret || planned.change == PlannedTarget::Change::None) return "";
    return UnifiedDiff(planned.before.exists ? planned.path : "", planned.staged, planned.path);
}

}  // namespace ZET
