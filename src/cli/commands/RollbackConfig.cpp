#include <algorithm>
#include <memory>
#include <string_view>

#include "cli/ExitStatus.h"
#include "cli/commands/Commands.h"
#include "deploy/edit/ChangeReport.h"
#include "deploy/host/Diff.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Staging.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/Lock.h"
#include "deploy/state/Manifest.h"
#include "deploy/state/PendingRecord.h"
#include "deploy/state/Replacement.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Restarts.h"
#include "deploy/targets/Secrets.h"
#include "deploy/targets/TargetCheck.h"
#include "deploy/targets/Targets.h"
#include "deploy/targets/WrittenFile.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

/// What is done with a file, for both forms of the report.
struct Outcome {
    std::string_view change;
    std::string text;
    ShownDiff diff;

    bool IsChange() const { return change == "restored" || change == "removed"; }
};

/// One run of the command, under the lock. What cannot be put back does not keep the others from it.
class Rollback {
  public:
    explicit Rollback(Session& session)
        : m_session(session),
          m_report(session.Out()),
          m_isDryRun(session.Asked().dryRun),
          m_manifest(session, session.Role(), Manifest::Damaged::IsEmpty),
          m_otherRole(session.Role() == "server" ? "client" : "server"),
          m_otherManifest(session, m_otherRole, Manifest::Damaged::IsEmpty) {
        m_report.Set("role", session.Role());
        m_report.Set("dry_run", m_isDryRun);
        m_report.AddList("targets");
        m_report.AddList("restart");
    }

    int Run() {
        const std::vector<WrittenFile> all = WrittenFiles();
        const std::vector<WrittenFile> named = Named(all);
        try {
            for (const WrittenFile& file : named) {
                SignalGuard::Check();
                TryPutBack(file);
            }
        } catch (const Interrupted&) {
            m_restarts.Tell(m_session);
            if (!m_isDryRun) SaveManifests();
            throw;
        }
        m_restarts.Tell(m_session);
        if (m_isDryRun) return m_isChanged ? kNotInSync : (m_isKept ? kFailed : kDone);
        SaveManifests();
        const auto isLeft = [&](const WrittenFile& file) {
            return file.IsLeft() && !m_otherManifest.Has(file.path);
        };
        if (m_manifest.IsEmpty() && std::none_of(all.begin(), all.end(), isLeft)) RemoveStatus();
        return m_isKept ? kFailed : kDone;
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
            return SelectTargets(m_session, {});
        } catch (const Failure& failure) {
            if (m_manifest.IsEmpty()) throw;
            m_isKept = true;
            m_report.Error(failure.what(), failure.Lines());
            m_report.Remark("only the files that the last commit recorded are put back");
            return {};
        }
    }

    WrittenFile Written(const Target& target) const {
        WrittenFile file{target.templateName,
                         m_session.HostPaths().FromInside(target.path),
                         target.restart,
                         target.path,
                         target.trusted,
                         target.forServer && target.forClient,
                         ""};
        try {
            file.path = m_session.HostPaths().WithRealDirectory(m_session.FilePath(target.path));
        } catch (const Failure& failure) {
            file.trouble = failure.what();
        }
        return file;
    }

    void AddRecorded(const std::string& path, std::vector<WrittenFile>& files) {
        WrittenFile file{"", path, "", "", "", true, ""};
        try {
            if (!m_session.HostPaths().StaysInside(path)) {
                m_report.Warning(path + ": leads out of the root directory by a link, and is left alone");
                return;
            }
        } catch (const Failure& failure) {
            file.trouble = failure.what();
        }
        files.push_back(std::move(file));
    }

    /// The files that were asked for; all when none was.
    std::vector<WrittenFile> Named(const std::vector<WrittenFile>& all) {
        const std::vector<std::string>& names = m_session.Asked().names;
        if (names.empty()) return all;
        std::vector<WrittenFile> named;
        for (const std::string& name : names) {
            const std::string path = m_session.HostPaths().Canonical(name);
            const auto file = std::find_if(all.begin(), all.end(),
                                           [&](const WrittenFile& each) { return IsAt(each, path); });
            if (file == all.end()) {
                throw UsageError(name + ": is no target of the role " + m_session.Role() +
                                 " (\"status\" lists them; \"file restore\" puts any other file back)");
            }
            named.push_back(*file);
        }
        return named;
    }

    /// A file of which nobody can tell where it is, is at no path.
    bool IsAt(const WrittenFile& file, const std::string& path) const {
        const Paths& paths = m_session.HostPaths();
        try {
            return paths.Canonical(paths.NameInside(file.path)) == path;
        } catch (const Failure&) {
            return false;
        }
    }

    void TryPutBack(const WrittenFile& file) {
        try {
            if (!file.trouble.empty()) throw Failure(file.trouble);
            const Outcome outcome = PutBack(file);
            if (outcome.IsChange()) m_restarts.Add(file.restart);
            Tell(file, outcome);
        } catch (const Interrupted&) {
            throw;
        } catch (const std::exception& error) {
            m_isKept = true;
            m_report.Error(file.path + ": could not be put back: " + WithRemedy(error.what()));
            Tell(file, {"failed", "could not be put back", {}});
        }
    }

    Outcome PutBack(const WrittenFile& file) {
        const FileVersion version = VersionOf(file.path);
        const FileState reserve = StateOf(file.Reserve());
        const FileState now = StateOf(file.path);
        if (!reserve.exists && !StateOf(file.Record()).exists) {
            m_manifest.Forget(file.path);
            return {"unchanged", now.exists ? "has no reserve, stays as it is" : "is not there", {}};
        }
        if (reserve.exists && !reserve.IsRegular())
            throw Failure(file.Reserve() + ": is no regular file (move it away)");
        if (now.exists && !m_session.Asked().force && !IsOwnWork(file)) {
            m_isKept = true;
            m_report.Warning(
                file.path +
                ": was edited since it was committed and stays (--force puts back what was there before)");
            return {"kept", "edited, stays as it is", {}};
        }
        if (m_otherManifest.IsDamaged() && file.isOfBoth && !m_session.Asked().force) {
            m_isKept = true;
            return {"kept",
                    "may have been committed by the role " + m_otherRole +
                        ", too, and stays (--force puts it back)",
                    {}};
        }
        if (m_otherManifest.Has(file.path)) return LeaveToOtherRole(file, version, now);
        m_isChanged = true;
        Outcome outcome = Describe(file, now, reserve);
        if (m_isDryRun) return outcome;
        const FileInPlace place = file.PlaceIn(m_session.HostPaths());
        if (file.IsAsReserved(now, reserve)) {
            // What cannot be replaced, like a mount point, can be as it was all the same.
            place.Within([&](const std::string& name) { m_session.Config().RemoveConfigFileReserve(name); });
        } else {
            PutBackAsItWas(m_session, place, version);
        }
        m_manifest.Forget(file.path);
        return outcome;
    }

    /// The other role has committed the file, too: it gets what that role renders, and the original goes on
    /// being kept for the last of them.
    Outcome LeaveToOtherRole(const WrittenFile& file, const FileVersion& version, const FileState& now) {
        const std::string text = "stays for the role " + m_otherRole + ", which has committed it";
        if (file.templateName.empty()) {
            if (!m_isDryRun) m_manifest.Forget(file.path);
            return {"kept", text, {}};
        }
        const std::vector<Problem> problems =
            CheckTemplateFile(m_session, file.templateName, m_session.Config().TemplatesValues());
        if (!problems.empty())
            throw Failure("it " + text + ", and cannot be rendered for it: " + problems.front().Describe());
        const std::string staged = StagedFor(file, m_otherRole);
        const bool isSame = now.IsRegular() && HaveSameModeAndBytes(file.path, staged);
        m_isChanged = m_isChanged || !isSame;
        Outcome outcome{isSame ? "kept" : "changed",
                        text + (isSame       ? ""
                                : m_isDryRun ? ", and would be rendered for it"
                                             : ", and is rendered for it"),
                        {}};
        if (m_isDryRun) return outcome;
        if (!isSame) {
            const FileInPlace place = file.PlaceIn(m_session.HostPaths());
            RenderTarget(m_session, {file.templateName, place, staged, version, m_otherRole});
        }
        if (isSame && VersionOf(file.path) != version)
            throw Failure("another program wrote it after it was looked at (run the command again)");
        m_otherManifest.Record(file.path);
        m_manifest.Forget(file.path);
        return outcome;
    }

    std::string StagedFor(const WrittenFile& file, const std::string& role) {
        const QuietLog quiet(m_session.Asked(), ZETLogError);
        return RenderStagedFor(m_session, Room(), file.templateName, role);
    }

    void SaveManifests() const {
        m_manifest.Save();
        m_otherManifest.Save();
    }

    Outcome Describe(const WrittenFile& file, const FileState& now, const FileState& reserve) const {
        const std::string tense = m_isDryRun ? "would be " : "";
        Outcome outcome = {"removed", tense + "removed, as there was none before", {}};
        if (reserve.exists) {
            const std::string attributes = now.exists ? DescribeChange(now, reserve) : "";
            outcome = {
                "restored", tense + "put back as it was" + (attributes.empty() ? "" : ", " + attributes), {}};
        } else if (!now.exists) {
            outcome = {"unchanged", "is not there, as before", {}};
        }
        outcome.diff = DiffOf(file, now, reserve);
        return outcome;
    }

    ShownDiff DiffOf(const WrittenFile& file, const FileState& now, const FileState& reserve) const {
        const bool isShown = now.exists ? now.IsRegular() : reserve.exists;
        if (!isShown) return {};
        return DiffToShow(m_session, now.exists ? file.path : "", reserve.exists ? file.Reserve() : "",
                          file.path);
    }

    /// Whether nothing but the product's work is lost when the file is replaced: it is what the product
    /// wrote, or what was there before, where a run was cut short in between.
    bool IsOwnWork(const WrittenFile& file) {
        if (m_manifest.IsUntouched(file.path) || m_otherManifest.IsUntouched(file.path)) return true;
        if (!StateOf(file.path).IsRegular()) return false;
        if (IsFileExist(file.Reserve()) && HaveSameModeAndBytes(file.path, file.Reserve())) return true;
        if (file.templateName.empty()) return false;
        if (!CheckTemplateFile(m_session, file.templateName, m_session.Config().TemplatesValues()).empty())
            return false;
        // A run that was cut short may have rendered it for the other role already.
        return HaveSameModeAndBytes(file.path, StagedFor(file, m_session.Role())) ||
               (m_otherManifest.Has(file.path) &&
                HaveSameModeAndBytes(file.path, StagedFor(file, m_otherRole)));
    }

    /// Made when it is needed: most rollbacks compare nothing, and work where there is no room left.
    const Staging& Room() {
        if (!m_staging)
            m_staging = std::make_unique<Staging>(m_isDryRun ? "" : m_session.Param("ZET_VAR_LIB_DIR"));
        return *m_staging;
    }

    void Tell(const WrittenFile& file, const Outcome& outcome) {
        if (!m_session.Asked().quiet) m_report.Line(file.path + ": " + outcome.text);
        outcome.diff.Tell(m_report);
        Fields fields = {{"template", file.templateName.empty() ? Value(nullptr) : Value(file.templateName)},
                         {"path", m_session.HostPaths().RealName(file.path)},
                         {"change", std::string(outcome.change)}};
        if (m_session.Asked().json)
            fields.emplace_back("secret",
                                outcome.diff.isPrivate || m_session.HostSecrets().IsPrivate(file.path));
        if (m_session.Asked().diff) outcome.diff.AddTo(fields);
        m_report.Add("targets", std::move(fields));
    }

    void RemoveStatus() {
        m_session.Config().RemoveConfigStatus(m_session.Role());
        if (m_session.Role() == "client") m_session.Config().RemoveFileServerStatus();
    }

    Session& m_session;
    Report& m_report;
    bool m_isDryRun;
    Manifest m_manifest;
    const std::string m_otherRole;
    Manifest m_otherManifest;
    std::unique_ptr<Staging> m_staging;
    Restarts m_restarts;
    bool m_isKept = false;     ///< something stays that should have been put back
    bool m_isChanged = false;  ///< something was, or would be, put back
};

}  // namespace

int RunRollbackConfig(Session& session) {
    const SignalGuard signals;
    std::unique_ptr<WriteLock> lock;
    if (!session.Asked().dryRun) {
        RequireOwnInstructions(session);
        lock = std::make_unique<WriteLock>(session);
        PendingRecord::ClearLeftOvers(session);
    }
    return Rollback(session).Run();
}

}  // namespace ZET
