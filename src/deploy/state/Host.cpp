#include "deploy/state/Host.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Signals.h"
#include "deploy/host/Words.h"
#include "deploy/state/ConfFile.h"
#include "deploy/state/ParameterCheck.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

constexpr const char* kDirectories[] = {"ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR", "ZET_VAR_LIB_DIR"};

std::string DefaultOf(const std::string& key) {
    const std::optional<ZETParameter> known = KnownParameter(key);
    return known ? known->value : "";
}

/// Refuses what no command line can ask for, but another program can.
void RequireSense(const std::string& configFile, const Options& options) {
    if (configFile.empty()) throw UsageError(_("the configuration file has no name (name a file)"));
    if (std::find(std::begin(kRoles), std::end(kRoles), options.role) == std::end(kRoles))
        throw UsageError(_("the role is neither that of a server nor that of a client"));
}

}  // namespace

Host::Host(const std::string& configFile, const Options& options, Observer& observer)
    : m_configFile(configFile), m_options(options), m_observer(observer), m_paths(options.root) {
    RequireSense(configFile, options);
    ReadParameters();
}

Observer::~Observer() = default;

Host::~Host() = default;

std::optional<std::string> Host::Expanded(const std::string& value) {
    return ExpandedValue(value, m_values->Own());
}

void Host::UpdateParam(const std::string& key, const std::string& value) {
    Core().UpdateParam(key, IsOwnDirectory(key) ? FilePath(value) : value);
}

bool Host::HasCommitted(Deploy::Role role) {
    return IsFileExist(State().Status(role));
}

void Host::BeginAnew() {
    EndCall();
    ReadParameters();
}

void Host::ReadParameters() {
    m_values.emplace(*this);
    m_history.emplace(*this);
    std::unique_ptr<CZETHost> read = ReadMainFile();
    if (m_core) {
        m_core->TakeParameters(*read);
    } else {
        m_core = std::move(read);
    }
    for (const auto& [key, directory] : m_options.directories)
        Core().UpdateParam(key, directory);
    RequireDirectories();
    m_values->TakeDefaults();
    if (!m_paths.HasRoot()) return;
    for (const char* key : kDirectories)
        UpdateParam(key, Param(key));
}

void Host::RequireGoOn() {
    SignalGuard::Check();
    if (m_observer.IsCancelled())
        throw Interrupted(
            {.text = _("was cancelled before all was done"), .remedy = _("call it again to go on")});
}

std::unique_ptr<CZETHost> Host::ReadMainFile() const {
    // Follows links, so that an option that is set goes into the real file and a link stays one.
    const std::string file = m_paths.Resolved(m_configFile);
    if (!IsFileExist(file) && StateOf(m_paths.FromInside(m_configFile)).exists) {
        throw Failure({.file = m_configFile,
                       .text = Words("is a link to %s, which is not there", file),
                       .remedy = _("correct the link, or remove it")});
    }
    if (m_options.needsConfigFile || IsFileExist(file)) return std::make_unique<CZETHost>(file);
    return std::make_unique<CZETHost>();
}

void Host::RequireDirectories() {
    for (const char* key : kDirectories) {
        const auto problem = ProblemOfParam(key, Param(key));
        if (!problem) continue;
        if (!m_options.mendsParameters) FailOfMainFile(key, *problem);
        Core().UpdateParam(key, DefaultOf(key));
    }
}

void Host::FailOfMainFile(const std::string& key, const ZETParameterProblem& problem) {
    const std::string file = Param("ZET_CFG");
    const std::vector<GivenParameter> all = GivenIn(file);
    const GivenParameter* const given = FindGiven(all, key);
    throw Failure({.file = file,
                   .line = given == nullptr ? 0 : given->line,
                   .column = given == nullptr ? 0 : given->column,
                   .text = problem.text,
                   .remedy = problem.remedy});
}

bool IsOwnDirectory(const std::string& key) {
    return std::find(std::begin(kDirectories), std::end(kDirectories), key) != std::end(kDirectories);
}

}  // namespace ZET::Deploy
