#ifndef ZET_SESSION_H
#define ZET_SESSION_H

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "cli/Report.h"
#include "cli/Request.h"
#include "deploy/host/Paths.h"
#include "zet/IZETConfig.h"
#include "zet/ZETHost.h"

namespace ZET {

class HostLists;
class Secrets;

/// One run of a command: the core with the module loaded into it, and what the caller asked for.
class Session {
  public:
    /// Reads the parameters and loads the module. A configuration file or module that is missing or broken
    /// throws.
    Session(const Request& request, Report& report);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const Request& Asked() const { return m_request; }
    const std::string& Role() const { return m_request.role; }
    Report& Out() { return m_report; }
    IZETConfig& Config() { return *m_config; }
    IZETCore& Core() { return m_host->GetCore(); }
    const Paths& HostPaths() const { return m_paths; }
    const std::string& ModuleFile() const { return m_moduleFile; }
    HostLists& Lists() { return *m_lists; }
    Secrets& HostSecrets() { return *m_secrets; }

    /// A parameter; those that name directories of the product are paths that can be opened.
    std::string Param(const std::string& key) { return Core().GetParam(key); }

    /// Every parameter with its value.
    StringMap Params() const { return m_host->GetParams(); }

    /// The path under which a file given by the caller can be opened: under the root, links followed.
    std::string FilePath(const std::string& file) const { return m_paths.Resolved(file); }

  private:
    /// The log's warnings and errors are in the document, too.
    class LogInReport {
      public:
        explicit LogInReport(Report& report);
        ~LogInReport();
        LogInReport(const LogInReport&) = delete;
        LogInReport& operator=(const LogInReport&) = delete;
    };

    /// Without a configuration file where the command can do without and none is there.
    void StartHost();
    void LoadModule(const std::string& file);

    const Request& m_request;
    Report& m_report;
    LogInReport m_logInReport;
    Paths m_paths;
    std::string m_moduleFile;
    std::unique_ptr<CZETHost> m_host;
    std::shared_ptr<IZETConfig> m_config;
    std::unique_ptr<HostLists> m_lists;
    std::unique_ptr<Secrets> m_secrets;
};

/// Counts the failures that the module reported to the log only, from its creation on.
class LoggedFailures {
  public:
    LoggedFailures() : m_before(CountLoggedErrors()) {}
    bool Any() const { return CountLoggedErrors() != m_before; }

  private:
    std::size_t m_before;
};

/// For as long as the object lives, the log shows records up to `threshold` at most: what is done in trial on
/// files that nobody knows is not told.
class QuietLog {
  public:
    QuietLog(const Request& request, ZETLogLevel threshold);
    ~QuietLog();
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

  private:
    const Request& m_request;
};

/// Gives a parameter of the core another value for as long as the object lives.
class ParamOverride {
  public:
    ParamOverride(IZETCore& core, const std::string& key, const std::string& value);
    ~ParamOverride();
    ParamOverride(const ParamOverride&) = delete;
    ParamOverride& operator=(const ParamOverride&) = delete;

  private:
    IZETCore& m_core;
    std::string m_key;
    std::string m_former;
};

/// A `Failure` unless `core`, made from the configuration file `file`, names a directory with each parameter
/// that has to: an empty one would stand for the root.
void RequireDirectories(IZETCore& core, const std::string& file);

/// A `Failure` when the host does not have what the parameter "ZET_LANG" asks for with this value.
void RequireLanguage(const std::string& language);

/// From now on, messages are in the language of whoever runs the command.
void UseReadersLanguage();

/// For as long as the object lives, messages are in the language of the parameter "ZET_LANG": what is written
/// into a file does not depend on who runs the command. A language that the host does not have is a
/// `Failure`.
class WrittenLanguage {
  public:
    explicit WrittenLanguage(IZETCore& core);
    ~WrittenLanguage();
    WrittenLanguage(const WrittenLanguage&) = delete;
    WrittenLanguage& operator=(const WrittenLanguage&) = delete;

  private:
    std::map<int, std::string> m_former;  ///< the locale of each category
    std::optional<std::string> m_formerPreference;
};

}  // namespace ZET

#endif
