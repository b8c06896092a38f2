#include "zet/deploy/Edit.h"

#include "deploy/edit/Adopt.h"
#include "deploy/edit/Edits.h"
#include "deploy/edit/LineEdits.h"
#include "deploy/edit/OptionEdits.h"
#include "deploy/edit/ParamEdits.h"
#include "deploy/edit/Reserves.h"
#include "deploy/face/Parts.h"
#include "deploy/targets/EditRules.h"

namespace ZET::Deploy {

namespace {

/// The real file whose text the caller asks for.
std::string FileToShow(Deployment& product, const std::string& file) {
    std::string path = FileToRead(product, file);
    product.HostSecrets().RequireShown(path);
    return path;
}

}  // namespace

std::optional<std::string> GetParam(Product& product, const std::string& file, const std::string& name,
                                    const std::optional<std::string>& section) {
    RequireParamName(name);
    return Use(product, [&](Deployment& deployment) {
        return GetParam(deployment, FileToShow(deployment, file), name, section);
    });
}

FileOutcome SetParam(Product& product, const std::string& file, const std::string& name,
                     const std::string& value, const EditOptions& options) {
    return Use(product,
               [&](Deployment& deployment) { return SetParam(deployment, file, name, value, options); });
}

FileOutcome UnsetParam(Product& product, const std::string& file, const std::string& name,
                       const EditOptions& options) {
    return Use(product, [&](Deployment& deployment) { return UnsetParam(deployment, file, name, options); });
}

FileOutcome RestoreParam(Product& product, const std::string& file, const std::string& name,
                         const EditOptions& options) {
    return Use(product,
               [&](Deployment& deployment) { return RestoreParam(deployment, file, name, options); });
}

std::optional<std::string> GetLine(Product& product, const std::string& file, const std::string& pattern,
                                   const std::optional<std::string>& section) {
    return Use(product, [&](Deployment& deployment) {
        RequirePattern(deployment.Core(), pattern);
        return GetLine(deployment, FileToShow(deployment, file), pattern, section);
    });
}

FileOutcome SetLine(Product& product, const std::string& file, const std::string& pattern,
                    const std::string& line, const EditOptions& options) {
    return Use(product,
               [&](Deployment& deployment) { return SetLine(deployment, file, pattern, line, options); });
}

FileOutcome RestoreLine(Product& product, const std::string& file, const std::string& pattern,
                        const EditOptions& options) {
    return Use(product,
               [&](Deployment& deployment) { return RestoreLine(deployment, file, pattern, options); });
}

FileOutcome StripFile(Product& product, const std::string& file, const EditOptions& options) {
    return Use(product, [&](Deployment& deployment) { return StripFile(deployment, file, options); });
}

FileOutcome ReserveFile(Product& product, const std::string& file) {
    return Use(product, [&](Deployment& deployment) { return ReserveFile(deployment, file); });
}

FileOutcome RestoreFile(Product& product, const std::string& file, const EditOptions& options) {
    return Use(product, [&](Deployment& deployment) { return RestoreFile(deployment, file, options); });
}

FileOutcome ForgetReserve(Product& product, const std::string& file, const EditOptions& options) {
    return Use(product, [&](Deployment& deployment) { return ForgetReserve(deployment, file, options); });
}

FileOutcome Adopt(Product& product, const std::string& file) {
    return Use(product, [&](Deployment& deployment) { return AdoptFile(deployment, file); });
}

std::optional<std::string> GetOption(Product& product, const std::string& name) {
    return Use(product, [&](Deployment& deployment) { return GetOption(deployment, name); });
}

FileOutcome SetOption(Product& product, const std::string& name, const std::string& value) {
    return Use(product, [&](Deployment& deployment) { return SetOption(deployment, name, value); });
}

}  // namespace ZET::Deploy
