#include "cli/Lookup.h"

#include "cli/ExitStatus.h"
#include "deploy/edit/Edits.h"

namespace ZET::Cli {

void BeginLookup(Session& session, const char* key) {
    for (const char* field : {"found", "secret", key})
        session.Out().Set(field, nullptr);
}

std::string FileToShow(Session& session, const std::string& file) {
    std::string path = FileToRead(session.Product(), file);
    session.Out().Set("path", session.Product().HostPaths().RealName(path));
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

}  // namespace ZET::Cli
