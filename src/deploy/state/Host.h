#ifndef ZET_DEPLOY_HOST_H
#define ZET_DEPLOY_HOST_H

#include <memory>
#include <optional>
#include <string>

#include "deploy/host/Paths.h"
#include "deploy/state/History.h"
#include "deploy/state/HostValues.h"
#include "deploy/state/Lock.h"
#include "deploy/state/StateDirectory.h"
#include "zet/ZETHost.h"
#include "zet/deploy/Observer.h"
#include "zet/deploy/Options.h"

namespace ZET::Deploy {

/// A host, as far as it can be known without the module: the core with its parameters, where the host's files
/// are, what the caller wants, and whom to tell.
class Host {
  public:
    /// Reads the parameters. A configuration file that is missing or broken throws. `observer` is told what
    /// happens as long as the object lives.
    Host(const std::string& configFile, const Options& options, Observer& observer);
    virtual ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// The main configuration file, as the caller named it.
    const std::string& ConfigFile() const { return m_configFile; }
    const Options& Wanted() const { return m_options; }
    Deploy::Role Role() const { return m_options.role; }

    /// The words that called: "zet-init commit-config".
    std::string Caller() const { return m_options.program + " " + m_options.command; }
    Observer& Out() { return m_observer; }

    /// The same, for whom he keeps from writing, or waits for.
    LockSeeker Seeker() const { return {.name = Caller(), .observer = m_observer, .own = m_ownLock}; }

    /// The lock is kept from one call to another.
    void Keeps(const WriteLock& lock) { m_ownLock = lock.Life(); }
    IZETCore& Core() { return m_core->GetCore(); }
    const Paths& HostPaths() const { return m_paths; }

    /// A parameter; those that name directories of the product are paths that can be opened.
    std::string Param(const std::string& key) { return Core().GetParam(key); }

    /// The same of one that is yes or no.
    bool Flag(const std::string& key) { return FlagOfParam(key, Param(key)).value_or(false); }

    /// Gives the core a parameter as the host's files have it.
    void UpdateParam(const std::string& key, const std::string& value);

    /// Every parameter that the core has, with its value.
    StringMap CoreParams() const { return m_core->GetParams(); }

    /// What the host's own values are, and where every value comes from.
    HostValues& Values() { return *m_values; }

    StateDirectory State() { return StateDirectory(Param("ZET_VAR_LIB_DIR")); }

    /// What was done on the host, and what the files were before.
    History& HostHistory() { return *m_history; }

    /// The path under which a file given by the caller can be opened: under the root, links followed.
    std::string FilePath(const std::string& file) const { return m_paths.Resolved(file); }

    /// Forgets what was found on the host, and reads the parameters again: for who does more than one thing
    /// with the object. They may be missing or broken by now, which throws, as in the constructor.
    virtual void BeginAnew();

    /// The directories that were found are held no more, but looked for by their names.
    void LetDirectoriesGo() { m_paths.LetGo(); }

    /// Throws `Interrupted` when a signal came, or the observer wants no more: between two files.
    void RequireGoOn();

    /// The user whose directories count as root's for this file; empty: none.
    virtual std::string TrustedAt(const std::string& /*path*/) { return ""; }

    /// Whether the text of the file is not for everybody.
    virtual bool IsPrivate(const std::string& /*path*/) { return false; }

  protected:
    CZETHost& LoadedCore() { return *m_core; }

  private:
    void ReadParameters();

    /// Without a configuration file where the caller can do without and none is there.
    std::unique_ptr<CZETHost> ReadMainFile() const;

    /// A `Failure` unless each parameter that has to names a directory: an empty one would stand for the
    /// root.
    void RequireDirectories();
    [[noreturn]] void FailOfMainFile(const std::string& key, const ZETParameterProblem& problem);

    const std::string m_configFile;
    const Options m_options;
    Observer& m_observer;
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
