#include "cli/FileReport.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Lookup.h"
#include "deploy/edit/EditRules.h"
#include "deploy/edit/LineEdits.h"

namespace ZET {

int RunLineGet(Session& session) {
    const std::string& pattern = session.Asked().pattern;
    RequirePattern(session.Product().Core(), pattern);
    session.Out().Set("file", session.Asked().file);
    session.Out().Set("pattern", pattern);
    session.Out().Set("found", nullptr);  // as long as nobody could look
    session.Out().Set("line", nullptr);
    const std::string path = FileToShow(session);
    return ReportLookup(session, path + ": has no line with \"" + pattern + "\"", "line",
                        GetLine(session.Product(), path, pattern));
}

int RunLineSet(Session& session) {
    const Request& asked = session.Asked();
    BeginFileReport(session);
    return ReportFile(session, SetLine(session.Product(), asked.file, asked.pattern, asked.text, asked.edit));
}

int RunLineRestore(Session& session) {
    const Request& asked = session.Asked();
    BeginFileReport(session);
    return ReportFile(session, RestoreLine(session.Product(), asked.file, asked.pattern, asked.edit));
}

}  // namespace ZET
