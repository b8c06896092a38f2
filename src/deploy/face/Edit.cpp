#include "zet/deploy/Edit.h"

#include "deploy/edit/EditRules.h"
#include "deploy/edit/Edits.h"
#include "deploy/edit/LineEdits.h"
#include "deploy/edit/OptionEdits.h"
#include "deploy/edit/ParamEdits.h"
#include "deploy/edit/Reserves.h"
#include "deploy/face/Parts.h"

namespace ZET::Deploy {

namespace {

/// The real file, of which the caller asks for the text.
std::string FileToShow(Deployment& product, const std::string& file) {
    std::string path = FileToRead(product, file);
    product.HostSecrets().RequireShown(path);
    return path;
}

}  // namespace

std::optional<std::string> GetParam(Product& product, const std::string& file, const std::string& name) {
    RequireParamName(name);
    Deployment& deployment = DeploymentOf(product);
    return GetParam(deployment, FileToShow(deployment, file), name);
}

FileOutcome SetParam(Product& product, const std::string& file, const std::string& name,
                     const std::string& value, const EditOptions& options) {
    return SetParam(DeploymentOf(product), file, name, value, options);
}

FileOutcome RestoreParam(Product& product, const std::string& file, const std::string& name,
                         const EditOptions& options) {
    return RestoreParam(DeploymentOf(product), file, name, options);
}

std::optional<std::string> GetLine(Product& product, const std::string& file, const std::string& pattern) {
    Deployment& deployment = DeploymentOf(product);
    RequirePattern(deployment.Core(), pattern);
    return GetLine(deployment, FileToShow(deployment, file), pattern);
}

FileOutcome SetLine(Product& product, const std::string& file, const std::string& pattern,
                    const std::string& line, const EditOptions& options) {
    return SetLine(DeploymentOf(product), file, pattern, line, options);
}

FileOutcome RestoreLine(Product& product, const std::string& file, const std::string& pattern,
                        const EditOptions& options) {
    return RestoreLine(DeploymentOf(product), file, pattern, options);
}

FileOutcome StripFile(Product& product, const std::string& file, const EditOptions& options) {
    return StripFile(DeploymentOf(product), file, options);
}

FileOutcome ReserveFile(Product& product, const std::string& file) {
    return ReserveFile(DeploymentOf(product), file);
}

FileOutcome RestoreFile(Product& product, const std::string& file) {
    return RestoreFile(DeploymentOf(product), file);
}

FileOutcome ForgetReserve(Product& product, const std::string& file, const EditOptions& options) {
    return ForgetReserve(DeploymentOf(product), file, options);
}

std::optional<std::string> GetOption(Product& product, const std::string& name) {
    return GetOption(DeploymentOf(product), name);
}

FileOutcome SetOption(Product& product, const std::string& name, const std::string& value) {
    return SetOption(DeploymentOf(product), name, value);
}

}  // namespace ZET::Deploy
