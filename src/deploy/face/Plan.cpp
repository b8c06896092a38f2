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

const std::vector<Problem>& Plan::Problems() const {
    return m_implementation->plan.Problems();
}

std::vector<FileOutcome> Plan::Files() const {
    std::vector<FileOutcome> files;
    RemedyErrors("", [&] {
        const Call call(m_implementation->parts);
        files = OutcomesOf(m_implementation->parts.deployment, m_implementation->plan.Targets());
    });
    return files;
}

std::vector<std::string> Plan::Restarts() const {
    return m_implementation->plan.Services().ToRestart();
}

Plan MakePlan(Product& product, const std::vector<std::string>& templateNames, OnEdit onEdit) {
    product.Parts().plan = nullptr;
    return Use(product, [&](Deployment&) {
        const SignalGuard signals;
        return Plan(std::make_unique<Plan::Implementation>(product.Parts(), templateNames, onEdit));
    });
}

Outcome Commit(Product& product, Plan& plan, Observer* observer) {
    if (!plan.Problems().empty())
        throw Failure({.text = _("the plan has problems, and nothing was changed"),
                       .remedy = _("solve them, and plan again"),
                       .output = LinesOf(plan.Problems())});
    if (product.Parts().plan != &plan.Parts())
        throw Failure({.text = _("the plan was committed already, or another one was made since"),
                       .remedy = _("plan again")});
    return Collect(product, observer, [&](Deployment& deployment) {
        plan.Parts().End();
        const SignalGuard signals;
        if (deployment.Wanted().dryRun) {
            Preview(deployment, plan.Parts().plan);
        } else {
            Commit(deployment, plan.Parts().plan);
        }
    });
}

}  // namespace ZET::Deploy
