#include "deploy/state/HostProduct.h"

#include <cerrno>

#include "deploy/host/Failure.h"
#include "deploy/host/Installed.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/ParameterCheck.h"
#include "zet/ZETErrors.h"

namespace ZET::Deploy {

namespace {

constexpr char kInterfaceName[] = "zet-config";

}  // namespace

HostProduct::HostProduct(const std::string& configFile, const Options& options, Observer& observer)
    : Host(configFile, options, observer),
      m_moduleFile(options.moduleFile.empty() ? OwnModule() : options.moduleFile) {
    // A module's code runs as soon as it is loaded; that of the program itself runs already.
    if (!HasBuiltInModule()) {
        if (const std::optional<Problem> problem = CheckWayTo(ModulePaths(), ModuleFile()))
            throw Failure(*problem);
    }
    LoadModule();
}

StringMap& HostProduct::TemplateValues() {
    if (!m_templateValues) {
        m_templateValues = Config().TemplatesValues();
        m_templateValues->insert(Values().Own().begin(), Values().Own().end());
    }
    return *m_templateValues;
}

std::optional<std::string> HostProduct::Expanded(const std::string& value) {
    return ExpandedValue(value, TemplateValues());
}

void HostProduct::ForgetValues() {
    Values().Forget();
    m_templateValues.reset();
    Config().RecreateTemplatesMap();
}

void HostProduct::BeginAnew() {
    m_ownPaths.LetGo();
    Host::BeginAnew();
    ForgetValues();
}

void HostProduct::LoadModule() {
    try {
        LoadedCore().LoadModule(ModuleFile());
    } catch (const EZETError& error) {
        if (ErrorNumberOf(error) == EMFILE) throw FailureOf(error);
        throw FailureWith(error, _("install the product again, or name its module with --module"));
    }
    m_config = std::dynamic_pointer_cast<IZETConfig>(LoadedCore().FindInterface(kInterfaceName));
    if (!m_config) {
        throw Failure({.file = ModuleFile(),
                       .text = _("the module registered no interface \"zet-config\""),
                       .remedy = _("name the right one with --module"),
                       .textNamesFile = true});
    }
}

}  // namespace ZET::Deploy
