#include "deploy/edit/Adopt.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "deploy/edit/EditedTemplate.h"
#include "deploy/edit/Edits.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/PathJudge.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/StagedOwner.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/lists/HostLists.h"
#include "deploy/state/CapturedFile.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/state/Recording.h"
#include "deploy/state/Replacement.h"
#include "deploy/state/Writing.h"
#include "deploy/targets/EditMerge.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TemplateFileCheck.h"
#include "deploy/targets/TemplateHistory.h"
#include "text/ShellWord.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

/// The first entry of the lists that asks for a line in the file; null: there is none.
const ListedEdit* EditOf(Deployment& product, const std::string& file) {
    if (!product.Lists().IsUsable()) return nullptr;
    const std::string name = product.Lists().NameOf(file);
    const auto& edits = product.Lists().Targets().edits;
    const auto entry = std::find_if(edits.begin(), edits.end(), [&](const ListedEdit& edit) {
        return !edit.path.empty() && edit.IsInForceFor(product.Role()) &&
               product.HostPaths().Canonical(edit.path) == name;
    });
    return entry == edits.end() ? nullptr : &*entry;
}

/// No commit is known to have written the file; `isUnusable`: since the history cannot be used.
[[noreturn]] void FailOfUnknown(Deployment& product, const std::string& file, bool isUnusable = false) {
    if (product.HostHistory().IsDenied()) throw Failure(ProblemOfDenied(product, file));
    if (isUnusable)
        throw Failure({.file = product.State().Store(),
                       .text = Words("cannot be used, so that nobody can tell what %s was made from", file),
                       .remedy = _("edit its working copy by hand, and commit")});
    if (const ListedEdit* const edit = EditOf(product, file))
        throw UsageError(Words("%s: is no committed target (change its line in %s:%s)", file, edit->file,
                               std::to_string(edit->line)));
    throw UsageError(Words("%s: is no committed target (\"status\" lists them)", file));
}

/// One adoption, while the lock is held.
class Adopting {
  public:
    Adopting(Deployment& product, const std::string& path, const std::string& templateName)
        : m_product(product),
          m_path(path),
          m_templateName(templateName),
          m_workingCopy(RealFileOf(product, WorkingCopy(product, templateName))),
          m_writing(product, {m_workingCopy}, Writing::Right::OfTheProduct),
          m_version(VersionOf(m_workingCopy)),
          m_targetVersion(VersionOf(m_path)) {}

    FileOutcome Run() {
        RequireSoundTemplate();
        const KnownFiles all(m_product);
        const KnownFile* const known = all.Find(m_path);
        // Another run may have taken the file back before this one got the lock.
        if (known == nullptr || !known->state.knowledge.IsCommitted())
            FailOfUnknown(m_product, m_path, all.IsUnusable());
        const Role role = NamedRoleOf(known, m_product.Role());
        const std::string edited = ReadFileBytes(m_path);
        const std::string staged = RenderQuietly(m_product, m_staging, m_templateName, role);
        const std::string rendered = ReadFileBytes(staged);
        Knowledge knowledge = known->state.knowledge;
        knowledge.ForgetBase();
        m_mode = ModeToAdopt(*known, staged);
        if (edited == rendered && m_mode) return Write(ReadFileBytes(Source()), knowledge);
        if (edited == rendered)
            return IsRecordedText(rendered, known->state) ? Unchanged() : Remember(knowledge);
        if (!IsMergedWith(m_product, *known, rendered)) RequireLastRendering(*known, rendered);
        const EditedTarget target = {m_path, m_templateName, m_workingCopy};
        const std::string text = TemplateWithEdit(m_product, m_staging, target, rendered, edited);
        const std::string made = RenderTemplateText(m_product, m_staging, role, m_templateName, text);
        if (ReadFileBytes(made) != edited) FailToTrace(target);
        return Write(text, knowledge);
    }

  private:
    /// Checked first: the module, which renders the template, does not say what is wrong with it.
    void RequireSoundTemplate() {
        const std::vector<Problem> problems = CheckTemplateFile(m_product, m_templateName);
        if (!problems.empty()) throw Failure(problems.front());
    }

    void RequireLastRendering(const KnownFile& known, const std::string& rendered) {
        if (WasLeftAs(m_product, known, rendered)) return;
        throw Failure({.file = m_path,
                       .text = _("its template or a parameter changed since the last commit, so nobody can "
                                 "tell what was edited"),
                       .remedy = _("take that change back, then adopt, then make it again")});
    }

    /// The mode that somebody gave the target, if its template has to give it from now on.
    std::optional<mode_t> ModeToAdopt(const KnownFile& known, const std::string& staged) const {
        const mode_t mode = ModeOf(m_path);
        if (mode == ModeOf(staged) || mode == known.state.mode) return std::nullopt;
        const Target* const target = m_product.Lists().EntryOf(m_templateName);
        if (target == nullptr || !target->mode) {
            RequireUsableMode(mode);
            return mode;
        }
        throw Failure(
            {.file = m_path,
             .text = Words("has another mode (%s) than the list gives it", ModeText(StateOf(m_path))),
             .remedy =
                 Words("change the mode in the list, or that of the file to %s", ModeText(StateOf(staged)))});
    }

    /// Root uses no template that others may write.
    void RequireUsableMode(mode_t mode) const {
        struct stat status = {};
        stat(m_workingCopy.c_str(), &status);  // a new one gets the group of root
        status.st_mode = mode;
        if (geteuid() != 0 || !HasOtherWriters(m_workingCopy, status)) return;
        throw Failure(
            {.file = m_path,
             .text = Words("others may write it (mode %s), and root uses no template that others may "
                           "write",
                           ModeText(StateOf(m_path))),
             .remedy = _("chmod go-w it, or give the mode in the list")});
    }

    std::string Source() const { return TemplateFile(m_product, m_templateName); }

    mode_t ModeOfTemplate() const { return m_mode ? *m_mode : ModeOf(Source()); }

    FileOutcome Unchanged() const {
        FileOutcome outcome;
        outcome.file = outcome.path = m_workingCopy;
        outcome.before = outcome.after = StateOf(m_workingCopy);
        outcome.remark = Words("%s is as it was committed", m_path);
        return outcome;
    }

    FileOutcome Write(const std::string& text, const Knowledge& knowledge) {
        RequireReplaceable(m_workingCopy);
        const std::string made = m_staging.PathOf("template");
        WriteStagedFile(made, text, ModeOfTemplate());
        FileOutcome outcome = Unchanged();
        outcome.remark = Words("with the edit of %s", m_path);
        outcome.templateName = m_templateName;
        outcome.result = outcome.before.exists ? FileOutcome::Result::Changed : FileOutcome::Result::Created;
        outcome.after = GiveOwnerInPlace(m_workingCopy, made);
        outcome.diff = DiffToShow(m_product, outcome.before.exists ? m_workingCopy : "", made, m_workingCopy);
        if (m_product.Wanted().dryRun) return outcome;
        Replace(text, made, knowledge);
        outcome.after = StateOf(m_workingCopy);
        return outcome;
    }

    void Replace(const std::string& text, const std::string& made, const Knowledge& knowledge) {
        Recording recording(m_product, Recording::Use::OfTheProduct, m_writing.Records());
        Expect(recording, made, knowledge);
        Writing::Begin();
        recording.Begin();
        if (!recording.IsOn())
            throw Failure({.file = m_path,
                           .text = _("is not adopted, since nobody could tell the edit from others "
                                     "afterwards: the history cannot be written"),
                           .remedy = _("see to ZET_VAR_LIB_DIR, then run the command again")});
        const FileInPlace place(
            m_product.HostPaths().FindReal(m_workingCopy, m_product.TrustedAt(m_workingCopy)), m_workingCopy);
        Replacement(m_product, place, m_version)
            .MakeOfText(text, ModeOfTemplate(), [&](const std::string& /*made*/) { RequireSameTarget(); });
        recording.Complete();
    }

    /// The template may already be as it should be, written by a run that did not come to its end.
    FileOutcome Remember(const Knowledge& knowledge) {
        FileOutcome outcome = Unchanged();
        outcome.remark = Words("%s is as its template makes it", m_path);
        if (m_product.Wanted().dryRun) return outcome;
        Recording recording(m_product, Recording::Use::OfTheProduct, m_writing.Records());
        ExpectTarget(recording, knowledge);
        Writing::Begin();
        recording.Begin();
        recording.Complete();
        return outcome;
    }

    /// What is recorded of the target is what was adopted, so it must not change meanwhile.
    void RequireSameTarget() const { RequireSame(m_path, VersionOf(m_path), m_targetVersion); }

    /// Expects the working copy, and the target, which is from now on as a commit would make it.
    void Expect(Recording& recording, const std::string& made, const Knowledge& knowledge) const {
        const std::string source = Source();
        ExpectedFile copy;
        copy.path = m_workingCopy;
        copy.kind = FileKind::Template;
        copy.after = Capture(m_product, made);
        const CopyMemory memory = MemoryOf(m_product, WorkingCopy(m_product, m_templateName));
        copy.base = IsFileExist(m_workingCopy) ? memory.base : ReadFileBytes(source);
        const mode_t own = memory.mode.value_or(ModeOf(source));
        if (own != copy.after->state.mode) copy.knownAs = WithMode(copy.after->state, own);
        recording.Expect(copy);
        ExpectTarget(recording, knowledge);
    }

    void ExpectTarget(Recording& recording, const Knowledge& knowledge) const {
        ExpectedFile target;
        target.path = m_path;
        target.kind = FileKind::Target;
        target.knowledge = knowledge;
        recording.Expect(target);
    }

    Deployment& m_product;
    const std::string m_path;
    const std::string m_templateName;
    const std::string m_workingCopy;
    Writing m_writing;
    const FileVersion m_version;  ///< of the working copy
    const FileVersion m_targetVersion;
    Staging m_staging;
    std::optional<mode_t> m_mode;  ///< the mode that the template gets; none: it keeps its own
};

/// The name of the template that a commit made the file from.
std::string TemplateToAdoptInto(Deployment& product, const std::string& file, const std::string& path) {
    HostLists& lists = product.Lists();
    const std::string name = lists.NameOf(path);
    const std::optional<KnownFile> known = lists.CommittedFile(name);
    if (!known || !known->state.knowledge.IsCommitted()) FailOfUnknown(product, file);
    if (const Target* const target = lists.TargetNamed(name)) return target->templateName;
    RequireWhole(ReadTargetList(product));
    throw Failure(
        {.file = path,
         .text = Words("was made from [%s], which no list has for it any more",
                       known->state.knowledge.templateName),
         .remedy = Words("put it into the lists again; \"rollback-config --force %s\" puts back what "
                         "was there before",
                         Text::ShellWord(name))});
}

}  // namespace

FileOutcome AdoptFile(Deployment& product, const std::string& file) {
    const std::string path = product.HostPaths().WithRealDirectory(FileToRead(product, file));
    return Adopting(product, path, TemplateToAdoptInto(product, file, path)).Run();
}

}  // namespace ZET::Deploy
