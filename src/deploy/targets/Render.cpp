#include "deploy/targets/Render.h"

#include <filesystem>
#include <memory>
#include <system_error>

#include "cli/ExitStatus.h"
#include "deploy/host/Diff.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/Secrets.h"
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

/// The file is called `name`, and by the reader `path`.
struct Rendered {
    const std::string& name;
    const std::string& path;
};

/// The log names the placeholders that it does not know, and others read it, too.
std::unique_ptr<QuietLog> QuietAbout(Session& session, const std::string& templateFile) {
    const bool isHidden = !templateFile.empty() && session.HostSecrets().Hides(templateFile);
    return isHidden ? std::make_unique<QuietLog>(session.Asked(), ZETLogError) : nullptr;
}

void Process(Session& session, const std::string& role, const std::string& templateName, const Rendered& file,
             StringMap* values) {
    Perform(session, templateName, file.path,
            [&] { session.Config().ProcessConfigFileTemplate(templateName, file.name, role, values); });
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

std::uintmax_t SizeOfTemplates(Session& session, const std::vector<Target>& targets) {
    std::uintmax_t size = 0;
    for (const Target& target : targets) {
        std::error_code error;
        const std::uintmax_t more =
            std::filesystem::file_size(TemplateFile(session, target.templateName), error);
        if (!error) size += more;
    }
    return size;
}

/// Stages what a role gets.
static std::string Stage(Session& session, const std::string& role, const Staging& staging,
                         const std::string& templateName, StringMap* values) {
    const std::string room = role == session.Role() ? "rendered/" : "rendered-for-" + role + "/";
    const std::string staged = staging.PathOf(room + templateName);
    const std::string workingCopy = WorkingCopy(session, templateName);
    const std::string source = TemplateFile(session, templateName);
    const std::unique_ptr<QuietLog> quiet = QuietAbout(session, source);
    const ParamOverride noSync(session.Core(), "ZET_SYNC", "no");
    if (IsFileExist(workingCopy)) {
        Process(session, role, templateName, {staged, staged}, values);
        RequireModeOf(source, staged);
        return staged;
    }
    const std::string standIn = staging.PathOf("templates/" + templateName);
    const ParamOverride directory(session.Core(), "ZET_CFG_DIR", staging.PathOf("templates"));
    Process(session, role, templateName, {staged, staged}, values);
    RequireModeOf(source, staged);
    NameWorkingCopy(staged, standIn, workingCopy);
    return staged;
}

std::string RenderStaged(Session& session, const Staging& staging, const std::string& templateName,
                         StringMap* values) {
    return Stage(session, session.Role(), staging, templateName, values);
}

std::string RenderStagedFor(Session& session, const Staging& staging, const std::string& templateName,
                            const std::string& role) {
    return Stage(session, role, staging, templateName, nullptr);
}

std::string RenderQuietly(Session& session, const Staging& staging, const std::string& templateName) {
    const QuietLog quiet(session.Asked(), ZETLogError);
    return RenderStaged(session, staging, templateName);
}

void RenderOnce(Session& session, const std::string& templateName, const std::string& name,
                const std::string& path, const StringMap& values) {
    StringMap allValues = values;
    allValues.insert(session.Config().TemplatesValues().begin(), session.Config().TemplatesValues().end());
    const std::unique_ptr<QuietLog> quiet = QuietAbout(session, TemplateFile(session, templateName));
    Perform(session, templateName, path, [&] {
        const auto file = session.Config().OpenConfigFileTemplate(templateName, name, session.Role(), false);
        if (!file) return;
        file->ApplyTemplates(allValues);
        file->Save(true);
    });
}

void InstallForHolder(Session& session, const std::string& templateName, const FileInPlace& place) {
    if (place.Holder() && !IsFileExist(WorkingCopy(session, templateName)))
        session.Config().InstallConfigFileTemplate(templateName);
}

void RenderTarget(Session& session, const TargetToRender& target) {
    const std::string& path = target.place.Path();
    InstallForHolder(session, target.templateName, target.place);
    const std::unique_ptr<QuietLog> quiet = QuietAbout(session, TemplateFile(session, target.templateName));
    Replacement replacement(session, target.place, target.version);
    replacement.KeepOriginal();
    const auto process = [&](const std::string& name) {
        Process(session, target.role, target.templateName, {name, path}, nullptr);
    };
    replacement.Make(StateOf(target.staged).mode, process, [&](const std::string& made) {
        if (HaveSameBytes(made, target.staged)) return;
        throw Failure(
            path +
            ": is not written, since its template was changed after it was checked (run the command "
            "again)");
    });
}

}  // namespace ZET
