#ifndef ZET_DEPLOY_PLAN_H
#define ZET_DEPLOY_PLAN_H

#include <memory>
#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/ZETProblem.h"
#include "zet/deploy/FileOutcome.h"
#include "zet/deploy/OnEdit.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// What a commit would do, or what prevents it. A plan that can be committed holds the product's lock until
/// its commit or its end, so that it remains true; with the option `dryRun` it does not. While the lock is
/// held, another plan, and any call that writes, fails at once with a `Failure`. Of several plans that write
/// nothing, only the newest can be committed. The results remain readable after the commit; on a plan that
/// was moved from, each call is a `UsageError`. The product must outlive the plan.
///
/// From `MakePlan` to the end of its `Commit`, the parameters are those that the plan was made with, also for
/// other calls. Destroying the plan ends that as well; a plan with problems does not start it.
class ZET_API Plan {
  public:
    ~Plan();
    Plan(Plan&& other) noexcept;
    Plan& operator=(Plan&& other) noexcept;

    /// Empty if the plan can be committed.
    const std::vector<Problem>& Problems() const;

    /// What would happen to each target, in the order of the list.
    std::vector<FileOutcome> Files() const;

    /// The services that would have to be restarted.
    std::vector<std::string> Restarts() const;

    /// For the library's own use.
    class Implementation;
    explicit Plan(std::unique_ptr<Implementation> implementation);
    Implementation& Parts() const;

  private:
    std::unique_ptr<Implementation> m_implementation;
};

/// Checks the targets of the product's role that are made from `templateNames` (all if empty), renders each
/// in a private directory, and compares it with the present file. A template that is not in the list is a
/// `UsageError`; a list that cannot be read, or a check command that cannot be run, is a `Failure`. A
/// rendering that its check command refuses is one of the plan's problems.
ZET_API Plan MakePlan(Product& product, const std::vector<std::string>& templateNames = {},
                      OnEdit onEdit = OnEdit::AsConfigured);

}  // namespace ZET::Deploy

#endif
