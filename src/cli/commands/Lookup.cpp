#include "cli/commands/Lookup.h"

#include "cli/ExitStatus.h"
#include "deploy/edit/Edits.h"

namespace ZET {

std::string FileToShow(Session& session) {
    std::string path = FileToRead(session.Product(), session.Asked().file);
    Secrets& secrets = session.Product().HostSecrets();
    session.Out().Set("secret", secrets.IsPrivate(path));
    secrets.RequireShown(path);
    return path;
}

int ReportLookup(Session& session, const std::string& what, const char* key,
                 const std::optional<std::string>& found) {
    Report& report = session.Out();
    report.Set("found", found.has_value());
    report.Set(key, found ? Value(*found) : Value(nullptr));
    if (found) {
        report.Data(*found);
    } else {
        report.Detail(what);
    }
    return found ? kDone : kFailed;
}

}  // namespace ZET
