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

/// What a commit would do, or what keeps it from being made. One that can be committed holds the product's
/// lock until it is, or to its end, unless the product's options say that nothing is written: what was
/// planned is still true then. Until then another plan, and any call that writes, is a `Failure` at once; of
/// those that write nothing, the newest is the one to be committed. What it tells can be asked afterwards,
/// too; a plan that was moved from has nothing to tell, and each call of it is a `UsageError`. The product
/// must live longer.
///
/// From `MakePlan` to the end of its `Commit`, parameters are those that the plan was made with, also for
/// other calls. That ends as well when the plan is let go; a plan with problems waits for nothing.
class ZET_API Plan {
  public:
    ~Plan();
    Plan(Plan&& other) noexcept;
    Plan& operator=(Plan&& other) noexcept;

    /// None: the plan can be committed.
    const std::vector<Problem>& Problems() const;

    /// What would happen to each target, in the order of the list.
    std::vector<FileOutcome> Files() const;

    /// The services that would have to be restarted.
    std::vector<std::string> Restarts() const;

    /// What the library itself works on.
    class Implementation;
    explicit Plan(std::unique_ptr<Implementation> implementation);
    Implementation& Parts() const;

  private:
    std::unique_ptr<Implementation> m_implementation;
};

/// Checks the targets of the product's role whose templates `templateNames` has, all when it is empty,
/// renders each in a private directory, and compares it with what is there. A template that the list does not
/// have is a `UsageError`; a list that cannot be read, and a rendering that its own check command refuses, a
/// `Failure`.
ZET_API Plan MakePlan(Product& product, const std::vector<std::string>& templateNames = {},
                      OnEdit onEdit = OnEdit::AsConfigured);

}  // namespace ZET::Deploy

#endif
