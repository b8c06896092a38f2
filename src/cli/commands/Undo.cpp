#include "deploy/undo/Undo.h"
#include "cli/ChangeNumber.h"
#include "cli/ExitStatus.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "cli/commands/UndoReport.h"
#include "deploy/host/Failure.h"

namespace ZET::Cli {

namespace {

struct UndoWords {
    std::vector<std::string> entry;
    bool force = false;
    bool merge = false;
};

UndoOptions OptionsOf(const UndoWords& asked) {
    UndoOptions options;
    if (asked.entry.size() > 1) throw UsageError(_("more than one change (undo them one after the other)"));
    if (!asked.entry.empty()) options.entry = ChangeNumber(asked.entry.front());
    options.force = asked.force;
    options.merge = asked.merge;
    return options;
}

void TellFurther(Session& session, const UndoResult& result) {
    session.Out().Set("undone", result.undone);
    session.Out().Set("further", result.further ? Value(*result.further) : Value(nullptr));
    if (!result.problems.empty() || session.Asked().quiet) return;
    const std::string further =
        result.further ? " " + Filled(_("(\"undo %s\" goes further back)"), {std::to_string(*result.further)})
                       : "";
    session.Out().Line(
        Filled(session.Asked().dryRun ? _("would take back change %s") : _("took back change %s"),
               {std::to_string(result.undone)}) +
        further);
}

void BeginUndoReport(Session& session) {
    BeginFileReport(session);
    session.Out().Set("undone", nullptr);
    session.Out().Set("further", nullptr);
    session.Out().AddList("problems");
    session.Out().AddList("restart");
    session.Out().AddList("reload");
    session.TellFilesBy(TellFile);
}

int RunUndo(Session& session, const UndoWords& asked) {
    BeginUndoReport(session);
    const UndoResult result = Undo(session.Product(), OptionsOf(asked));
    TellFurther(session, result);
    return ReportUndo(session, result);
}

}  // namespace

int ReportUndo(Session& session, const UndoResult& result) {
    if (TellRefusal(session, result.problems)) return kFailed;
    if (result.entry) session.Out().Set("entry", *result.entry);
    return StatusAfter(session, result.isChanged);
}

void RegisterUndo(CommandLine& line) {
    line.Single(Subject::AnyFile)
        .Add<UndoWords>("undo", "Put back what a change replaced", RunUndo)
        .Any("NUMBER", &UndoWords::entry, "The change; the last one unless said")
        .Flag("--force", &UndoWords::force, "Files that were edited since, too")
        .Flag("--merge", &UndoWords::merge, "Leave what was edited since in them");
}

}  // namespace ZET::Cli
