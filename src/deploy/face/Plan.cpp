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

    /// The calls that come next find the host as it is then.
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
    // Of those that hold no lock, the newest is the one to be committed.
    if (product.Parts().deployment.Wanted().dryRun) product.Parts().plan = nullptr;
    return Use(product, [&](Deployment&) {
        const SignalGuard signals;
        auto parts = std::make_unique<Plan::Implementation>(product.Parts(), templateNames, onEdit);
        // One that comes now would end the program while the plan has files lying about.
        SignalGuard::Check();
        // One that cannot be committed keeps nobody waiting.
        const std::unique_ptr<WriteLock> unneeded =
            parts->plan.Problems().empty() ? nullptr : parts->plan.TakeLock();
        return Plan(std::move(parts));
    });
}

/// However it ends, others may write then.
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
