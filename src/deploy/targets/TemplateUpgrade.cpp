#include "deploy/targets/TemplateUpgrade.h"

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Merge.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Words.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TemplateHistory.h"
#include "posix/ModeBits.h"
#include "text/LineEnds.h"
#include "text/ShellWord.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

std::string InQuotes(const std::string& words) {
    return "\"" + words + "\"";
}

/// The templates that have working copies. Throws a `Failure` for one that is named and has none.
std::vector<TemplateFiles> Installed(Host& host, const std::vector<std::string>& names) {
    std::vector<TemplateFiles> installed;
    for (TemplateFiles& files : FilesOfTemplates(host, names)) {
        RequireInside(host, files);
        if (IsFileExist(files.workingCopy)) {
            installed.push_back(std::move(files));
        } else if (!names.empty()) {
            if (!IsFileExist(files.shipped)) throw MissingTemplate(files);
            RequireReadableFile(files.shipped);
            throw Failure(
                {.file = files.workingCopy,
                 .text = _("there is no such working copy"),
                 .remedy = Words("%s makes it", InQuotes(host.Wanted().program + " template install " +
                                                         Text::ShellWord(files.name)))});
        }
    }
    return installed;
}

}  // namespace

TemplateUpgrade::TemplateUpgrade(Deployment& product, const std::vector<std::string>& names)
    : m_product(product) {
    std::vector<FilesToWrite> toWrite;
    for (TemplateFiles& files : Installed(product, names)) {
        Copy copy;
        copy.path = RealFileOf(product, files.workingCopy);
        toWrite.push_back({files.name, {copy.path}});
        copy.files = std::move(files);
        m_copies.push_back(std::move(copy));
    }
    m_writing =
        std::make_unique<Writing>(product, AllToWrite(product, toWrite), Writing::Right::OfTheProduct);
    m_staging = std::make_unique<Staging>(product.StagingPlace());
    for (Copy& copy : m_copies) {
        product.RequireGoOn();
        Plan(copy);
    }
}

void TemplateUpgrade::Plan(Copy& copy) {
    for (const std::string& file : {copy.files.shipped, copy.path})
        RequireOwnInstruction(m_product.HostPaths(), file);
    RequireReadableFile(copy.path);
    copy.version = VersionOf(copy.path);
    copy.texts = ReadTexts(m_product, copy.files);
    if (!copy.texts.copy)
        throw Failure({.file = copy.path, .text = _("was removed"), .remedy = _("run the command again")});
    copy.text = *copy.texts.copy;
    if (!copy.texts.shipped) return;
    copy.ownMode = MemoryOf(m_product, copy.files.workingCopy).mode.value_or(ModeOf(copy.files.shipped));
    copy.mode = copy.texts.newerMode.value_or(ModeOf(copy.path));
    if (!copy.texts.IsKnown() && m_product.HostHistory().IsDenied()) {
        m_problems.push_back(ProblemOfDenied(m_product, copy.path));
    } else if (!copy.texts.IsKnown()) {
        Object(copy.path, 0,
               Words("differs from %s, and nobody knows what it was made from", copy.files.shipped),
               WayToInstall(copy));
    } else if (copy.texts.HasNewerText() && copy.texts.IsEdited()) {
        MergeInto(copy);
    } else if (copy.texts.HasNewerText()) {
        copy.text = *copy.texts.shipped;
    }
    copy.staged = m_staging->PathOf("upgraded/" + copy.files.name);
    WriteStagedFile(copy.staged, copy.text, copy.mode);
}

void TemplateUpgrade::MergeInto(Copy& copy) {
    if (!CanBeMerged(copy)) return;
    const TemplateTexts& texts = copy.texts;
    Merged merged = Merge(*texts.copy, *texts.base, *texts.shipped, copy.path, WayToInstall(copy));
    for (const std::size_t line : merged.conflicts) {
        Object(copy.path, line,
               Words("was edited here, where the newer %s has other lines", copy.files.shipped),
               WayToInstall(copy));
    }
    if (merged.conflicts.empty()) copy.text = std::move(merged.text);
}

bool TemplateUpgrade::CanBeMerged(const Copy& copy) {
    const std::size_t before = m_problems.size();
    const StoreLimits limits = m_product.HostHistory().Limits();
    if (!m_writing->Records() || !limits.KeepEdit(copy.texts.copy->size())) {
        Object(copy.path, 0, _("was edited, and the history cannot keep what would be merged"),
               WayToInstall(copy));
    }
    for (const auto& [file, text] :
         {std::pair(copy.path, *copy.texts.copy), std::pair(copy.files.shipped, *copy.texts.shipped)}) {
        if (text.find('\0') != std::string::npos)
            Object(file, 0, _("holds a NUL byte, so that the edits cannot be merged"), WayToInstall(copy));
        const std::size_t line = Text::LineEndsOf(text).otherLine;
        if (line != 0) {
            Object(file, line,
                   _("ends otherwise than the lines before it, so that the edits cannot be merged"),
                   _("give all lines the same end"));
        }
    }
    return m_problems.size() == before;
}

void TemplateUpgrade::Object(const std::string& file, std::size_t line, const std::string& text,
                             const std::string& remedy) {
    m_problems.push_back({.file = file, .line = static_cast<int>(line), .text = text, .remedy = remedy});
}

std::string TemplateUpgrade::WayToInstall(const Copy& copy) const {
    return Words("%s installs that one; take the edits over from %s.old",
                 InQuotes(m_product.Wanted().program + " template install --force " +
                          Text::ShellWord(copy.files.name)),
                 copy.files.workingCopy);
}

bool TemplateUpgrade::Run() {
    Recording recording(m_product, Recording::Use::OfTheProduct, m_writing->Records());
    bool isAnyChange = false;
    for (const Copy& copy : m_copies) {
        if (!copy.IsChange()) continue;
        isAnyChange = true;
        if (recording.IsOn()) recording.Expect(Expected(copy));
    }
    Writing::Begin();
    recording.Begin();
    for (const Copy& copy : m_copies) {
        m_product.RequireGoOn();
        // The diff has to be made before one of its sides is gone.
        FileOutcome outcome = OutcomeOf(copy);
        if (copy.IsChange() && !m_product.Wanted().dryRun) {
            Write(copy);
            outcome.after = StateOf(copy.path);
        }
        m_product.Out().Done(outcome);
    }
    recording.Complete();
    if (recording.IsOn()) RememberRest();
    return isAnyChange;
}

ExpectedFile TemplateUpgrade::Expected(const Copy& copy) const {
    const std::uint64_t longest = m_product.HostHistory().Limits().largestText;
    ExpectedFile file;
    file.path = copy.path;
    file.kind = FileKind::Template;
    file.wasEdited = copy.texts.IsEdited();
    CapturedFile after = Capture(copy.staged, longest);
    const RecordedState before = CaptureWithoutText(copy.path);
    after.state.owner = before.owner;
    after.state.group = before.group;
    after.state.attributes = before.attributes;
    file.after = std::move(after);
    if (copy.ownMode != before.mode) file.knownAs = WithMode(file.after->state, copy.ownMode);
    if (copy.texts.shipped->size() <= longest) file.base = copy.texts.shipped;
    return file;
}

FileOutcome TemplateUpgrade::OutcomeOf(const Copy& copy) const {
    FileOutcome outcome;
    outcome.file = copy.files.name;
    outcome.path = copy.path;
    outcome.before = outcome.after = StateOf(copy.path);
    if (!copy.IsChange()) return outcome;
    outcome.result = FileOutcome::Result::Changed;
    outcome.after.mode = (outcome.before.mode & ~kModeBits) | copy.mode;
    outcome.diff = DiffToShow(m_product, copy.path, copy.staged, copy.path);
    if (copy.texts.IsEdited()) outcome.remark = _("its edits are kept");
    return outcome;
}

void TemplateUpgrade::Write(const Copy& copy) {
    const FileInPlace place(m_product.HostPaths().FindReal(copy.path, m_product.TrustedAt(copy.path)),
                            copy.path);
    Replacement(m_product, place, copy.version).MakeOfText(copy.text, copy.mode);
}

/// Copies that were not written may be known better by now, like an edited one that has all that is newer
/// already.
void TemplateUpgrade::RememberRest() {
    for (const Copy& copy : m_copies) {
        if (copy.IsChange() || !copy.texts.shipped) continue;
        if (copy.texts.HasNewerText()) {
            RememberBase(m_product, copy.path, *copy.texts.shipped, copy.ownMode);
        } else if (copy.texts.IsCurrent()) {
            RememberShippedBase(m_product, copy.files);
        }
    }
}

}  // namespace ZET::Deploy
