#include "deploy/targets/Render.h"

#include <fcntl.h>

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/Language.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/OwnText.h"
#include "deploy/targets/Secrets.h"
#include "deploy/targets/TemplateFiles.h"
#include "posix/Descriptor.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

template <typename Operation>
void Perform(Deployment& product, const std::string& templateName, const std::string& path,
             Operation operation) {
    const WrittenLanguage language(product.Core());
    const LoggedFailures failures;
    // The module does not say why it could not save.
    RemedyErrors(ZET_TEXT("make room, or see to the rights of its directory"), operation);
    if (failures.Any()) {
        throw Failure({.file = path,
                       .text = Words("the template %s could not be rendered into it", templateName),
                       .remedy = _("the log says why; then run the command again")});
    }
}

/// The file is called `name`, and by the reader `path`.
struct Rendered {
    const std::string& name;
    const std::string& path;
};

/// The log names the placeholders that it does not know, and others read it, too.
std::unique_ptr<QuietLog> QuietAbout(Deployment& product, const std::string& templateFile) {
    const bool isHidden = !templateFile.empty() && product.HostSecrets().Hides(templateFile);
    return isHidden ? std::make_unique<QuietLog>(ZETLogError) : nullptr;
}

/// As the module processes a template, with or without its notice.
void SaveRendering(Deployment& product, const std::string& templateName, const std::string& name, Role role,
                   StringMap& values, bool noBackup) {
    const auto file = product.Config().OpenConfigFileTemplate(templateName, name, NameOf(role),
                                                              !HasNotice(product, templateName));
    if (!file) return;
    file->ApplyTemplates(values);
    file->Save(noBackup);
}

/// In its place, with a record of what was there before.
void Process(Deployment& product, Role role, const std::string& templateName, const Rendered& file) {
    Perform(product, templateName, file.path, [&] {
        if (HasNotice(product, templateName)) {
            StringMap own = product.Values().Own();
            product.Config().ProcessConfigFileTemplate(templateName, file.name, NameOf(role), &own);
        } else {
            SaveRendering(product, templateName, file.name, role, product.TemplateValues(), false);
        }
    });
}

/// As in its place, but for that record.
void ProcessOnce(Deployment& product, Role role, const std::string& templateName, const Rendered& file,
                 StringMap& values) {
    Perform(product, templateName, file.path,
            [&] { SaveRendering(product, templateName, file.name, role, values, true); });
}

/// The values that are given come before the host's own.
StringMap WithHostsValues(HostProduct& product, const StringMap& values) {
    StringMap all = values;
    all.insert(product.TemplateValues().begin(), product.TemplateValues().end());
    return all;
}

/// Of the template, unless the list has another one.
void GiveMode(Deployment& product, const std::string& templateName, const std::string& source,
              const std::string& staged) {
    RequireModeOf(source, staged);
    const Target* const target = product.Lists().EntryOf(templateName);
    if (target == nullptr || !target->mode) return;
    const Descriptor file(open(staged.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    RequireMode(file, staged, *target->mode);
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

bool HasNotice(Deployment& product, const std::string& templateName) {
    const Target* const target = product.Lists().EntryOf(templateName);
    return target == nullptr || target->hasNotice;
}

std::string WorkingCopy(Host& host, const std::string& templateName) {
    return host.Param("ZET_CFG_DIR") + "/" + templateName;
}

std::string TemplateFile(Host& host, const std::string& templateName) {
    for (const char* directory : {"ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR"}) {
        const std::string file = host.Param(directory) + "/" + templateName;
        if (IsFileExist(file)) return file;
    }
    return "";
}

void ExpectWorkingCopy(Recording& recording, Host& host, const std::string& templateName) {
    const std::string workingCopy = WorkingCopy(host, templateName);
    if (!recording.IsOn() || IsFileExist(workingCopy)) return;
    const std::string pristine = host.Param("ZET_CFG_TEMPL_DIR") + "/" + templateName;
    if (!IsFileExist(pristine)) return;
    ExpectedFile file;
    file.path = workingCopy;
    file.kind = FileKind::Template;
    SetShipped(file, Capture(host.FilePath(host.HostPaths().NameInside(pristine)),
                             host.HostHistory().Limits().largestText));
    recording.Expect(file);
}

std::uintmax_t SizeOfTemplates(Host& host, const std::vector<Target>& targets) {
    const std::string pristine = host.Param("ZET_CFG_TEMPL_DIR") + "/";
    std::uintmax_t size = 0;
    for (const Target& target : targets) {
        std::error_code error;
        std::uintmax_t more = std::filesystem::file_size(WorkingCopy(host, target.templateName), error);
        if (error) more = std::filesystem::file_size(pristine + target.templateName, error);
        if (!error) size += more;
    }
    return size;
}

/// Stages what a role gets.
static std::string Stage(Deployment& product, Role role, const Staging& staging,
                         const std::string& templateName, StringMap& values) {
    const std::string room =
        role == product.Role() ? "rendered/" : std::string("rendered-for-") + NameOf(role) + "/";
    const std::string staged = staging.PathOf(room + templateName);
    const std::string workingCopy = WorkingCopy(product, templateName);
    const ParamOverride noSync(product.Core(), "ZET_SYNC", "no");
    if (IsFileExist(workingCopy)) {
        ProcessOnce(product, role, templateName, {staged, staged}, values);
        GiveMode(product, templateName, workingCopy, staged);
        return staged;
    }
    const std::string source = TemplateFile(product, templateName);
    const std::string standIn = staging.PathOf("templates/" + templateName);
    const ParamOverride directory(product.Core(), "ZET_CFG_DIR", staging.PathOf("templates"));
    ProcessOnce(product, role, templateName, {staged, staged}, values);
    GiveMode(product, templateName, source, staged);
    NameWorkingCopy(staged, standIn, workingCopy);
    return staged;
}

std::string RenderStaged(Deployment& product, const Staging& staging, const std::string& templateName,
                         const StringMap& values) {
    const std::unique_ptr<QuietLog> quiet = QuietAbout(product, TemplateFile(product, templateName));
    StringMap all = WithHostsValues(product, values);
    return Stage(product, product.Role(), staging, templateName, all);
}

std::string RenderQuietly(Deployment& product, const Staging& staging, const std::string& templateName,
                          Role role) {
    const QuietLog quiet(ZETLogError);
    return Stage(product, role, staging, templateName, product.TemplateValues());
}

std::string RenderTemplateText(Deployment& product, const Staging& staging, Role role,
                               const std::string& templateName, const std::string& text) {
    const QuietLog quiet(ZETLogError);
    const std::string workingCopy = WorkingCopy(product, templateName);
    const std::string standIn = staging.PathOf("made-up/" + templateName);
    WriteStagedFile(standIn, text, ModeOf(TemplateFile(product, templateName)));
    const std::string staged = staging.PathOf("rendered-from-made-up/" + templateName);
    const ParamOverride noSync(product.Core(), "ZET_SYNC", "no");
    const ParamOverride directory(product.Core(), "ZET_CFG_DIR", staging.PathOf("made-up"));
    ProcessOnce(product, role, templateName, {staged, staged}, product.TemplateValues());
    NameWorkingCopy(staged, standIn, workingCopy);
    return staged;
}

void RenderOnce(Deployment& product, const std::string& templateName, const std::string& name,
                const std::string& path, const StringMap& values) {
    const std::unique_ptr<QuietLog> quiet = QuietAbout(product, TemplateFile(product, templateName));
    StringMap all = WithHostsValues(product, values);
    ProcessOnce(product, product.Role(), templateName, {name, path}, all);
}

void InstallForHolder(Deployment& product, const std::string& templateName, const FileInPlace& place) {
    if (place.Holder() && !IsFileExist(WorkingCopy(product, templateName)))
        product.Config().InstallConfigFileTemplate(templateName);
}

TargetRendering::TargetRendering(Deployment& product, FileInPlace place, const TargetToRender& target)
    : m_product(product),
      m_place(std::move(place)),
      m_target(target),
      m_replacement(product, m_place, target.version) {}

void TargetRendering::KeepOriginal() {
    m_replacement.MakeReserve();
    RemedyErrors(ZET_TEXT("make room, or see to the rights of its directory"), [&] {
        if (!IsFileExist(WorkingCopy(m_product, m_target.templateName)))
            m_product.Config().InstallConfigFileTemplate(m_target.templateName);
    });
}

void TargetRendering::Write() {
    m_replacement.ConfirmReserve();
    if (m_target.owner) m_replacement.GiveNewFileTo(*m_target.owner);
    m_target.isOwnText ? WriteStaged() : Render();
}

void TargetRendering::Render() {
    const std::string& path = m_place.Path();
    const std::unique_ptr<QuietLog> quiet =
        QuietAbout(m_product, TemplateFile(m_product, m_target.templateName));
    const auto process = [&](const std::string& name) {
        Process(m_product, m_target.role, m_target.templateName, {name, path});
    };
    m_replacement.Make(StateOf(m_target.staged).mode, process, [&](const std::string& made) {
        if (HaveSameBytes(made, m_target.staged)) return;
        throw Failure({.file = path,
                       .text = _("is not written, since its template was changed after it was checked"),
                       .remedy = _("run the command again")});
    });
}

void TargetRendering::WriteStaged() {
    const mode_t mode = StateOf(m_target.staged).mode;
    const std::string text = ReadFileBytes(m_target.staged);
    m_replacement.Make(
        mode, [&](const std::string& name) { SaveOwnText(name, text, mode); }, [](const std::string&) {});
}

}  // namespace ZET::Deploy
