#include "deploy/targets/TemplateFiles.h"

#include <map>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Words.h"
#include "deploy/lists/Targets.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/targets/ClaimedFiles.h"
#include "deploy/targets/Templates.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

/// The name under which the history knows the file.
std::string NameInHistory(const Host& host, const std::string& path) {
    return host.HostPaths().NameOfReal(RealFileOf(host, path));
}

bool IsWhole(const CapturedFile& file) {
    return file.state.exists && file.text.size() == file.state.size;
}

void Remember(Host& host, const std::string& workingCopy, CapturedFile copy, const std::string& base) {
    FileToRecord file;
    file.file.path = NameInHistory(host, workingCopy);
    file.file.kind = FileKind::Template;
    file.file.after = std::move(copy.state);
    file.textAfter = std::move(copy.text);
    file.base = base;
    History& history = host.HostHistory();
    try {
        history.ToRecord().Remember({file});
    } catch (const Failure& failure) {
        if (history.IsNeeded()) throw;
        history.TellUnusable(failure);
    }
}

}  // namespace

std::string ShippedFile(Host& host, const std::string& templateName) {
    return host.Param("ZET_CFG_TEMPL_DIR") + "/" + templateName;
}

std::string WorkingCopy(Host& host, const std::string& templateName) {
    return host.Param("ZET_CFG_DIR") + "/" + templateName;
}

std::string TemplateFile(Host& host, const std::string& templateName) {
    for (const std::string& file : {WorkingCopy(host, templateName), ShippedFile(host, templateName)})
        if (IsFileExist(file)) return file;
    return "";
}

TemplateFiles FilesOfTemplate(Host& host, const std::string& name) {
    return {name, ShippedFile(host, name), WorkingCopy(host, name)};
}

Failure MissingTemplate(const TemplateFiles& files) {
    return Failure({.file = files.shipped,
                    .text = _("the template is missing"),
                    .remedy = _("correct its name, or ZET_CFG_TEMPL_DIR")});
}

std::vector<TemplateFiles> FilesOfTemplates(Host& host, const std::vector<std::string>& names) {
    std::vector<TemplateFiles> files;
    for (const std::string& name : names) {
        RequireTemplateName(name);
        files.push_back(FilesOfTemplate(host, name));
    }
    if (!names.empty()) return files;
    for (const Target& target : SelectTargets(host, {}))
        files.push_back(FilesOfTemplate(host, target.templateName));
    return files;
}

std::vector<std::string> AllToWrite(Host& host, const std::vector<FilesToWrite>& templates) {
    std::vector<std::string> all;
    std::map<std::string, std::string> nameOf;
    const Paths& paths = host.HostPaths();
    ClaimedFiles own(host);
    for (const FilesToWrite& written : templates) {
        const std::string& name = written.templateName;
        for (const std::string& file : written.files) {
            const std::string use = own.UseBesideTargets(file);
            if (!use.empty()) {
                throw UsageError(
                    Words("NAME \"%s\" is installed as %s, which is %s (give the template another name)",
                          name, file, use));
            }
            const auto [other, isNew] = nameOf.emplace(paths.Canonical(paths.NameInside(file)), name);
            if (!isNew) {
                throw UsageError(
                    Words("NAME \"%s\" is installed into the files of \"%s\" too (name each file once)", name,
                          other->second));
            }
            all.push_back(file);
        }
    }
    return all;
}

void RequireInside(Host& host, const TemplateFiles& files) {
    for (const std::string& file : {files.shipped, files.workingCopy}) {
        if (!host.HostPaths().StaysInside(file))
            throw Failure({.file = file,
                           .text = _("is a link that leads out of the root directory"),
                           .remedy = _("put a file there")});
    }
}

void SetShipped(ExpectedFile& workingCopy, CapturedFile shipped) {
    if (IsWhole(shipped)) workingCopy.base = shipped.text;
    workingCopy.after = std::move(shipped);
}

void ExpectWorkingCopy(Recording& recording, Host& host, const std::string& templateName) {
    const std::string workingCopy = WorkingCopy(host, templateName);
    if (!recording.IsOn() || IsFileExist(workingCopy)) return;
    const std::string pristine = ShippedFile(host, templateName);
    if (!IsFileExist(pristine)) return;
    ExpectedFile file;
    file.path = workingCopy;
    file.kind = FileKind::Template;
    SetShipped(file, Capture(RealFileOf(host, pristine), host.HostHistory().Limits().largestText));
    recording.Expect(file);
}

std::string RealFileOf(const Host& host, const std::string& workingCopy) {
    return host.FilePath(host.HostPaths().NameInside(workingCopy));
}

CopyMemory MemoryOf(Host& host, const std::string& workingCopy) {
    host.HostHistory().TellDenied();
    Store* const store = host.HostHistory().ToLookIfUsable();
    if (store == nullptr) return {};
    std::optional<KnownFile> known = store->Known(NameInHistory(host, workingCopy));
    // A copy that was moved, with a link left in its place, is known by the link.
    if (!known) known = store->Known(host.HostPaths().NameOfReal(workingCopy));
    if (!known) return {};
    CopyMemory memory;
    memory.mode = known->state.mode;
    if (known->state.knowledge.base) memory.base = store->Text(*known->state.knowledge.base);
    return memory;
}

RecordedState WithMode(RecordedState copy, mode_t own) {
    copy.mode = own;
    return copy;
}

void RememberBase(Host& host, const std::string& workingCopy, const std::string& base) {
    CapturedFile copy = Capture(host, workingCopy);
    const std::optional<mode_t> own = MemoryOf(host, workingCopy).mode;
    if (own) copy.state = WithMode(std::move(copy.state), *own);
    Remember(host, workingCopy, std::move(copy), base);
}

void RememberShippedBase(Host& host, const TemplateFiles& files) {
    const StoreLimits limits = host.HostHistory().Limits();
    const std::string file = RealFileOf(host, files.workingCopy);
    if (!limits.keepsTexts || !StateOf(file).IsRegular() || !IsFileExist(files.shipped)) return;
    CapturedFile copy = Capture(file, limits.largestText);
    if (!IsWhole(copy) || copy.text != ReadFileBytes(files.shipped)) return;
    const CopyMemory memory = MemoryOf(host, files.workingCopy);
    if (memory.base == copy.text) return;
    copy.state = WithMode(std::move(copy.state), memory.mode.value_or(ModeOf(files.shipped)));
    const std::string base = copy.text;
    Remember(host, files.workingCopy, std::move(copy), base);
}

}  // namespace ZET::Deploy
