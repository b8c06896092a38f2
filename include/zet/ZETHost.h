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

/// What an embedder needs of the reference core beyond the contract: to create it, load modules into it, find
/// their interfaces, and control the log. Another core need not provide any of it.
namespace ZET {

/// What an error of the core is about, apart from its message.
struct ZETCause {
    std::string path{};    ///< of the file or directory; empty if none
    std::size_t line = 0;  ///< in the file; 0 for the file as a whole
    int errorNumber = 0;   ///< the system's `errno`; 0 if none
    std::string text{};    ///< what is wrong, if the message says more than that; else empty
    std::string remedy{};  ///< the remedy that follows `text` in the message; empty if none
};

/// An error of this core that records its cause: a file or directory, or a failed system call.
class ZET_API EZETHostError : public EZETError {
  public:
    EZETHostError(const std::string& message, const std::string& detail, const ZETCause& cause);
    ~EZETHostError() override;

    /// Valid as long as the exception.
    const ZETCause& GetCause() const noexcept;

    /// The system's `errno`; 0 if none.
    int GetErrorNumber() const noexcept;

  private:
    ZETCause m_cause;
};

/// The core with the modules loaded into it. A host is used by one thread at a time; several hosts may run in
/// several threads. The log, the rename guard and syncing (the parameter "ZET_SYNC") belong to the process:
/// its hosts share them, and files are synced as long as one of the hosts wants it.
///
/// Objects that a module made (its interface, the files that it opened) must not be used once the module is
/// unloaded, and must be released before the host is destroyed, because they refer to its core. Releasing
/// them after the unloading is harmless; using them is not.
class ZET_API CZETHost {
  public:
    /// Reads the parameters from `configFile`, which becomes the value of "ZET_CFG". A file that cannot be
    /// read, or a broken line in it, throws `EZETError` naming the file, the line and the remedy; an empty
    /// name, or one with a NUL byte, throws `EZETCheckError`.
    explicit CZETHost(const std::string& configFile);

    /// Without a configuration file: every parameter has its default, and "ZET_CFG" is empty.
    CZETHost();

    /// Unloads the modules that are still loaded, as `UnloadModules`.
    ~CZETHost();
    CZETHost(const CZETHost&) = delete;
    CZETHost& operator=(const CZETHost&) = delete;

    /// The core; it lives as long as the host.
    IZETCore& GetCore();

    /// Every parameter with its value: the product's own, and those that only this host has.
    StringMap GetParams() const;

    /// Replaces all parameters, "ZET_CFG" included, by those of the other host: for a file that is read
    /// again. Modules stay as they are.
    void TakeParameters(const CZETHost& other);

    /// Loads a module and initialises it. An empty path throws `EZETCheckError`. Every other refusal is an
    /// `EZETError` that names the file and what is wrong with it: a NUL byte in the path; a file that is
    /// missing, not regular or not a shared object; a file or directory that others than root may write,
    /// while root runs it; a missing entry point or record; a record of another type, without a name, or of
    /// another major version than 1; a module of that name that is already loaded, or this file loaded into
    /// another host of the process, since a module keeps one state and serves one host at a time; an
    /// interface name that is already taken; no interface registered; `module_init` returning false; or an
    /// exception of the module. If `module_init` had returned true, a refused module is ended by
    /// `module_done`; otherwise it is only closed.
    void LoadModule(const std::string& path);

    /// The interface of that name, shared with the caller; null if no module registered it. The caller must
    /// release it before the module is unloaded.
    std::shared_ptr<CZETInterface> FindInterface(const std::string& name) const;

    /// Ends all modules, the last one loaded first: calls `module_done`, then drops the core's shared
    /// pointers. Other hosts may then load them. Logs a warning for an interface that is still held
    /// elsewhere. The code of a module stays in memory until the process ends, since objects of it may still
    /// be held.
    void UnloadModules();

  private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

/// What values a parameter takes.
enum class ZETParameterKind {
    DomainName,  ///< a "." may precede it
    HostName,
    Realm,
    LdapName,
    Number,
    Duration,  ///< as lifetimes of Kerberos tickets are written
    RegularExpression,
    AbsolutePath,
    YesNo,
    Locale,  ///< of this host
    OneOf,   ///< one of a list of words
};

/// A parameter that the core knows.
struct ZETParameter {
    std::string name;
    ZETParameterKind kind = ZETParameterKind::OneOf;
    std::string kindName;            ///< in English, as in the manual: "number", or "one of nfs4, nfs"
    std::vector<std::string> words;  ///< the words to choose from; empty for other kinds
    std::string value;               ///< the default; empty if it is derived from another parameter
    std::string source;              ///< the parameter that the default is derived from; empty if none
    std::string text;                ///< its purpose, in one line
    bool mayBeEmpty = false;         ///< may be empty as long as no template uses it
};

/// The parameters that the core knows, ordered by name. A file may set others, which the core hands out in
/// the same way.
ZET_API std::vector<ZETParameter> KnownParameters();

/// The parameter of that name; none if the core does not know it.
ZET_API std::optional<ZETParameter> KnownParameter(std::string_view name);

/// Whether the core knows a parameter of that name.
ZET_API bool IsKnownParameter(std::string_view name);

struct ZETParameterProblem {
    std::string text;    ///< what is wrong, and with which parameter
    std::string remedy;  ///< what to do about it
};

/// What is wrong with a parameter of this name and value, as far as the core knows; none if nothing is. For a
/// program that wants to refuse it before the core hands it out or the file breaks. A known parameter must
/// have a value of its kind, or one with a placeholder that a template replaces.
ZET_API std::optional<ZETParameterProblem> ProblemOfParam(const std::string& key, const std::string& value);

/// What a value of a yes-or-no parameter means, whether written as yes or no, true or false, 1 or 0; its
/// default if the value says neither. None if the core knows no such yes-or-no parameter.
ZET_API std::optional<bool> FlagOfParam(const std::string& key, const std::string& value);

enum class ZETLogTarget { StandardError, SystemLog };

/// Sets where log records go, and which: those up to `threshold` (`ZETLogError`: only errors, `ZETLogNotice`:
/// all). `identity` precedes each record. May be called by any thread at any time. Until then, errors and
/// warnings go to standard error; those of a thread that has its own observer go to that observer only.
ZET_API void ConfigureLog(ZETLogTarget target, ZETLogLevel threshold, const std::string& identity);

/// Shows the records up to `threshold` from now on, and returns the previous threshold. May be called by any
/// thread at any time.
ZET_API ZETLogLevel SetLogThreshold(ZETLogLevel threshold);

/// Returns whether to show a record that the threshold lets through.
using ZETLogFilter = std::function<bool(ZETLogLevel level)>;

/// Sets the filter for every record from now on and returns the previous one; an empty filter shows all. A
/// host that keeps certain records back decides on each one as it is logged. May be called by any thread at
/// any time. The filter is called by the thread that logs, and again for what it logs itself.
ZET_API ZETLogFilter SetLogFilter(ZETLogFilter filter);

/// Called with each record that is shown, in the form in which it is written, in addition to its target.
using ZETLogObserver = std::function<void(ZETLogLevel level, const std::string& text)>;

/// Sets the observer of every record from now on; an empty one ends that. May be called by any thread at any
/// time. The observer is called by the thread that logs, one record at a time. It must neither log nor
/// configure the log.
ZET_API void SetLogObserver(ZETLogObserver observer);

/// Sets the observer of the calling thread's records alone and returns the previous one; null ends that. It
/// must live until it is replaced. It may log, but does not see its own records.
ZET_API const ZETLogObserver* SetThreadLogObserver(const ZETLogObserver* observer);

/// Returns the final wording of a record, before it is made printable, observed and written.
using ZETLogWording = std::function<std::string(const std::string& text)>;

/// Sets the wording for every record from now on and returns the previous one; an empty one ends that. A host
/// that works on a file under another name than the user's puts the user's name back. May be called by any
/// thread at any time. It is called like the observer, under the same restrictions.
ZET_API ZETLogWording SetLogWording(ZETLogWording wording);

/// Calls `make`, which composes a message, with the language of the user set.
using ZETReadersLanguage = void (*)(const std::function<void()>& make);

/// Sets how each message of the core is composed from now on and returns the previous setting; null uses the
/// language that is set. For a host that sets another language while it writes a file in it. May be called by
/// any thread at any time. It is called by the thread whose call the message is about.
ZET_API ZETReadersLanguage MakeMessagesBy(ZETReadersLanguage language);

/// A rename that is about to be made.
struct ZETRename {
    const std::string& from;
    const std::string& to;
    /// Open for reading, at its start, on the file that is about to get the name `to`; `RenameFile` renames
    /// this file or none. -1 if it is no regular file, or this user may not read it. The guard must not close
    /// it.
    int descriptor;
    /// False before anything was done to either file; true when everything but the rename itself is done.
    bool isReady;
};

/// Called before a file takes the place of another. If it throws, the rename is not made, and the exception
/// leaves `RenameFile`.
using ZETRenameGuard = std::function<void(const ZETRename& rename)>;

/// Sets the guard of every `RenameFile` from now on and returns the previous one; an empty one ends that. The
/// guard is called by the thread that renames. Must not be called from within a guard, nor while another
/// thread may rename.
ZET_API ZETRenameGuard SetRenameGuard(ZETRenameGuard guard);

/// For a host that sets the owner and group of each file itself after it limited the calling thread to
/// another user's rights: with true, this thread no longer warns of an owner that could not be set.
/// Set-user-ID and set-group-ID are dropped all the same. Returns the previous setting, which is false at
/// first.
ZET_API bool LeaveOwnersToHost(bool areLeft);

/// Whether `name` is one that `CopyFile` may use for its unfinished copy for `to`: `to` with ".", six letters
/// or digits and ".tmp" added, cut before the "." if it would be too long. Both names have the same directory
/// part, or none. A process that was killed leaves such a copy behind.
ZET_API bool IsCopyOf(const std::string& name, const std::string& to);

/// Many files written by the calling thread with fewer syncs, and the same guarantee for each: it is old or
/// new, and its reserve is complete or absent. All reserves come first: until `NameFiles`, what `CopyFile`
/// and `CreateFile` make waits to be synced by several threads at once, a copy under a temporary name. Then
/// come the saves: each text is made durable before its name, as without a batch; only directories are synced
/// once, at the end. A thread has one batch at a time.
class ZET_API CZETBatch {
  public:
    CZETBatch();

    /// Removes the files that still wait for their names, and syncs the directories in which others got
    /// theirs; failures of that are not reported.
    ~CZETBatch();
    CZETBatch(const CZETBatch&) = delete;
    CZETBatch& operator=(const CZETBatch&) = delete;

    /// The following operations concern this file, as the user names it; messages use that name and its
    /// directory.
    void SetSubject(const std::string& path);

    /// Makes the waiting files durable and gives them their names, durably too. Throws `EZETError`; files not
    /// named by then never get their names.
    void NameFiles();

    /// Makes everything that was done durable. Throws `EZETError`.
    void Finish();

    class Implementation;

  private:
    std::unique_ptr<Implementation> m_implementation;
};

/// The number of error records that the process has logged so far, shown or not: some failures of the module
/// are reported only that way.
ZET_API std::size_t CountLoggedErrors();

}  // namespace ZET

#endif
