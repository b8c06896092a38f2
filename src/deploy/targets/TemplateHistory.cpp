#include "deploy/targets/TemplateHistory.h"

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Words.h"
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

/// The mode that the copy got as a template. An edit may have met one that somebody gave it.
std::optional<mode_t> ModeGiven(Store& store, const KnownFile& copy) {
    if (copy.kind == FileKind::Template) return copy.state.mode;
    for (const RecordedFile& change : store.ChangesOf(copy.path)) {
        if (change.kind == FileKind::Template) return change.after.mode;
        if (change.kindBefore == FileKind::Template) return change.KnownBefore().mode;
    }
    return std::nullopt;
}

}  // namespace

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
    memory.mode = ModeGiven(*store, *known);
    if (known->state.knowledge.base) memory.base = store->Text(*known->state.knowledge.base);
    return memory;
}

RecordedState WithMode(RecordedState copy, mode_t own) {
    copy.mode = own;
    return copy;
}

Problem ProblemOfDenied(Host& host, const std::string& file) {
    return {.file = host.State().Store(),
            .text = Words("the history may not be read by this user, so that nobody can tell what %s was "
                          "made from",
                          file),
            .remedy = _("run the command as root")};
}

void RememberBase(Host& host, const std::string& workingCopy, const std::string& base, mode_t own) {
    CapturedFile copy = Capture(host, workingCopy);
    copy.state = WithMode(std::move(copy.state), own);
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
