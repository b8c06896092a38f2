#include "deploy/state/HostProduct.h"

#include <algorithm>
#include <iterator>

#include "deploy/host/Failure.h"
#include "deploy/host/Installed.h"
#include "deploy/host/Signals.h"
#include "deploy/state/Instructions.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

constexpr char kInterfaceName[] = "zet-config";
constexpr const char* kDirectories[] = {"ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR", "ZET_VAR_LIB_DIR"};

std::string DefaultOf(const std::string& key) {
    for (const ZETParameter& parameter : KnownParameters())
        if (parameter.name == key) return parameter.value;
    return "";
}

}  // namespace

HostProduct::HostProduct(const std::string& configFile, const Options& options, Observer& observer)
    : m_configFile(configFile),
      m_options(options),
      m_observer(observer),
      m_moduleFile(options.moduleFile.empty() ? OwnModule() : options.moduleFile),
      m_paths(options.root) {
    StartHost();
    RequireDirectories();
    if (m_paths.HasRoot()) {
        for (const char* key : kDirectories) {
            Core().UpdateParam(key, m_paths.Resolved(Core().GetParam(key)));
        }
    }
    // Its code runs as soon as it is loaded.
    if (const std::optional<Problem> problem = CheckWayTo(ModulePaths(), ModuleFile()))
        throw Failure(problem->Describe());
    LoadModule();
}

Observer::~Observer() = default;

HostProduct::~HostProduct() = default;

void HostProduct::RequireGoOn() {
    SignalGuard::Check();
    if (m_observer.IsCancelled())
        throw Interrupted("was cancelled before all was done (call it again to go on)");
}

void HostProduct::StartHost() {
    // Links followed, so that an option that is set goes into the real file and a link stays one.
    const std::string file = m_paths.Resolved(m_configFile);
    m_host = m_options.needsConfigFile || IsFileExist(file) ? std::make_unique<CZETHost>(file)
                                                            : std::make_unique<CZETHost>();
}

void HostProduct::LoadModule() {
    try {
        m_host->LoadModule(ModuleFile());
    } catch (const EZETError& error) {
        std::string text = error.GetMessage();
        if (text.ends_with('.')) text.pop_back();
        throw Failure(text + " (install the product again, or name its module with --module)");
    }
    m_config = std::dynamic_pointer_cast<IZETConfig>(m_host->FindInterface(kInterfaceName));
    if (!m_config) {
        throw Failure("the module registered no interface \"zet-config\" (name the right one with --module)");
    }
}

void HostProduct::RequireDirectories() {
    for (const char* key : kDirectories) {
        const auto problem = ProblemOfParam(key, Param(key));
        if (!problem) continue;
        if (!m_options.mendsParameters)
            throw Failure(Problem{Param("ZET_CFG"), 0, 0, problem->text, problem->remedy}.Describe());
        Core().UpdateParam(key, DefaultOf(key));
    }
}

bool IsOwnDirectory(const std::string& key) {
    return std::find(std::begin(kDirectories), std::end(kDirectories), key) != std::end(kDirectories);
}

}  // namespace ZET::Deploy
