#include "deploy/state/Assumptions.h"

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "zet/ZETErrors.h"

namespace ZET::Deploy {

namespace {

void Assume(HostProduct& product, const std::string& name, const std::string& value) {
    if (name != "ZET_CFG") {
        if (const auto problem = ProblemOfParam(name, value))
            throw UsageError("--set: " + problem->text + " (" + problem->remedy + ")");
    }
    try {
        // The core warns of a name that it does not know.
        if (!product.Values().SourceBelowMain(name)) product.Core().GetParam(name);
        product.Core().UpdateParam(name, IsOwnDirectory(name) ? product.FilePath(value) : value);
    } catch (const EZETCheckError& error) {
        const char* remedy =
            name == "ZET_CFG" ? _("name another file with --config") : _("write one of the two");
        throw UsageError(std::string("--set: ") + FailureOf(error, remedy).what());
    }
}

}  // namespace

void AssumeParameters(HostProduct& product, const StringMap& values) {
    if (values.empty()) return;
    if (!product.Wanted().dryRun)
        throw UsageError(
            _("--set only asks what would change: use it with -n (\"option set\" sets a parameter)"));
    for (const auto& [name, value] : values)
        Assume(product, name, value);
    product.ForgetValues();
}

}  // namespace ZET::Deploy
