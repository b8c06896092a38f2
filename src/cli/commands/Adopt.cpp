#include "deploy/edit/Adopt.h"

#include "cli/FileReport.h"
#include "cli/commands/Registrations.h"

namespace ZET::Cli {

namespace {

struct AdoptOptions {
    std::string file;
};

int Adopt(Session& session, const AdoptOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, AdoptFile(session.Product(), asked.file));
}

}  // namespace

void RegisterAdopt(CommandLine& line) {
    line.Single(Subject::Product)
        .Add<AdoptOptions>("adopt", "Turn an edit of a target into a change of its template", Adopt)(
            "FILE", &AdoptOptions::file, "The target");
}

}  // namespace ZET::Cli
