#ifndef ZET_DEPLOY_HOST_H
#define ZET_DEPLOY_HOST_H

#include <memory>
#include <optional>
#include <string>

#include "deploy/host/Paths.h"
#include "deploy/host/WarnsOnce.h"
#include "deploy/state/History.h"
#include "deploy/state/HostValues.h"
#include "deploy/state/Lock.h"
#include "deploy/state/StateDirectory.h"
#include "zet/ZETHost.h"
#include "zet/deploy/Observer.h"
#include "zet/deploy/Options.h"

namespace ZET::Deploy {

/// A host, as far as it can be known without the module: the core with its parameters, where the host's files
/// are, what the caller wants, and whom to report to.
class Host {
  public:
    /// Reads the parameters. Throws if the configuration file is broken, or missing though it is needed.
    /// Reports to `observer` as long as the object lives.
    Host(const std::string& configFile, const Options& options, Observer& observer);
    virtual ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// The main configuration file, as the caller named it.
    const std::string& ConfigFile() const { return m_configFile; }
    const Options& Wanted() const { return m_options; }
    Deploy::Role Role() const { return m_options.role; }

    /// The program and its command, such as "zet-init commit-config".
    std::string Caller() const { return m_options.program + " " + m_options.command; }

    /// Gets each warning of a call once.
    Observer& Out() { return m_observer; }

    /// Identifies this caller when it asks for the lock.
    LockSeeker Seeker() { return {.name = Caller(), .observer = m_observer, .own = m_ownLock}; }

    /// From now on the caller holds the lock, also between calls.
    void Keeps(const WriteLock& lock) { m_ownLock = lock.Life(); }
    IZETCore& Core() { return m_core->GetCore(); }
    const Paths& HostPaths() const { return m_paths; }

    /// The value of a parameter. Those that name directories of the product are paths that can be opened.
    std::string Param(const std::string& key) { return Core().GetParam(key); }

    /// The same for a parameter that is yes or no.
    bool Flag(const std::string& key) { return FlagOfParam(key, Param(key)).value_or(false); }

    /// The value as a template expands it; none if a placeholder in it has no value or no end.
    virtual std::optional<std::string> Expanded(const std::string& value);

    /// Gives the core a parameter with the value that it has in the host's files.
    void UpdateParam(const std::string& key, const std::string& value);

    /// Every parameter that the core has, with its value.
    StringMap CoreParams() const { return m_core->GetParams(); }

    /// The host's own values, and where each value comes from.
    HostValues& Values() { return *m_values; }

    StateDirectory State() { return StateDirectory(Param("ZET_VAR_LIB_DIR")); }

    /// The last resort for a `Staging`. Empty for a dry run, which writes into no directory of the product.
    std::string StagingPlace() { return m_options.dryRun ? "" : State().Path(); }

    /// Whether the role has committed on this host.
    bool HasCommitted(Deploy::Role role);

    /// What was done on the host, and what the files were before.
    History& HostHistory() { return *m_history; }

    /// The path under which a file named by the caller can be opened: under the root, following links.
    std::string FilePath(const std::string& file) const { return m_paths.Resolved(file); }

    /// Forgets what was found on the host, and reads the parameters again: for callers that do more than one
    /// thing with the object. Throws as the constructor does.
    virtual void BeginAnew();

    /// Closes the directories that were found, which are looked up by their names again, and forgets which
    /// warnings were reported.
    void EndCall() {
        m_paths.LetGo();
        m_observer.Forget();
    }

    /// Throws `Interrupted` if a signal came or the observer cancels. For use between two files.
    void RequireGoOn();

    /// The user whose directories count as root's for this file; empty if there is none.
    virtual std::string TrustedAt(const std::string& /*path*/) { return ""; }

    /// Whether the text of the file is not meant for everybody.
    virtual bool IsPrivate(const std::string& /*path*/) { return false; }

  protected:
    CZETHost& LoadedCore() { return *m_core; }

  private:
    void ReadParameters();

    /// If there is no configuration file and the caller can do without, the core has its defaults.
    std::unique_ptr<CZETHost> ReadMainFile() const;

    /// Throws a `Failure` if a parameter does not name a directory as it has to, since an empty one would
    /// stand for the root. A caller that mends parameters gets the default instead.
    void RequireDirectories();
    [[noreturn]] void FailOfMainFile(const std::string& key, const ZETParameterProblem& problem);

    const std::string m_configFile;
    const Options m_options;
    WarnsOnce m_observer;
    Paths m_paths;
    std::unique_ptr<CZETHost> m_core;
    std::weak_ptr<const void> m_ownLock;
    std::optional<HostValues> m_values;
    std::optional<History> m_history;
};

/// Whether the parameter names a directory of the product's own.
bool IsOwnDirectory(const std::string& key);

}  // namespace ZET::Deploy

#endif
