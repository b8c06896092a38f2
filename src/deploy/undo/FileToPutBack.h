#ifndef ZET_FILE_TO_PUT_BACK_H
#define ZET_FILE_TO_PUT_BACK_H

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "deploy/host/Words.h"
#include "deploy/state/Recording.h"
#include "deploy/state/StateWriter.h"
#include "deploy/state/Writing.h"
#include "deploy/targets/Deployment.h"
#include "deploy/undo/KnownThen.h"
#include "deploy/undo/RecordedChanges.h"
#include "deploy/undo/WayWithOthers.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The remedy of most refusals.
inline constexpr char kForcedWay[] = ZET_TEXT("--force puts back what was there before all the same");

/// One file, with its companions, that goes back to what it was before. It is looked at, then recorded, then
/// written.
class FileToPutBack {
  public:
    FileToPutBack(Deployment& product, RecordedChange change);

    const std::string& Path() const { return m_path; }
    const RecordedChange& Change() const { return m_change; }

    /// Compares what is there with what is to come. Returns the problems that keep the file from going back.
    std::vector<Problem> Look(const Writing& writing, OthersWork others);

    /// True if the file stays as it is, since somebody has written it since.
    bool IsKept() const { return m_isKept; }

    /// The roles that have the file committed afterwards; empty if none has.
    std::set<Role> RolesAfter() const;

    /// For the main file: the parameters of directories that would lead elsewhere afterwards.
    std::set<std::string> MovedDirectories() const;

    /// Whether the file or a companion would change.
    bool IsChange() const;

    void Expect(Recording& recording) const;
    void Write() const;

    /// What happens to the file, for the report. Must be called before `Write`.
    FileOutcome Outcome() const;

  private:
    void LookAt(const RecordedFile& row, const char* suffix, std::optional<CapturedFile>& now,
                std::optional<CapturedFile>& wanted);
    void Capture();
    void Refuse(const std::string& path, const std::string& text, const std::string& remedy);
    void LookAtOthersWork(const RecordedFile& row, const std::string& path, const CapturedFile& now,
                          CapturedFile& wanted);
    void RefuseOthersWork(const RecordedFile& row, const std::string& path, const CapturedFile& now);
    void MergeInto(CapturedFile& wanted, const RecordedFile& row, const CapturedFile& now);
    bool LeavesNewerWork() const;
    void LoadTexts();
    void LoadText(std::optional<CapturedFile>& wanted, const char* suffix);
    void RequireGivable();
    void RequireAllReplaceable() const;
    void TellKnownThen();
    bool IsEditedBetween() const;
    void ExpectPart(Recording& recording, const RecordedFile& row, const char* suffix,
                    const std::optional<CapturedFile>& wanted) const;
    FileOutcome::Result Result() const;
    std::string Remark() const;
    bool IsMerge() const { return m_others == OthersWork::IsMerged && m_isOthersWork && !m_isKept; }
    ShownDiff Diff() const;
    ShownDiff DiffOfTexts() const;

    Deployment& m_product;
    RecordedChange m_change;
    std::string m_path;
    std::unique_ptr<FileInPlace> m_place;
    FileVersion m_version;
    FileWithCompanions m_now;
    FileWithCompanions m_wanted;
    OthersWork m_others = OthersWork::IsRefused;
    std::optional<KnownFile> m_known;
    KnownThen m_then;
    std::optional<std::string> m_base;  ///< the base of a merged target, where `before` has none
    bool m_isOthersWork = false;
    bool m_isKept = false;
    bool m_leavesNewerWork = false;  ///< a merge leaves what newer entries wrote
    std::vector<Problem> m_problems;
};

}  // namespace ZET::Deploy

#endif
