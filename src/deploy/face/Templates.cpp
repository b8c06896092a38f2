#include "zet/deploy/Templates.h"

#include "deploy/face/Parts.h"
#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/targets/TemplateStates.h"
#include "deploy/targets/TemplateUpgrade.h"

namespace ZET::Deploy {

namespace {

void RequireNone(const std::vector<Problem>& problems) {
    if (problems.empty()) return;
    throw Failure({.text = _("the templates cannot be upgraded, and nothing was changed"),
                   .remedy = _("solve these problems, or leave out the templates that have them"),
                   .output = LinesOf(problems)});
}

}  // namespace

std::vector<ListedTemplate> ListTemplates(Product& product) {
    return Use(product, [](Deployment& deployment) { return ListTemplates(deployment); });
}

std::vector<TemplateState> TemplateStates(Product& product, const std::vector<std::string>& names) {
    return Use(product, [&](Deployment& deployment) { return TemplateStates(deployment, names); });
}

Outcome UpgradeTemplates(Product& product, const std::vector<std::string>& names, Observer* observer) {
    return Collect(product, observer, [&](Deployment& deployment) {
        TemplateUpgrade upgrade(deployment, names);
        RequireNone(upgrade.Problems());
        upgrade.Run();
    });
}

}  // namespace ZET::Deploy
