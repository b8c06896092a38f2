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
/// recorded. Each is read once in a run, when it is first asked for; a `Failure` tells why one cannot be.
class HostLists {
  public:
    explicit HostLists(Host& host) : m_host(host) {}

    /// As it stands, with its problems; an empty one where there is none.
    const TargetList& Targets();

    /// The same, read again by who has just got the lock: nothing that was read before it holds any more. No
    /// list is a `Failure`.
    const TargetList& TargetsAnew();

    /// The target whose file has this name, for any role, one in force before others; null when none has. A
    /// `Failure` where the list is none.
    const Target* TargetNamed(const std::string& name);

    /// Whether there is a list, and it can be read.
    bool IsUsable();

    /// The entry of a template; null when there is none, or no list that can be read.
    const Target* EntryOf(const std::string& templateName);

    /// Whether a commit of either role wrote the file of this name, and it was not taken back since. A
    /// `Failure` where the history cannot tell. Does not open the history unless a reserve or a record of
    /// absence stands beside the file: a committed file that lost both counts as not committed.
    bool IsCommitted(const std::string& name);

    /// Whether it is committed, and no target of the list any more.
    bool HasLeft(const std::string& name);

    /// What is known of a committed file, or of one in which a commit set lines; none: it is neither. Where a
    /// history is kept, the file need not have its reserve.
    std::optional<KnownFile> CommittedFile(const std::string& name);

    /// Whether a commit ever wrote a file by the template, as far as the history keeps that.
    bool WasCommittedBy(const std::string& templateName);

    /// The one name of a file, whatever way leads to it.
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
