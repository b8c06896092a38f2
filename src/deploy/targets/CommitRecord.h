#ifndef ZET_COMMIT_RECORD_H
#define ZET_COMMIT_RECORD_H

#include <cstdint>
#include <optional>
#include <string>

#include "deploy/state/CapturedFile.h"
#include "deploy/state/Recording.h"
#include "deploy/state/store/Records.h"
#include "deploy/targets/CommitPlan.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/PlannedTarget.h"

namespace ZET::Deploy {

/// Records one commit in the host's history: what it is about to write, and what is known of the files
/// afterwards, also of those that stay as they are.
class CommitRecord {
  public:
    CommitRecord(Deployment& product, CommitPlan& plan);

    /// Must be called before the first file is written.
    void Begin();

    /// Records unchanged targets and lines as committed by this role, if no entry does. Must be called before
    /// the status is written: a status without any target would never be removed.
    void RememberUnchanged();

    /// Must be called after the last file is written.
    void Complete();

    /// The number of the entry; none if there is no entry.
    std::optional<std::int64_t> Number() const { return m_recording.Number(); }

  private:
    void Expect();
    template <typename Call>
    void ForEachUnchanged(Call call) const;
    ExpectedFile ExpectedUnchanged(const PlannedTarget& planned) const;
    ExpectedFile Expected(PlannedTarget& planned) const;
    Knowledge KnowledgeOf(const PlannedTarget& planned) const;
    bool IsKnown(const PlannedTarget& planned) const;
    void RememberShipped();
    FileToRecord Remembered(const ExpectedFile& expected) const;

    Deployment& m_product;
    CommitPlan& m_plan;
    Recording m_recording;
    const std::uint64_t m_longest;
};

}  // namespace ZET::Deploy

#endif
