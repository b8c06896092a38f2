#ifndef ZET_ZETHOST_H
#define ZET_ZETHOST_H

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zet/IZETCore.h"
#include "zet/ZETApi.h"
#include "zet/ZETErrors.h"
#include "zet/ZETLogProvider.h"
#include "zet/ZETTypes.h"

/// What an embedder needs of the reference core beyond the contract: create it, load modules into it, find
/// their interfaces, and steer the log. Another core need not have any of it.
namespace ZET {

/// What an error of the core is about, beside its message.
struct ZETCause {
    std::string path{};    ///< of the file or directory; empty: none
    std::size_t line = 0;  ///< of the file; 0: the file as a whole
    int errorNumber = 0;   ///< the system's `errno`; 0: none
    std::string text{};    ///< what is wrong, of a message that says more than that; else empty
    std::string remedy{};  ///< where the message has one, after `text`; else empty
};

/// An error of this core that knows what it is about: of a file or directory, or of the system.
class ZET_API EZETHostError : public EZETError {
  public:
    EZETHostError(const std::string& message, const std::string& detail, const ZETCause& cause);
    ~EZETHostError() override;

    /// Valid as long as the exception.
    const ZETCause& GetCause() const noexcept;

    /// The system's `errno`; 0: none.
    int GetErrorNumber() const noexcept;

  private:
    ZETCause m_cause;
};

/// The core with the modules loaded into it. One thread at a time; several hosts may run in several threads.
/// The log, the guard of renames and syncing (the parameter "ZET_SYNC") belong to the process: its hosts
/// share them, and files are synced as long as one of the hosts wants it.
///
/// What must be let go, and when: everything that a module made (its interface, the files that it opened) is
/// used no more once the module is unloaded, and let go before the host goes, whose core it knows. Letting it
/// go late is harmless, using it is not.
class ZET_API CZETHost {
  public:
    /// Reads the parameters from `configFile`; it becomes the value of "ZET_CFG". A file that cannot be read,
    /// or a broken line in it, throws `EZETError` naming the file, the line and the remedy; an empty name,
    /// or one with a NUL byte, `EZETCheckError`.
    explicit CZETHost(const std::string& configFile);

    /// Without a configuration file: the defaults serve, and "ZET_CFG" is empty.
    CZETHost();

    /// Unloads the modules that are still loaded, as `UnloadModules`.
    ~CZETHost();
    CZETHost(const CZETHost&) = delete;
    CZETHost& operator=(const CZETHost&) = delete;

    /// The core; it lives as long as the host.
    IZETCore& GetCore();

    /// Every parameter with its value: the product's own, and those that only this host has.
    StringMap GetParams() const;

    /// From now on, the parameters are those of the other host, "ZET_CFG" included, and no others: for a file
    /// that is read again. Modules stay as they are.
    void TakeParameters(const CZETHost& other);

    /// Loads a module and initialises it. An empty path throws `EZETCheckError`. Every other refusal is an
    /// `EZETError` that names the file and what is wrong with it: a NUL byte in the path; not there, no
    /// regular file or no shared object; it or its directory writable by others than root while root runs it;
    /// an entry point or the record missing; a record of another type, without a name, or of another major
    /// version than 1; a module of that name loaded already, or this file into another host of the process,
    /// since a module keeps one state and serves one host at a time; an interface of the same name there
    /// already; no interface registered; `module_init` false; or an exception of the module. A module that is
    /// refused after its `module_init` was true is ended by `module_done`; before that it is only closed.
    void LoadModule(const std::string& path);

    /// The interface of that name, shared with the caller; null when no module registered it. The caller lets
    /// it go before the module is unloaded.
    std::shared_ptr<CZETInterface> FindInterface(const std::string& name) const;

    /// Ends all modules, the last one loaded first: `module_done`, then the core's shared pointers. Other
    /// hosts may load them then. An interface that somebody still holds is warned of. The code of a module
    /// stays in memory to the end of the process, since something of it may still be held.
    void UnloadModules();

  private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

/// What the values of a parameter have to be.
enum class ZETParameterKind {
    DomainName,  ///< a "." may stand before it
    HostName,
    Realm,
    LdapName,
    Number,
    Duration,  ///< as the lives of Kerberos tickets are written
    RegularExpression,
    AbsolutePath,
    YesNo,
    Locale,  ///< of this host
    OneOf,   ///< some words
};

/// A parameter that the core knows.
struct ZETParameter {
    std::string name;
    ZETParameterKind kind = ZETParameterKind::OneOf;
    std::string kindName;            ///< in English, as the manual has it: "number", or "one of nfs4, nfs"
    std::vector<std::string> words;  ///< those to choose from; empty where the kind is not about words
    std::string value;               ///< by default; empty where it is made of another parameter
    std::string source;              ///< the parameter that the default is made of; empty: none
    std::string text;                ///< what it is for, in one line
    bool mayBeEmpty = false;         ///< as far as no template uses it
};

/// The parameters that the core knows, in the order of their names. A file may give others, which the core
/// hands out like these.
ZET_API std::vector<ZETParameter> KnownParameters();

/// One of them; none: the core does not know the name.
ZET_API std::optional<ZETParameter> KnownParameter(std::string_view name);

/// Whether it is one of them.
ZET_API bool IsKnownParameter(std::string_view name);

struct ZETParameterProblem {
    std::string text;    ///< what is wrong, and with which parameter
    std::string remedy;  ///< what to do about it
};

/// What is wrong with a parameter of this name and value, for a program that would rather refuse it than have
/// the core hand it out or the file be broken; none when nothing is that the core knows of. A known parameter
/// has a value of its kind, or one with a placeholder that a template replaces.
ZET_API std::optional<ZETParameterProblem> ProblemOfParam(const std::string& key, const std::string& value);

/// What a value of a parameter that is yes or no counts as, be it written as true or false, 1 or 0; as its
/// default, where it says neither. None: the core knows no such parameter that is yes or no.
ZET_API std::optional<bool> FlagOfParam(const std::string& key, const std::string& value);

enum class ZETLogTarget { StandardError, SystemLog };

/// Where log records go, and which: those up to `threshold` (`ZETLogError` only errors, `ZETLogNotice` all).
/// `identity` stands before each record. By any thread, at any time. Until it is called, errors and warnings
/// go to standard error, those of a thread that has an observer of its own to that alone.
ZET_API void ConfigureLog(ZETLogTarget target, ZETLogLevel threshold, const std::string& identity);

/// Shows the records up to `threshold` from now on, and returns the threshold of before. By any thread, at
/// any time.
ZET_API ZETLogLevel SetLogThreshold(ZETLogLevel threshold);

/// Whether a record that the threshold lets through is shown.
using ZETLogFilter = std::function<bool(ZETLogLevel level)>;

/// The filter of every record from now on; an empty one shows all. Returns the one of before. A host that
/// keeps something to itself finds out whether a record is about it when there is one. By any thread, at any
/// time; called by the thread that logs, and asked again about what it logs itself.
ZET_API ZETLogFilter SetLogFilter(ZETLogFilter filter);

/// Sees each record that is shown, beside the place where it goes, as it stands there.
using ZETLogObserver = std::function<void(ZETLogLevel level, const std::string& text)>;

/// The observer of every record from now on; an empty one ends that. By any thread, at any time; the observer
/// is called by the thread that logs, one record at a time. It must not log, nor configure the log.
ZET_API void SetLogObserver(ZETLogObserver observer);

/// The observer of the records of the calling thread alone, as long as it is one; null: none. It must live as
/// long, and may log itself, of which it sees nothing. Returns the one of before.
ZET_API const ZETLogObserver* SetThreadLogObserver(const ZETLogObserver* observer);

/// Gives each record its last words, before it is made printable, observed and written.
using ZETLogWording = std::function<std::string(const std::string& text)>;

/// The wording of every record from now on; an empty one ends that. Returns the one of before. A host that
/// works on a file by another name than its reader knows puts the reader's name back. By any thread, at any
/// time; called as the observer is, and bound as it is.
ZET_API ZETLogWording SetLogWording(ZETLogWording wording);

/// Calls `make`, which makes a message, while the language of whoever reads messages is set.
using ZETReadersLanguage = void (*)(const std::function<void()>& make);

/// How each message of the core is made from now on; null: in the language that is set. Returns how it was
/// before. A host that has a file written in another language than its reader's sets one meanwhile. By any
/// thread, at any time; called by the thread whose call the message is about.
ZET_API ZETReadersLanguage MakeMessagesBy(ZETReadersLanguage language);

/// A rename that is about to be made.
struct ZETRename {
    const std::string& from;
    const std::string& to;
    /// Open for reading on the file that is about to get the name `to`, at its start; `RenameFile` renames
    /// this file or none. -1 when it is no regular file, or this user may not read it. Not to be closed.
    int descriptor;
    /// False when nothing was done to either file yet; true when all is done but the rename itself.
    bool isReady;
};

/// Sees a file that is about to take the place of another, before anything is done to either. Its exception
/// keeps the rename from being made, and comes out of `RenameFile`.
using ZETRenameGuard = std::function<void(const ZETRename& rename)>;

/// The guard of every `RenameFile` from now on; an empty one ends that. Returns the one of before. The guard
/// is called by the thread that renames. Not to be set from within a guard, nor while another thread may
/// rename.
ZET_API ZETRenameGuard SetRenameGuard(ZETRenameGuard guard);

/// For a host that gives each file its owner and group itself, after the calling thread was kept to another
/// user's rights: that a file could not get them is no warning from now on. Set-user-ID and set-group-ID are
/// left out all the same. Until it is called, it is one. Returns how it was before.
ZET_API bool LeaveOwnersToHost(bool areLeft);

/// Whether `CopyFile` might have made its copy for `to` under this name, on the way to `to`: that with "."
/// and six letters or digits and ".tmp" added, cut before the "." where it would be too long. Both have the
/// same directory before them, or none. A process that was killed leaves such a copy behind.
ZET_API bool IsCopyOf(const std::string& name, const std::string& to);

/// Many files that the calling thread writes, with fewer syncs and the same promise for each: old or new, and
/// a reserve whole or not there. First come all reserves: until `NameFiles`, what `CopyFile` and `CreateFile`
/// make waits to be synced by several threads at once, a copy under a name of its own. Then come the saves,
/// of which each text is durable before its name, as without a batch; only directories are synced once, at
/// the end. One batch at a time in a thread.
class ZET_API CZETBatch {
  public:
    CZETBatch();

    /// What waits for its name is removed. What is done is made durable; nobody is told when that fails.
    ~CZETBatch();
    CZETBatch(const CZETBatch&) = delete;
    CZETBatch& operator=(const CZETBatch&) = delete;

    /// What comes next is about this file, as its reader knows it: messages name it and its directory so.
    void SetSubject(const std::string& path);

    /// Makes what waits durable and gives it its names, durable too. Throws `EZETError`; what has no name by
    /// then never gets one.
    void NameFiles();

    /// All that was done is durable now. Throws `EZETError`.
    void Finish();

    class Implementation;

  private:
    std::unique_ptr<Implementation> m_implementation;
};

/// How many records of level 0 the process has put so far, shown or not: the module reports some failures
/// only so.
ZET_API std::size_t CountLoggedErrors();

}  // namespace ZET

#endif
