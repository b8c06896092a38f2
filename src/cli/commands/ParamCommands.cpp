#include "cli/FileReport.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Lookup.h"
#include "deploy/edit/EditRules.h"
#include "deploy/edit/ParamEdits.h"

namespace ZET {

int RunParamGet(Session& session) {
    const std::string& name = session.Asked().name;
    RequireParamName(name);
    session.Out().Set("file", session.Asked().file);
    session.Out().Set("name", name);
    session.Out().Set("found", nullptr);  // as long as nobody could look
    session.Out().Set("value", nullptr);
    const std::string path = FileToShow(session);
    return ReportLookup(session, path + ": has no parameter \"" + name + "\"", "value",
                        GetParam(session.Product(), path, name));
}

int RunParamSet(Session& session) {
    const Request& asked = session.Asked();
    BeginFileReport(session);
    return ReportFile(session, SetParam(session.Product(), asked.file, asked.name, asked.text, asked.edit));
}

int RunParamRestore(Session& session) {
    const Request& asked = session.Asked();
    BeginFileReport(session);
    return ReportFile(session, RestoreParam(session.Product(), asked.file, asked.name, asked.edit));
}

}  // namespace ZET
