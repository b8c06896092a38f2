#include "Edits.h"

#include "ChangeReport.h"
#include "EditRules.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "Remedy.h"

namespace ZET {

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

void SaveEdited(IZETConfigFile& file) {
    RemedyErrors(kRemedyOfSaving, [&] { file.Save(true); });
}

int ReportLookup(Session& session, const std::string& what, const char* key,
                 const std::optional<std::string>& found, bool isSecret) {
    Report& report = session.Out();
    report.Set("found", found.has_value());
    report.Set("secret", isSecret);
    report.Set(key, found && !isSecret ? Value(*found) : Value(nullptr));
    if (found) {
        report.Data(*found);
    } else {
        report.Detail(what);
    }
    return found ? kDone : kFailed;
}

bool IsSecretInDocument(Session& session, const std::string& path) {
    return session.Asked().json && IsSecret(session, path, "text of the file");
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
