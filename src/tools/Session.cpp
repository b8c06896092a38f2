#include "Session.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>

#include "ExitStatus.h"
#include "HostLists.h"
#include "Installed.h"
#include "Instructions.h"
#include "Secrets.h"
#include "zet/ZETErrors.h"
#include "zet/ZETFiles.h"

namespace ZET {

namespace {

constexpr char kInterfaceName[] = "zet-config";
constexpr char kPreference[] = "LANGUAGE";
constexpr const char* kDirectories[] = {"ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR", "ZET_VAR_LIB_DIR"};

ZETLogLevel Threshold(const Request& request) {
    if (request.quiet) return ZETLogError;
    return request.verbose ? ZETLogNotice : ZETLogWarning;
}

void StartLog(const Request& request, ZETLogLevel threshold) {
    ConfigureLog(request.log == "syslog" ? ZETLogTarget::SystemLog : ZETLogTarget::StandardError, threshold,
                 request.program);
}

/// What a text is in: its language, and how the letters are encoded. Without the second, all that is not
/// ASCII would be lost.
constexpr int kTextCategories[] = {LC_CTYPE, LC_MESSAGES};
constexpr int kTextMask = LC_CTYPE_MASK | LC_MESSAGES_MASK;

/// To the system, an empty name is the language of whoever runs the command.
std::string LocaleName(const std::string& language) {
    return language.empty() ? "C" : language;
}

[[noreturn]] void FailLanguage(const std::string& language) {
    throw Failure("ZET_LANG: this host has no locale \"" + language +
                  "\" (generate it, or set ZET_LANG to one that \"locale -a\" lists)");
}

}  // namespace

Session::LogInReport::LogInReport(Report& report) {
    SetLogObserver([&report](ZETLogLevel level, const std::string& text) {
        if (level == ZETLogError) report.Add("errors", text);
        if (level == ZETLogWarning) report.Add("warnings", text);
    });
}

Session::LogInReport::~LogInReport() {
    SetLogObserver({});
}

Session::Session(const Request& request, Report& report)
    : m_request(request), m_report(report), m_logInReport(report), m_paths(request.root) {
    StartLog(request, Threshold(request));
    StartHost();
    RequireDirectories(Core(), Param("ZET_CFG"));
    if (m_paths.HasRoot()) {
        for (const char* key : kDirectories) {
            Core().UpdateParam(key, m_paths.Resolved(Core().GetParam(key)));
        }
    }
    m_moduleFile = request.moduleFile.empty() ? OwnModule() : request.moduleFile;
    // Its code runs as soon as it is loaded.
    if (const std::optional<Problem> problem = CheckWayTo(Paths(""), m_moduleFile))
        throw Failure(problem->Describe());
    LoadModule(m_moduleFile);
    m_config = std::dynamic_pointer_cast<IZETConfig>(m_host->FindInterface(kInterfaceName));
    if (!m_config) {
        throw Failure("the module registered no interface \"zet-config\" (name the right one with --module)");
    }
    m_lists = std::make_unique<HostLists>(*this);
    m_secrets = std::make_unique<Secrets>(*this);
}

Session::~Session() = default;

void Session::StartHost() {
    // Links followed, so that an option that is set goes into the real file and a link stays one.
    const std::string file = m_paths.Resolved(m_request.configFile);
    const bool isNeeded = m_request.needsConfigFile || m_request.isConfigFileNamed;
    m_host = isNeeded || IsFileExist(file) ? std::make_unique<CZETHost>(file) : std::make_unique<CZETHost>();
}

void Session::LoadModule(const std::string& file) {
    try {
        m_host->LoadModule(file);
    } catch (const EZETError& error) {
        std::string text = error.GetMessage();
        if (text.ends_with('.')) text.pop_back();
        throw Failure(text + " (install the product again, or name its module with --module)");
    }
}

QuietLog::QuietLog(const Request& request, ZETLogLevel threshold) : m_request(request) {
    StartLog(request, std::min(threshold, Threshold(request)));
}

QuietLog::~QuietLog() {
    StartLog(m_request, Threshold(m_request));
}

ParamOverride::ParamOverride(IZETCore& core, const std::string& key, const std::string& value)
    : m_core(core), m_key(key), m_former(core.GetParam(key)) {
    m_core.UpdateParam(key, value);
}

ParamOverride::~ParamOverride() {
    m_core.UpdateParam(m_key, m_former);
}

void RequireDirectories(IZETCore& core, const std::string& file) {
    for (const char* key : kDirectories) {
        const std::string directory = core.GetParam(key);
        if (directory.empty())
            throw Failure(file + ": " + key + " is empty (give it a directory, or remove its line)");
        if (!directory.starts_with('/')) {
            throw Failure(file + ": " + key + " is \"" + directory +
                          "\", which depends on where the command runs (begin it with \"/\")");
        }
    }
}

void RequireLanguage(const std::string& language) {
    const locale_t locale = newlocale(kTextMask, LocaleName(language).c_str(), nullptr);
    if (locale == nullptr) FailLanguage(language);
    freelocale(locale);
}

void UseReadersLanguage() {
    for (const int category : kTextCategories)
        setlocale(category, "");
}

WrittenLanguage::WrittenLanguage(IZETCore& core) {
    const std::string language = core.GetParam("ZET_LANG");
    try {
        RequireLanguage(language);
    } catch (const Failure& failure) {
        throw Failure(core.GetParam("ZET_CFG") + ": " + failure.what());
    }
    for (const int category : kTextCategories)
        m_former[category] = setlocale(category, nullptr);
    // The reader's list of preferred languages would win over the one that is set.
    if (const char* preference = std::getenv(kPreference)) m_formerPreference = preference;
    unsetenv(kPreference);
    for (const int category : kTextCategories)
        setlocale(category, LocaleName(language).c_str());
}

WrittenLanguage::~WrittenLanguage() {
    if (m_formerPreference) setenv(kPreference, m_formerPreference->c_str(), 1);
    for (const auto& [category, locale] : m_former)
        setlocale(category, locale.c_str());
}

}  // namespace ZET
