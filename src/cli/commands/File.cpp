#include "cli/FileReport.h"
#include "cli/commands/EditArguments.h"
#include "cli/commands/Registrations.h"
#include "deploy/edit/Reserves.h"

namespace ZET::Cli {

namespace {

struct FileOptions : EditOptions {
    std::string file;
};

int Strip(Session& session, const FileOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, StripFile(session.Product(), asked.file, asked));
}

int Reserve(Session& session, const FileOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, ReserveFile(session.Product(), asked.file));
}

int Restore(Session& session, const FileOptions& asked) {
    BeginFileReport(session);
    return ReportFile(session, RestoreFile(session.Product(), asked.file));
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
    add("restore", "Put the reserve back", Restore);
    auto forget = add("forget", "Drop the reserve", Forget);
    AddForce(forget);
}

}  // namespace ZET::Cli
