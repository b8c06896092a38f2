#include "Session.h"

#include <unistd.h>

#include <climits>
#include <clocale>

#include "ExitStatus.h"

namespace ZET {

namespace {

constexpr char kInterfaceName[] = "zet-config";

/// The module that belongs to the program, wherever both are installed.
std::string OwnModule() {
    char program[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program);
    if (length <= 0) throw Failure("the program cannot find its own place (name the module with --module)");
    const std::string path(program, static_cast<std::size_t>(length));
    return DirectoryOf(DirectoryOf(path)) + "/lib/zet/libzet-config.so";
}

ZETLogLevel Threshold(const Request& request) {
    if (request.quiet) return ZETLogError;
    return request.verbose ? ZETLogNotice : ZETLogWarning;
}

}  // namespace

Session::Session(const Request& request, Report& report)
    : m_request(request), m_report(report), m_paths(request.root) {
    ConfigureLog(request.log == "syslog" ? ZETLogTarget::SystemLog : ZETLogTarget::StandardError,
                 Threshold(request), request.program);
    m_host = std::make_unique<CZETHost>(m_paths.HasRoot() ? m_paths.Resolved(request.configFile)
                                                          : request.configFile);
    if (m_paths.HasRoot()) {
        for (const char* key : {"ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR", "ZET_VAR_LIB_DIR"}) {
            Core().UpdateParam(key, m_paths.Resolved(Core().GetParam(key)));
        }
    }
    m_host->LoadModule(request.moduleFile.empty() ? OwnModule() : request.moduleFile);
    m_config = std::dynamic_pointer_cast<IZETConfig>(m_host->FindInterface(kInterfaceName));
    if (!m_config) {
        throw Failure("the module registered no interface \"zet-config\" (name the right one with --module)");
    }
}

Session::~Session() = default;

ParamOverride::ParamOverride(IZETCore& core, const std::string& key, const std::string& value)
    : m_core(core), m_key(key), m_former(core.GetParam(key)) {
    m_core.UpdateParam(key, value);
}

ParamOverride::~ParamOverride() {
    m_core.UpdateParam(m_key, m_former);
}

WrittenLanguage::WrittenLanguage(IZETCore& core) : m_former(setlocale(LC_MESSAGES, nullptr)) {
    setlocale(LC_MESSAGES, core.GetParam("ZET_LANG").c_str());
}

WrittenLanguage::~WrittenLanguage() {
    setlocale(LC_MESSAGES, m_former.c_str());
}

}  // namespace ZET
