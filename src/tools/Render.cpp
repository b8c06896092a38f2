#include "Render.h"

#include <memory>

#include "Diff.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "Remedy.h"
#include "Secrets.h"
#include "zet/ZETFiles.h"

namespace ZET {

namespace {

template <typename Operation>
void Perform(Session& session, const std::string& templateName, const std::string& path,
             Operation operation) {
    const WrittenLanguage language(session.Core());
    const LoggedFailures failures;
    // The module does not say why it could not save.
    RemedyErrors("make room, or see to the rights of its directory", operation);
    if (failures.Any()) {
        throw Failure(path + ": the template " + templateName +
                      " could not be rendered into it (the log says why; then run the command again)");
    }
}

/// The log names the placeholders that it does not know, and others read it, too.
std::unique_ptr<QuietLog> QuietAbout(Session& session, const std::string& templateFile) {
    const bool isHidden = !templateFile.empty() && session.HostSecrets().Hides(templateFile);
    return isHidden ? std::make_unique<QuietLog>(session.Asked(), ZETLogError) : nullptr;
}

void Process(Session& session, const std::string& templateName, const std::string& path, StringMap* values) {
    Perform(session, templateName, path,
            [&] { session.Config().ProcessConfigFileTemplate(templateName, path, session.Role(), values); });
}

/// The notice names the template that was read: the working copy to be, not its stand-in in the private
/// directory.
void NameWorkingCopy(const std::string& staged, const std::string& standIn, const std::string& workingCopy) {
    std::string bytes = ReadFileBytes(staged);
    const std::size_t place = bytes.find(standIn);
    if (place == std::string::npos) return;
    bytes.replace(place, standIn.size(), workingCopy);
    WriteStagedFile(staged, bytes, StateOf(staged).mode);
}

}  // namespace

std::string WorkingCopy(Session& session, const std::string& templateName) {
    return session.Param("ZET_CFG_DIR") + "/" + templateName;
}

std::string TemplateFile(Session& session, const std::string& templateName) {
    for (const char* directory : {"ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR"}) {
        const std::string file = session.Param(directory) + "/" + templateName;
        if (IsFileExist(file)) return file;
    }
    return "";
}

std::string RenderStaged(Session& session, const Staging& staging, const std::string& templateName,
                         StringMap* values) {
    const std::string staged = staging.PathOf("rendered/" + templateName);
    const std::string workingCopy = WorkingCopy(session, templateName);
    const std::string source = TemplateFile(session, templateName);
    const std::unique_ptr<QuietLog> quiet = QuietAbout(session, source);
    const ParamOverride noSync(session.Core(), "ZET_SYNC", "no");
    if (IsFileExist(workingCopy)) {
        Process(session, templateName, staged, values);
        RequireModeOf(source, staged);
        return staged;
    }
    const std::string standIn = staging.PathOf("templates/" + templateName);
    const ParamOverride directory(session.Core(), "ZET_CFG_DIR", staging.PathOf("templates"));
    Process(session, templateName, staged, values);
    RequireModeOf(source, staged);
    NameWorkingCopy(staged, standIn, workingCopy);
    return staged;
}

void RenderOnce(Session& session, const std::string& templateName, const std::string& path,
                const StringMap& values) {
    StringMap allValues = values;
    allValues.insert(session.Config().TemplatesValues().begin(), session.Config().TemplatesValues().end());
    const std::unique_ptr<QuietLog> quiet = QuietAbout(session, TemplateFile(session, templateName));
    Perform(session, templateName, path, [&] {
        const auto file = session.Config().OpenConfigFileTemplate(templateName, path, session.Role(), false);
        if (!file) return;
        file->ApplyTemplates(allValues);
        file->Save(true);
    });
}

void RenderTarget(Session& session, const std::string& templateName, const std::string& path,
                  const std::string& staged, StringMap* values) {
    session.Config().ReserveConfigFile(path);
    const std::unique_ptr<QuietLog> quiet = QuietAbout(session, TemplateFile(session, templateName));
    Process(session, templateName, path, values);
    if (!HasBecome(path, staged)) {
        throw Failure(
            path +
            ": is not what was rendered in trial (somebody else wrote it, or its template, at the same"
            " time: run the command again)");
    }
}

}  // namespace ZET
