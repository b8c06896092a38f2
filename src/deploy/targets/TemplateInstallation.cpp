#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Words.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/Recording.h"
#include "deploy/state/Writes.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TemplateHistory.h"
#include "deploy/targets/Templates.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

/// The installation of one working copy.
class Installation {
  public:
    Installation(Deployment& product, const std::string& name, bool isForced)
        : m_product(product),
          m_name(name),
          m_isForced(isForced),
          m_files(FilesOfTemplate(product, name)),
          m_pristine(m_files.shipped),
          m_path(m_files.workingCopy),
          m_old(m_path + kKeptSuffix) {}

    const std::string& Name() const { return m_name; }

    /// The files that it may write.
    std::vector<std::string> Files() const {
        if (m_isForced && IsFileExist(m_path)) return {m_path, m_old};
        return {m_path};
    }

    /// Throws what would keep the copy from being installed. All are checked before any is installed.
    void Check() {
        RequireInside(m_product, m_files);
        if (!IsFileExist(m_pristine)) throw MissingTemplate(m_files);
        RequireReadableFile(m_pristine);
        for (const std::string& file : {m_pristine, m_path})
            RequireOwnInstruction(m_product.HostPaths(), file);
        m_isThere = IsFileExist(m_path);
        if (!m_isThere) return;
        RequireReadableFile(m_path);
        m_isSame = HaveSameModeAndBytes(m_path, m_pristine);
        if (m_isSame) return;
        if (!m_isForced) {
            if (m_product.Wanted().wantsDiffs) TellDifference();
            throw Failure(
                {.file = m_path,
                 .text = Words("differs from %s", m_pristine),
                 .remedy = Words("--force installs that one, and keeps the differing one as %s", m_old)});
        }
        if (IsFileExist(m_old) && !HaveSameBytes(m_old, m_path))
            throw Failure({.file = m_old,
                           .text = Words("would be overwritten by the differing %s", m_path),
                           .remedy = _("move it away")});
    }

    /// Expects what it is going to write.
    void Expect(Recording& recording) const {
        if (m_isSame || !recording.IsOn()) return;
        ExpectedFile file;
        file.kind = FileKind::Template;
        if (m_isThere) {
            file.path = m_old;
            file.after = Capture(m_product, m_path);
            recording.Expect(file);
        }
        file.path = m_path;
        SetShipped(file, Capture(m_product, m_pristine));
        recording.Expect(file);
    }

    /// A copy that was the same already may have come there by hand.
    void Remember() const {
        if (m_isSame) RememberShippedBase(m_product, m_files);
    }

    FileOutcome Run() {
        FileOutcome outcome = Unchanged();
        if (m_isSame) return outcome;
        const bool isDryRun = m_product.Wanted().dryRun;
        outcome.result = m_isThere ? FileOutcome::Result::Changed : FileOutcome::Result::Created;
        outcome.after = StateOf(m_pristine);
        if (m_isThere)
            outcome.remark = isDryRun ? Words("the former one would be kept as %s", m_old)
                                      : Words("the former one is kept as %s", m_old);
        outcome.diff = DiffToShow(m_product, m_isThere ? m_path : "", m_pristine, m_path);
        if (isDryRun) return outcome;
        for (const std::string& file : {m_old, m_path})
            IsAboutToWrite(file);
        if (m_isThere) CopyFile(m_path, m_old);
        Install();
        outcome.after = StateOf(m_path);
        return outcome;
    }

  private:
    FileOutcome Unchanged() const {
        FileOutcome outcome;
        outcome.file = m_name;
        outcome.path = m_path;
        outcome.before = outcome.after = StateOf(m_path);
        return outcome;
    }

    /// Reports what --force would change.
    void TellDifference() {
        FileOutcome outcome = Unchanged();
        outcome.remark = Words("differs from %s", m_pristine);
        outcome.diff = DiffToShow(m_product, m_path, m_pristine, m_path);
        m_product.Out().Done(outcome);
    }

    void Install() {
        const LoggedFailures failures;
        m_product.Config().InstallConfigFileTemplate(m_name);
        if (failures.Any() || !HaveSameBytes(m_path, m_pristine))
            throw Failure({.file = m_path,
                           .text = Words("was not installed from %s", m_pristine),
                           .remedy = _("run the command again")});
    }

    Deployment& m_product;
    std::string m_name;
    bool m_isForced;
    TemplateFiles m_files;
    std::string m_pristine;
    std::string m_path;
    std::string m_old;
    bool m_isThere = false;
    bool m_isSame = false;
};

std::vector<FilesToWrite> FilesOf(const std::vector<Installation>& installations) {
    std::vector<FilesToWrite> files;
    for (const Installation& installation : installations)
        files.push_back({installation.Name(), installation.Files()});
    return files;
}

}  // namespace

bool InstallTemplates(Deployment& product, const std::vector<std::string>& names, bool isForced) {
    std::vector<Installation> installations;
    for (const std::string& name : names) {
        RequireTemplateName(name);
        installations.emplace_back(product, name, isForced);
    }
    Writing writing(product, AllToWrite(product, FilesOf(installations)), Writing::Right::OfTheProduct);
    for (Installation& installation : installations)
        installation.Check();
    Recording recording(product, Recording::Use::OfTheProduct, writing.Records());
    for (const Installation& installation : installations)
        installation.Expect(recording);
    Writing::Begin();
    recording.Begin();
    bool isAnyChange = false;
    for (Installation& installation : installations) {
        product.RequireGoOn();
        const FileOutcome outcome = installation.Run();
        product.Out().Done(outcome);
        isAnyChange = isAnyChange || outcome.IsChange();
    }
    recording.Complete();
    for (const Installation& installation : installations) {
        if (recording.IsOn()) installation.Remember();
    }
    return isAnyChange;
}

}  // namespace ZET::Deploy
