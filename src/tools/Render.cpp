#include "Render.h"

#include <filesystem>
#include <system_error>

#include "Diff.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "Remedy.h"
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

std::string RenderStaged(Session& session, const Staging& staging, const std::string& templateName,
                         StringMap* values) {
    const std::string staged = staging.PathOf("rendered/" + templateName);
    const std::string workingCopy = WorkingCopy(session, templateName);
    const std::string source = TemplateFile(session, templateName);
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

std::string RenderQuietly(Session& session, const Staging& staging, const std::string& templateName) {
    const QuietLog quiet(session.Asked(), ZETLogError);
    return RenderStaged(session, staging, templateName);
}

void RenderOnce(Session& session, const std::string& templateName, const std::string& path,
                const StringMap& values) {
    StringMap allValues = values;
    allValues.insert(session.Config().TemplatesValues().begin(), session.Config().TemplatesValues().end());
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
    Process(session, templateName, path, values);
    if (!HasBecome(path, staged)) {
        throw Failure(
            path +
            ": is not what was rendered in trial (somebody else wrote it, or its template, at the same"
            " time: run the command again)");
    }
}

}  // namespace ZET
