#include "zet/deploy/Product.h"

#include "deploy/face/Parts.h"
#include "deploy/targets/Check.h"
#include "deploy/targets/Targets.h"
#include "text/Lines.h"
#include "text/TemplateCheck.h"
#include "zet/deploy/Targets.h"
#include "zet/deploy/TemplateCheck.h"
#include "zet/deploy/Values.h"

namespace ZET::Deploy {

Product::Product(const std::string& configFile, const Options& options, Observer* observer)
    : m_implementation(std::make_unique<Implementation>(configFile, options, observer)) {}

Product::~Product() = default;

StringMap Values(Product& product) {
    return DeploymentOf(product).Config().TemplatesValues();
}

std::vector<ListedTarget> ListTargets(Product& product) {
    std::vector<ListedTarget> listed;
    for (const Target& target : SelectTargets(DeploymentOf(product), {})) {
        listed.push_back({target.templateName, target.path, target.roles, target.isSecret, target.line});
    }
    return listed;
}

std::vector<Problem> CheckTemplate(const StringMap& values, const std::string& text,
                                   const std::string& file) {
    const auto lines = [&](const auto& take) {
        for (const TextLine& line : SplitLines(text))
            take(line.text);
    };
    return ZET::CheckTemplate(file, lines, values);
}

std::vector<Problem> CheckTemplates(Product& product, const std::vector<std::string>& templateNames) {
    return Check(DeploymentOf(product), templateNames).problems;
}

}  // namespace ZET::Deploy
