#include "deploy/targets/Render.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/GuardedRenames.h"
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

/// The log names the placeholders that it does not know, and others read it, too. Where it shows errors only,
/// it does not, and nobody need find out whose eyes the template is for, which reads it.
std::unique_ptr<QuietLog> QuietAbout(Deployment& product, const std::string& templateFile) {
    if (QuietLog(ZETLogError).Former() == ZETLogError) return nullptr;
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

/// Links followed; none, too, where nobody may look.
std::optional<mode_t> ModeIfThere(const std::string& path) {
    constexpr mode_t kModeBits = 07777;
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? std::optional(status.st_mode & kModeBits) : std::nullopt;
}

/// Of the list, if it has one.
std::optional<mode_t> ModeToGive(Deployment& product, const std::string& templateName) {
    const Target* const target = product.Lists().EntryOf(templateName);
    return target != nullptr ? target->mode : std::nullopt;
}

/// Of the template, unless the list has another one.
void GiveMode(Deployment& product, const std::string& templateName, const std::string& source,
              const std::string& staged) {
    RequireModeOf(source, staged);
    const std::optional<mode_t> mode = ModeToGive(product, templateName);
    if (!mode) return;
    const Descriptor file(open(staged.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    RequireMode(file, staged, *mode);
}

/// Compares a rendering with what is there, before it gets its name in the private directory. Most of a set
/// are there already, and never get it: of a commit that changes nothing, that took a sixth of the system
/// calls.
class RenderingJudge {
  public:
    explicit RenderingJudge(const SeenFile& there) : m_there(there) {}

    /// As long as what it returns lives. `mode` is what the rendering is going to have. The file is read now:
    /// that it cannot be is no failure of the rendering.
    std::unique_ptr<GuardedRenames> Watch(mode_t mode) {
        constexpr mode_t kModeBits = 07777;
        if (!m_there.State().IsRegular()) return nullptr;
        m_isOther = (m_there.State().mode & kModeBits) != mode;
        if (m_isOther) return nullptr;
        m_there.Read();
        return std::make_unique<GuardedRenames>([this](const ZETRename& rename) {
            if (!rename.isReady && IsThere(rename))
                m_isLeft = rename.isLeft = unlink(rename.from.c_str()) == 0;
        });
    }

    bool IsLeft() const { return m_isLeft; }
    bool IsOther() const { return m_isOther; }

  private:
    bool IsThere(const ZETRename& rename) {
        struct stat made = {};
        if (rename.descriptor < 0 || fstat(rename.descriptor, &made) != 0) return false;
        m_isOther = !m_there.HasBytesOf(rename.descriptor, made.st_size, rename.from);
        return !m_isOther && made.st_uid == m_there.State().owner && made.st_gid == m_there.State().group;
    }

    const SeenFile& m_there;
    bool m_isLeft = false;
    bool m_isOther = false;
};

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

/// Stages what a role gets; nothing, where a judge finds it there already.
static std::string Stage(Deployment& product, Role role, const Staging& staging,
                         const std::string& templateName, StringMap& values,
                         RenderingJudge* judge = nullptr) {
    const std::string room =
        role == product.Role() ? "rendered/" : std::string("rendered-for-") + NameOf(role) + "/";
    const std::string staged = staging.PathOf(room + templateName);
    const std::string workingCopy = WorkingCopy(product, templateName);
    const ParamOverride noSync(product.Core(), "ZET_SYNC", "no");
    const std::optional<mode_t> mode = ModeIfThere(workingCopy);
    if (mode || IsFileExist(workingCopy)) {
        std::unique_ptr<GuardedRenames> watch;
        if (judge != nullptr && mode) watch = judge->Watch(ModeToGive(product, templateName).value_or(*mode));
        ProcessOnce(product, role, templateName, {staged, staged}, values);
        if (judge != nullptr && judge->IsLeft()) return "";
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

ComparedRendering RenderUnlessThere(Deployment& product, const Staging& staging,
                                    const std::string& templateName, Role role, const SeenFile& there) {
    const QuietLog quiet(ZETLogError);
    RenderingJudge judge(there);
    std::string file = Stage(product, role, staging, templateName, product.TemplateValues(), &judge);
    return {std::move(file), judge.IsOther()};
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
    m_replacement.Make(m_target.mode, process, [&](const std::string& made) {
        if (HaveSameBytes(made, m_target.staged)) return;
        throw Failure({.file = path,
                       .text = _("is not written, since its template was changed after it was checked"),
                       .remedy = _("run the command again")});
    });
}

void TargetRendering::WriteStaged() {
    const mode_t mode = m_target.mode;
    const std::string text = ReadFileBytes(m_target.staged);
    m_replacement.Make(
        mode, [&](const std::string& name) { SaveOwnText(name, text, mode); }, [](const std::string&) {});
}

}  // namespace ZET::Deploy
