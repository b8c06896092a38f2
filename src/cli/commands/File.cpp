#include "cli/ExitStatus.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"
#include "cli/commands/EditArguments.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/Reserves.h"
#include "deploy/history/Originals.h"
#include "deploy/host/Failure.h"

namespace ZET::Cli {

namespace {

struct FileOptions : EditOptions {
    std::string file;
};

struct ListOptions {
    bool null = false;
};

int ListReserves(Session& session, const ListOptions& asked) {
    Report& out = session.Out();
    out.AddList("originals");
    if (asked.null && session.Asked().json)
        throw UsageError(_("--json and --null exclude each other (leave one of them out)"));
    for (const KeptOriginal& original : ListOriginals(session.Product())) {
        out.Add(
            "originals",
            Fields{{"path", original.path}, {"reserve", original.reserve}, {"existed", original.existed}});
        if (asked.null) {
            out.Bytes(original.reserve + '\0');
        } else {
            out.Data(original.reserve);
        }
    }
    return kDone;
}

int Strip(Session& session, const FileOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, StripFile(session.Product(), asked.file, asked));
}

int Reserve(Session& session, const FileOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, ReserveFile(session.Product(), asked.file));
}

int RestoreReserved(Session& session, const FileOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, RestoreFile(session.Product(), asked.file, asked));
}

int Forget(Session& session, const FileOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, ForgetReserve(session.Product(), asked.file, asked));
}

}  // namespace

void RegisterFile(CommandLine& line) {
    auto family = line.Family("file", "Work on whole files", Subject::AnyFile);
    const auto add = [&family](const char* name, const char* help, auto run) {
        auto command = family.Add<FileOptions>(name, help, run);
        command("FILE", &FileOptions::file, "The file");
        return command;
    };
    auto strip = add("strip", "Take the managed blocks out", Strip);
    AddNoBackup(strip);
    AddForce(strip);
    add("reserve", "Keep the file as it is now", Reserve);
    add("restore", "Put the reserve back", RestoreReserved).Flag("--force", &EditOptions::force, kForceHelp);
    auto forget = add("forget", "Drop the reserve", Forget);
    AddForce(forget);
    family.Add<ListOptions>("list", "List the reserves of the files that the history knows", ListReserves)
        .Flag("--null", &ListOptions::null, "End each name by a NUL byte, and print it as it is");
}

}  // namespace ZET::Cli
