#ifndef ZET_FILE_REPORT_H
#define ZET_FILE_REPORT_H

#include <vector>

#include "cli/Session.h"
#include "zet/ZETProblem.h"
#include "zet/deploy/FileOutcome.h"

/// Reports what happened to files.
namespace ZET::Cli {

/// What happened, or would happen, to a file, in the user's language.
const char* ResultText(FileOutcome::Result result, bool isDryRun);

/// The exit status of a command that succeeded: a dry run also reports by it whether anything would change.
int StatusAfter(const Session& session, bool isChange);

/// Gives the document the fields that it has even if the command fails.
void BeginFileReport(Session& session);

/// False if there are none.
bool TellProblems(Session& session, const std::vector<Problem>& problems);

/// As `TellProblems`, for problems that prevent writing; adds that nothing was changed.
bool TellRefusal(Session& session, const std::vector<Problem>& problems);

/// Reports one line of text and the diff; in the document, an element of the list, with the same fields in a
/// dry run. Returns the resulting exit status.
int ReportFile(Session& session, const FileOutcome& outcome, const char* list = "files");

/// As `ReportFile` without the exit status, for `Session::TellFilesBy`.
void TellFile(Session& session, const FileOutcome& outcome);

/// Reports the diff, or the changed lines if it is hidden.
void TellDiff(Report& report, const ShownDiff& diff);

/// Adds an element to the document's list. `edited` is as for `FieldsOf`.
void AddFile(Session& session, const char* list, const FileOutcome& outcome, const Value& edited = nullptr);

/// Gives the document the fields of a command about targets, each of which `teller` reports.
void BeginTargets(Session& session, Session::FileTeller teller);

/// The help of the option that runs the check commands of a tree.
inline constexpr char kRunChecksHelp[] = "With --root: run the tree's check commands, on this host";

/// Reports that check commands of a tree were not run, and how to run them.
void TellChecksNotRun(Session& session, std::size_t count);

/// Reports a last line with the number of targets for each result.
void TellResults(Session& session);

/// Fills the document's list "restart", which exists already, and reports a line.
void TellRestarts(Session& session, const std::vector<std::string>& services);

/// The same for the list "reload".
void TellReloads(Session& session, const std::vector<std::string>& services);

}  // namespace ZET::Cli

#endif
