#include "zet/deploy/Plan.h"

#include "deploy/face/Parts.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Words.h"
#include "deploy/targets/Commit.h"
#include "deploy/targets/CommitPlan.h"
#include "zet/deploy/Commit.h"

namespace ZET::Deploy {

class Plan::Implementation {
  public:
    Implementation(Product::Implementation& product, const std::vector<std::string>& templateNames,
                   OnEdit onEdit)
        : parts(product), plan(product.deployment, templateNames, onEdit) {
        if (plan.Problems().empty()) parts.plan = this;
    }
    ~Implementation() { End(); }
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    /// From now on, calls find the host as it is then.
    void End() {
        if (parts.plan == this) parts.plan = nullptr;
    }

    Product::Implementation& parts;
    CommitPlan plan;
};

Plan::Plan(std::unique_ptr<Implementation> implementation) : m_implementation(std::move(implementation)) {}
Plan::~Plan() = default;
Plan::Plan(Plan&& other) noexcept = default;
Plan& Plan::operator=(Plan&& other) noexcept = default;

Plan::Implementation& Plan::Parts() const {
    if (!m_implementation) throw UsageError(_("the plan was moved to another object, which has it now"));
    return *m_implementation;
}

const std::vector<Problem>& Plan::Problems() const {
    return Parts().plan.Problems();
}

std::vector<FileOutcome> Plan::Files() const {
    Product::Implementation& product = Parts().parts;
    return Tell(product.relay, [&] {
        const Call call(product);
        return OutcomesOf(product.deployment, Parts().plan.Targets());
    });
}

std::vector<std::string> Plan::Restarts() const {
    return Parts().plan.Services().ToRestart();
}

Plan MakePlan(Product& product, const std::vector<std::string>& templateNames, OnEdit onEdit) {
    // The plans of dry runs hold no lock, so the newest of them is the one that can be committed.
    if (product.Parts().deployment.Wanted().dryRun) product.Parts().plan = nullptr;
    return Use(product, [&](Deployment&) {
        const SignalGuard signals;
        auto parts = std::make_unique<Plan::Implementation>(product.Parts(), templateNames, onEdit);
        // A signal that has come ends the call here, while the plan's files are still cleared away.
        SignalGuard::Check();
        // A plan that cannot be committed gives its lock up, so that nobody waits for it.
        const std::unique_ptr<WriteLock> unneeded =
            parts->plan.Problems().empty() ? nullptr : parts->plan.TakeLock();
        return Plan(std::move(parts));
    });
}

/// Gives the lock up however the commit ends.
static void CommitOnce(Deployment& deployment, CommitPlan& plan) {
    const std::unique_ptr<WriteLock> lock = plan.TakeLock();
    Commit(deployment, plan);
}

Outcome Commit(Product& product, Plan& plan, Observer* observer) {
    if (!plan.Problems().empty())
        throw Failure({.text = _("the plan has problems, and nothing was changed"),
                       .remedy = _("solve them, and plan again"),
                       .output = LinesOf(plan.Problems())});
    if (product.Parts().plan != &plan.Parts())
        throw UsageError(_("the plan was committed already, or another one was made since; plan again"));
    return Collect(product, observer, [&](Deployment& deployment) {
        plan.Parts().End();
        const SignalGuard signals;
        if (deployment.Wanted().dryRun) {
            Preview(deployment, plan.Parts().plan);
        } else {
            CommitOnce(deployment, plan.Parts().plan);
        }
    });
}

}  // namespace ZET::Deploy
