#ifndef ZET_TAKE_BACK_H
#define ZET_TAKE_BACK_H

#include <memory>
#include <optional>
#include <string>

#include "deploy/host/FileVersion.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/state/KnownFiles.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/WrittenFile.h"
#include "zet/deploy/FileOutcome.h"

namespace ZET::Deploy {

/// What is done to one file that goes back to what it was.
struct TakeBackStep {
    enum class Action { Nothing, PutBack, DropReserve, OnlyRecord, TakeOutBlocks, NameOtherRole };

    WrittenFile file;
    FileOutcome outcome{};
    Action action = Action::Nothing;
    FileVersion version{};  ///< taken before the file was looked at
    bool hasReserve = false;
    bool isKept = false;    ///< it should have gone back, but stays
    bool isForced = false;  ///< what others did to the file does not count
    std::string text{};     ///< the new text: without the blocks, or naming the other role's command
    std::optional<std::string> others{};  ///< the lines that the other role has set, as they are remembered

    bool IsChange() const { return action != Action::Nothing && action != Action::OnlyRecord; }

    /// Sets what is reported of the file; its states and its diff are empty then.
    void Tell(FileOutcome::Result result, const std::string& remark);
};

/// Decides how files that the product wrote go back: a target to its reserve, an edit in place to its reserve
/// or by losing its blocks. What others did since stays.
class TakeBack {
  public:
    struct Ways {
        bool isForced = false;    ///< what others did does not count
        bool keepsEdits = false;  ///< an edited file stays without a warning
        bool isOfCommit = false;  ///< a commit takes files back, and cannot be forced
    };

    TakeBack(Deployment& product, const KnownFiles& known, const Ways& ways)
        : m_product(product), m_known(known), m_ways(ways), m_otherRole(OtherRole(product.Role())) {}

    /// Throws a `Failure` for what cannot be read, and for damaged markers.
    void Decide(TakeBackStep& step);

    /// Whether the file's directory is missing: the file may come back with the file system that it was on.
    bool IsOutOfReach(const WrittenFile& file) const;

    /// Whether nothing says what was there before the product. Does not count what the other role has
    /// committed, to which the file is left.
    bool IsReserveLost(const WrittenFile& file) const;

    /// Whether the file is as the product left it, and nobody's edits go with it. Those that a commit merged
    /// stay if the other role has the file.
    bool IsAsLeftToGo(const std::string& path) const;

  private:
    void DecideTarget(TakeBackStep& step);
    void RequireWritable(const TakeBackStep& step) const;
    bool DecideEdit(TakeBackStep& step);
    void DecideBlocks(TakeBackStep& step, std::string text, const std::string& remark);
    void DecidePutBack(TakeBackStep& step, const FileState& now, const FileState& reserve) const;
    std::string Force(const WrittenFile& file) const;
    void Keep(TakeBackStep& step, const std::string& words,
              const char* remark = ZET_TEXT("stays as it is")) const;
    void FailToTakeBack(TakeBackStep& step, const std::string& words) const;
    void KeepEdited(TakeBackStep& step) const;
    void KeepEdited(TakeBackStep& step, const std::string& told, const std::string& remark) const;
    void TellOfOtherRole(TakeBackStep& step) const;
    bool MayBeOthers(const WrittenFile& file) const;
    void KeepOthers(TakeBackStep& step) const;

    /// Whether replacing the file loses nothing but the product's work: the file is what the product wrote
    /// or, if a run was cut short in between, what was there before. For an edit in place, that is known
    /// already.
    bool IsOwnWork(const WrittenFile& file);

    void LeaveToOtherRole(TakeBackStep& step);
    void PlanText(TakeBackStep& step, std::string text);
    ShownDiff DiffOf(const WrittenFile& file, const FileState& now, const FileState& reserve) const;
    const Staging& Room();

    Deployment& m_product;
    const KnownFiles& m_known;
    const Ways m_ways;
    const Role m_otherRole;
    std::unique_ptr<Staging> m_staging;
};

}  // namespace ZET::Deploy

#endif
