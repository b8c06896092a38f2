#include "deploy/targets/Rollback.h"

#include <algorithm>
#include <memory>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/Lock.h"
#include "deploy/state/Manifest.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/PendingRecord.h"
#include "deploy/state/Replacement.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TargetCheck.h"
#include "deploy/targets/Targets.h"
#include "deploy/targets/WrittenFile.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

using Result = FileOutcome::Result;

/// One rollback, under the lock.
class Rollback {
  public:
    Rollback(Deployment& product, const std::vector<std::string>& names, bool isForced)
        : m_product(product),
          m_names(names),
          m_isForced(isForced),
          m_isDryRun(product.Wanted().dryRun),
          m_manifest(product, product.Role(), Manifest::Damaged::IsEmpty),
          m_otherRole(OtherRole(product.Role())),
          m_otherManifest(product, m_otherRole, Manifest::Damaged::IsEmpty) {}

    RollbackResult Run() {
        const std::vector<WrittenFile> all = WrittenFiles();
        const std::vector<WrittenFile> named = Named(all);
        try {
            std::size_t done = 0;
            for (const WrittenFile& file : named) {
                m_product.RequireGoOn();
                m_product.Out().Progress(done++, named.size());
                TryPutBack(file);
            }
        } catch (const Interrupted&) {
            m_product.Out().Restarts(m_restarts.Services());
            if (!m_isDryRun) SaveManifests();
            throw;
        }
        m_product.Out().Restarts(m_restarts.Services());
        if (m_isDryRun) return m_result;
        SaveManifests();
        const auto isLeft = [&](const WrittenFile& file) {
            return file.IsLeft() && !m_otherManifest.Has(file.path);
        };
        if (m_manifest.IsEmpty() && std::none_of(all.begin(), all.end(), isLeft)) RemoveStatus();
        return m_result;
    }

  private:
    std::vector<WrittenFile> WrittenFiles() {
        std::vector<WrittenFile> files;
        for (const Target& target : ListedTargets())
            files.push_back(Written(target));
        for (const std::string& path : m_manifest.Paths()) {
            const bool isListed = std::any_of(files.begin(), files.end(),
                                              [&](const WrittenFile& file) { return file.path == path; });
            if (!isListed) AddRecorded(path, files);
        }
        return files;
    }

    /// None when there is no list that can be used. What was recorded goes back all the same.
    std::vector<Target> ListedTargets() {
        try {
            return SelectTargets(m_product, {});
        } catch (const Failure& failure) {
            if (m_manifest.IsEmpty()) throw;
            m_result.isKept = true;
            m_product.Out().Error(failure.what(), failure.Lines());
            m_product.Out().Remark("only the files that the last commit recorded are put back");
            return {};
        }
    }

    WrittenFile Written(const Target& target) const {
        WrittenFile file{target.templateName,
                         m_product.HostPaths().FromInside(target.path),
                         target.RestartsFor(m_product.Role()),
                         target.path,
                         target.trusted,
                         target.forServer && target.forClient,
                         ""};
        try {
            file.path = m_product.HostPaths().WithRealDirectory(m_product.FilePath(target.path));
        } catch (const Failure& failure) {
            file.trouble = failure.what();
        }
        return file;
    }

    void AddRecorded(const std::string& path, std::vector<WrittenFile>& files) {
        WrittenFile file{"", path, {}, "", "", true, ""};
        try {
            if (!m_product.HostPaths().StaysInside(path)) {
                m_product.Out().Warning(path +
                                        ": leads out of the root directory by a link, and is left alone");
                return;
            }
        } catch (const Failure& failure) {
            file.trouble = failure.what();
        }
        files.push_back(std::move(file));
    }

    /// The files that were asked for; all when none was.
    std::vector<WrittenFile> Named(const std::vector<WrittenFile>& all) {
        if (m_names.empty()) return all;
        std::vector<WrittenFile> named;
        for (const std::string& name : m_names) {
            const std::string path = m_product.HostPaths().Canonical(name);
            const auto file = std::find_if(all.begin(), all.end(),
                                           [&](const WrittenFile& each) { return IsAt(each, path); });
            if (file == all.end()) {
                throw UsageError(name + ": is no target of the role " + m_product.Role() +
                                 " (\"status\" lists them; \"file restore\" puts any other file back)");
            }
            named.push_back(*file);
        }
        return named;
    }

    /// A file of which nobody can tell where it is, is at no path.
    bool IsAt(const WrittenFile& file, const std::string& path) const {
        const Paths& paths = m_product.HostPaths();
        try {
            return paths.Canonical(paths.NameInside(file.path)) == path;
        } catch (const Failure&) {
            return false;
        }
    }

    void TryPutBack(const WrittenFile& file) {
        try {
            if (!file.trouble.empty()) throw Failure(file.trouble);
            const FileOutcome outcome = PutBack(file);
            if (outcome.result == Result::Restored || outcome.result == Result::Removed)
                m_restarts.Add(file.restart);
            m_product.Out().Done(outcome);
        } catch (const Interrupted&) {
            throw;
        } catch (const std::exception& error) {
            m_result.isKept = true;
            m_product.Out().Error(file.path + ": could not be put back: " + WithRemedy(error.what()));
            m_product.Out().Done(OutcomeOf(file, Result::Failed, "could not be put back"));
        }
    }

    static FileOutcome OutcomeOf(const WrittenFile& file, Result result, const std::string& remark) {
        FileOutcome outcome;
        outcome.file = file.named;
        outcome.path = file.path;
        outcome.templateName = file.templateName;
        outcome.result = result;
        outcome.remark = remark;
        return outcome;
    }

    FileOutcome Keep(const WrittenFile& file, const std::string& remark) {
        m_result.isKept = true;
        return OutcomeOf(file, Result::Kept, remark);
    }

    FileOutcome PutBack(const WrittenFile& file) {
        const FileVersion version = VersionOf(file.path);
        const FileState reserve = StateOf(file.Reserve());
        const FileState now = StateOf(file.path);
        if (!reserve.exists && !StateOf(file.Record()).exists) {
            m_manifest.Forget(file.path);
            return OutcomeOf(file, Result::Unchanged,
                             now.exists ? "has no reserve, stays as it is" : "is not there");
        }
        if (reserve.exists && !reserve.IsRegular())
            throw Failure(file.Reserve() + ": is no regular file (move it away)");
        if (now.exists && !m_isForced && !IsOwnWork(file)) {
            m_product.Out().Warning(
                file.path +
                ": was edited since it was committed and stays (--force puts back what was there before)");
            return Keep(file, "edited, stays as it is");
        }
        if (m_otherManifest.IsDamaged() && file.isOfBoth && !m_isForced) {
            return Keep(file, "may have been committed by the role " + m_otherRole +
                                  ", too, and stays (--force puts it back)");
        }
        if (m_otherManifest.Has(file.path)) return LeaveToOtherRole(file, version, now);
        m_result.isChanged = true;
        FileOutcome outcome = Describe(file, now, reserve);
        if (m_isDryRun) return outcome;
        const FileInPlace place = file.PlaceIn(m_product.HostPaths());
        if (file.IsAsReserved(now, reserve)) {
            // What cannot be replaced, like a mount point, can be as it was all the same.
            place.Within([&](const std::string& name) { m_product.Config().RemoveConfigFileReserve(name); });
        } else {
            PutBackAsItWas(m_product, place, version);
        }
        m_manifest.Forget(file.path);
        return outcome;
    }

    /// The other role has committed the file, too: it gets what that role renders, and the original goes on
    /// being kept for the last of them.
    FileOutcome LeaveToOtherRole(const WrittenFile& file, const FileVersion& version, const FileState& now) {
        const std::string text = "stays for the role " + m_otherRole + ", which has committed it";
        if (file.templateName.empty()) {
            if (!m_isDryRun) m_manifest.Forget(file.path);
            return OutcomeOf(file, Result::Kept, text);
        }
        const std::vector<Problem> problems =
            CheckTemplateFile(m_product, file.templateName, m_product.Config().TemplatesValues());
        if (!problems.empty())
            throw Failure("it " + text + ", and cannot be rendered for it: " + problems.front().Describe());
        const std::string staged = StagedFor(file, m_otherRole);
        const bool isSame = now.IsRegular() && HaveSameModeAndBytes(file.path, staged);
        m_result.isChanged = m_result.isChanged || !isSame;
        const FileOutcome outcome = isSame ? OutcomeOf(file, Result::Kept, text)
                                           : OutcomeOf(file, Result::Changed,
                                                       text + (m_isDryRun ? ", and would be rendered for it"
                                                                          : ", and is rendered for it"));
        if (m_isDryRun) return outcome;
        if (!isSame) {
            const FileInPlace place = file.PlaceIn(m_product.HostPaths());
            RenderTarget(m_product, {file.templateName, place, staged, version, m_otherRole});
        }
        if (isSame && VersionOf(file.path) != version)
            throw Failure("another program wrote it after it was looked at (run the command again)");
        m_otherManifest.Record(file.path);
        m_manifest.Forget(file.path);
        return outcome;
    }

    std::string StagedFor(const WrittenFile& file, const std::string& role) {
        const QuietLog quiet(ZETLogError);
        return RenderStagedFor(m_product, Room(), file.templateName, role);
    }

    void SaveManifests() const {
        m_manifest.Save();
        m_otherManifest.Save();
    }

    FileOutcome Describe(const WrittenFile& file, const FileState& now, const FileState& reserve) const {
        const std::string tense = m_isDryRun ? "would be " : "";
        FileOutcome outcome = OutcomeOf(file, Result::Removed, tense + "removed, as there was none before");
        if (reserve.exists) {
            const std::string attributes = now.exists ? DescribeChange(now, reserve) : "";
            outcome = OutcomeOf(file, Result::Restored,
                                tense + "put back as it was" + (attributes.empty() ? "" : ", " + attributes));
        } else if (!now.exists) {
            outcome = OutcomeOf(file, Result::Unchanged, "is not there, as before");
        }
        outcome.before = now;
        outcome.after = reserve;
        outcome.diff = DiffOf(file, now, reserve);
        return outcome;
    }

    ShownDiff DiffOf(const WrittenFile& file, const FileState& now, const FileState& reserve) const {
        const bool isShown = now.exists ? now.IsRegular() : reserve.exists;
        if (!isShown) return {};
        return DiffToShow(m_product, now.exists ? file.path : "", reserve.exists ? file.Reserve() : "",
                          file.path);
    }

    /// Whether nothing but the product's work is lost when the file is replaced: it is what the product
    /// wrote, or what was there before, where a run was cut short in between.
    bool IsOwnWork(const WrittenFile& file) {
        if (m_manifest.IsUntouched(file.path) || m_otherManifest.IsUntouched(file.path)) return true;
        if (!StateOf(file.path).IsRegular()) return false;
        if (IsFileExist(file.Reserve()) && HaveSameModeAndBytes(file.path, file.Reserve())) return true;
        if (file.templateName.empty()) return false;
        if (!CheckTemplateFile(m_product, file.templateName, m_product.Config().TemplatesValues()).empty())
            return false;
        // A run that was cut short may have rendered it for the other role already.
        return HaveSameModeAndBytes(file.path, StagedFor(file, m_product.Role())) ||
               (m_otherManifest.Has(file.path) &&
                HaveSameModeAndBytes(file.path, StagedFor(file, m_otherRole)));
    }

    /// Made when it is needed: most rollbacks compare nothing, and work where there is no room left.
    const Staging& Room() {
        if (!m_staging)
            m_staging = std::make_unique<Staging>(m_isDryRun ? "" : m_product.Param("ZET_VAR_LIB_DIR"));
        return *m_staging;
    }

    void RemoveStatus() {
        m_product.Config().RemoveConfigStatus(m_product.Role());
        if (m_product.Role() == kClient) m_product.Config().RemoveFileServerStatus();
    }

    Deployment& m_product;
    const std::vector<std::string>& m_names;
    bool m_isForced;
    bool m_isDryRun;
    Manifest m_manifest;
    const std::string m_otherRole;
    Manifest m_otherManifest;
    std::unique_ptr<Staging> m_staging;
    Restarts m_restarts;
    RollbackResult m_result;
};

}  // namespace

RollbackResult RollBack(Deployment& product, const std::vector<std::string>& names, bool isForced) {
    const SignalGuard signals;
    std::unique_ptr<WriteLock> lock;
    if (!product.Wanted().dryRun) {
        RequireOwnInstructions(product);
        lock = std::make_unique<WriteLock>(product);
        PendingRecord::ClearAllLeftOvers(product);
    }
    return Rollback(product, names, isForced).Run();
}

}  // namespace ZET::Deploy
