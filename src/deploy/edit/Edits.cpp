#include "deploy/edit/Edits.h"

#include "cli/ExitStatus.h"
#include "deploy/edit/EditRules.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/targets/HostLists.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Secrets.h"
#include "text/FirstLine.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

/// Without lists that can be read, nobody can tell; the edit keeps its reserve.
const Target* CommittedTarget(Session& session, const std::string& path) {
    try {
        return session.Lists().CommittedTarget(path);
    } catch (const Failure& failure) {
        session.Out().Warning(std::string(failure.what()) +
                              "; so nobody can tell whether the next commit overwrites " + path);
        return nullptr;
    }
}

}  // namespace

std::shared_ptr<IZETConfigFile> OpenedFile(Session& session, const std::string& path, bool noMarkers) {
    auto file = session.Config().OpenConfigFile(path, session.Role(), noMarkers);
    if (!file) throw Failure(path + ": cannot be read any more (run the command again)");
    return file;
}

std::string FileToRead(Session& session, const std::string& file) {
    if (file.empty()) throw UsageError("FILE is empty (name a file)");
    std::string path = session.FilePath(file);
    RequireReadableFile(path);
    return path;
}

std::string FileToShow(Session& session, const std::string& file) {
    std::string path = FileToRead(session, file);
    session.Out().Set("secret", session.HostSecrets().IsPrivate(path));
    session.HostSecrets().RequireShown(path);
    return path;
}

void RequireNoTarget(Session& session, const std::string& path) {
    if (session.Asked().force) return;
    const Target* const target = CommittedTarget(session, path);
    if (target == nullptr) return;
    const std::string workingCopy = WorkingCopy(session, target->templateName);
    throw Failure(path + ": is made from [" + target->templateName +
                  "] and the next commit overwrites it (edit " + workingCopy +
                  " and commit, or use --force)");
}

void RequireRoomForNotice(Session& session, const std::string& path, const TextToEdit& text) {
    // Where the module finds its notice, it puts none.
    if (session.Asked().noMarkers || !MustComeFirst(text.firstLine) ||
        text.firstLine.find(ZETNoticeMarker) != std::string::npos)
        return;
    throw Failure(path + ":" + std::to_string(text.firstNumber) +
                  ": the programs that read the file need this line as its first, and a notice would come "
                  "before it (--no-markers edits without notice and markers)");
}

std::string LineToSet(Session& session, const std::string& path, const TextToEdit& text,
                      const std::string& line) {
    const LineEnds& ends = text.ends;
    if (ends.otherLine != 0) {
        const char* const how =
            ends.isOtherCarriageReturn
                ? ": ends with a carriage return and a line feed, other lines with a line feed alone"
                : ": ends with a line feed alone, other lines with a carriage return before it";
        session.Out().Warning(path + ":" + std::to_string(ends.otherLine) + how +
                              "; the line that is set has none (give all lines the same end)");
    }
    return WithLineEnd(line, ends);
}

void SaveEdited(IZETConfigFile& file) {
    RemedyErrors(kRemedyOfSaving, [&] { file.Save(true); });
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

std::function<void(const std::string& path)> Edit(Session& session,
                                                  const std::function<void(IZETConfigFile& file)>& edit) {
    return [&session, edit](const std::string& path) {
        const auto file = OpenedFile(session, path, session.Asked().noMarkers);
        RemedyErrors(kSimplerExpression, [&] { edit(*file); });
        const WrittenLanguage language(session.Core());
        SaveEdited(*file);
    };
}

}  // namespace ZET
