#ifndef ZET_FILE_REPORT_H
#define ZET_FILE_REPORT_H

#include <vector>

#include "cli/Session.h"
#include "zet/ZETProblem.h"
#include "zet/deploy/FileOutcome.h"

/// What happened to files, told to the reader.
namespace ZET::Cli {

/// What happened to a file, in the reader's language, or what would.
const char* ResultText(FileOutcome::Result result, bool isDryRun);

/// Gives the document the fields that it has even if the command fails.
void BeginFileReport(Session& session);

/// False when there are none.
bool TellProblems(Session& session, const std::vector<Problem>& problems);

/// The same of what keeps a command from writing, and that nothing was changed.
bool TellRefusal(Session& session, const std::vector<Problem>& problems);

/// One line of text and the diff; an element of the list of the document, with the same fields in a
/// dry run. Returns the exit status that belongs to it.
int ReportFile(Session& session, const FileOutcome& outcome, const char* list = "files");

/// The same without the exit status, for a session that tells its files.
void TellFile(Session& session, const FileOutcome& outcome);

/// The diff, or where it is hidden.
void TellDiff(Report& report, const ShownDiff& diff);

/// An element of the document's list. `edited` is that of `FieldsOf`.
void AddFile(Session& session, const char* list, const FileOutcome& outcome, const Value& edited = nullptr);

/// Gives the document the fields of a command about targets, each of which is told by `teller`.
void BeginTargets(Session& session, Session::FileTeller teller);

/// Of the option with which check commands of a tree are run.
inline constexpr char kRunChecksHelp[] = "With --root: run the tree's check commands, on this host";

/// That check commands of a tree were not run, and how to have them run.
void TellChecksNotRun(Session& session, std::size_t count);

/// A last line that says how many targets came to which result.
void TellResults(Session& session);

/// The list "restart" of the document, which is there already, and a line.
void TellRestarts(Session& session, const std::vector<std::string>& services);

/// The same of the list "reload".
void TellReloads(Session& session, const std::vector<std::string>& services);

}  // namespace ZET::Cli

#endif
