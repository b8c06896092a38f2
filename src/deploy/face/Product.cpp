#include "zet/deploy/Product.h"

#include "deploy/face/Parts.h"
#include "deploy/host/Paths.h"
#include "deploy/lists/Targets.h"
#include "deploy/targets/Check.h"
#include "text/TemplateCheck.h"
#include "zet/deploy/Targets.h"
#include "zet/deploy/TemplateCheck.h"
#include "zet/deploy/Values.h"

namespace ZET::Deploy {

/// Names the same file wherever the program's working directory is. With a root directory, paths begin there.
static std::string LastingName(const std::string& configFile, const Options& options) {
    return options.root.empty() && !configFile.empty() ? AbsolutePath(configFile) : configFile;
}

Product::Product(const std::string& configFile, const Options& options, Observer* observer)
    : m_implementation(
          std::make_unique<Implementation>(LastingName(configFile, options), options, observer)) {}

Product::~Product() = default;

namespace {

std::vector<Target> SelectedTargets(Product& product) {
    return Use(product, [](Deployment& deployment) { return SelectTargets(deployment, {}); });
}

}  // namespace

StringMap Values(Product& product) {
    return Use(product, [](Deployment& deployment) { return deployment.TemplateValues(); });
}

std::vector<ListedTarget> ListTargets(Product& product) {
    std::vector<ListedTarget> listed;
    for (const Target& target : SelectedTargets(product)) {
        listed.push_back({target.templateName, target.path, target.roles, target.isSecret, target.line});
    }
    return listed;
}

std::vector<Problem> CheckTemplate(const StringMap& values, const std::string& text,
                                   const std::string& file) {
    const auto lines = [&](const auto& take) {
        if (!text.empty()) take(text);
    };
    return Text::CheckTemplate(file, lines, values);
}

std::vector<Problem> CheckTemplates(Product& product, const std::vector<std::string>& templateNames) {
    return Use(product, [&](Deployment& deployment) { return Check(deployment, templateNames).problems; });
}

}  // namespace ZET::Deploy
