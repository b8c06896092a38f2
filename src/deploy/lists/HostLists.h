#ifndef ZET_HOST_LISTS_H
#define ZET_HOST_LISTS_H

#include <map>
#include <optional>
#include <set>
#include <string>

#include "deploy/lists/Targets.h"

namespace ZET::Deploy {

class Host;

/// What the host's own lists say about a file: the list of targets, and what the commits of both roles
/// recorded. Each is read once in a run, when it is first needed. Throws a `Failure` if one cannot be read.
class HostLists {
  public:
    explicit HostLists(Host& host) : m_host(host) {}

    /// The list as it stands, with its problems; empty if there is none.
    const TargetList& Targets();

    /// The same, but read again. Must be called right after the lock was taken, since what was read before
    /// may have changed. Throws a `Failure` if there is no list.
    const TargetList& TargetsAnew();

    /// The target, of any role, whose file has this name; null if there is none. A target in force goes
    /// before others. Throws a `Failure` if the list cannot be understood.
    const Target* TargetNamed(const std::string& name);

    /// The same for the file to which this path leads.
    const Target* TargetOf(const std::string& path) { return TargetNamed(NameOf(path)); }

    /// False if there is a list, but one that cannot be read or understood.
    bool IsUsable();

    /// The entry of a template; null if there is none, or the list cannot be read.
    const Target* EntryOf(const std::string& templateName);

    /// Whether a commit of either role wrote the file of this name, and it was not taken back since. Throws a
    /// `Failure` if the history cannot tell. Does not open the history unless a reserve or a record of
    /// absence stands beside the file: a committed file that lost both counts as not committed.
    bool IsCommitted(const std::string& name);

    /// Whether the file is committed, but no target of the list any more.
    bool HasLeft(const std::string& name);

    /// What is known of a file that was committed, or in which a commit set lines; none for other files. If a
    /// history is kept, the file need not have its reserve.
    std::optional<KnownFile> CommittedFile(const std::string& name);

    /// Whether a commit ever wrote a file from the template, as far as the history still has that.
    bool WasCommittedBy(const std::string& templateName);

    /// The one name of a file, whichever path leads to it.
    std::string NameOf(const std::string& path) const;

  private:
    Host& m_host;
    std::optional<TargetList> m_targets;
    std::optional<std::map<std::string, const Target*>> m_byName;
    std::optional<std::map<std::string, const Target*>> m_byTemplate;
    std::optional<std::set<std::string>> m_templatesOfCommits;
};

}  // namespace ZET::Deploy

#endif
