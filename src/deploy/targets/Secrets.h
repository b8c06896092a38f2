#ifndef ZET_SECRETS_H
#define ZET_SECRETS_H

#include <map>
#include <optional>
#include <set>
#include <string>

#include "deploy/targets/SecretTexts.h"

namespace ZET::Deploy {

class HostLists;
class Host;
struct FileState;
struct Target;

/// Knows who may see the text of a file. There is one object in a run, which knows what the lists say.
///
/// Secret is the text of a target that the list calls so, of its template, of what was made from that
/// template, and of a copy of any of these. So is a target that left the list, with its template, since
/// nobody can tell any more. Private is what others may not read by its mode, with its copies and what is
/// made from it. Without lists that can be relied on, nothing is known to be for everybody.
class Secrets {
  public:
    Secrets(Host& host, HostLists& lists);

    enum class Audience {
        Everybody,  ///< shown with whatever is reported
        Unsure,     ///< not known; treated like `Readers`
        Readers,    ///< shown to whoever asks for just this text, and may read the file
        Nobody      ///< shown to whoever asks for secrets
    };

    /// A file that is yet to be made is judged by its name, and by those of its copies that are there.
    Audience Of(const std::string& path) { return Judged(path).audience; }
    bool IsPrivate(const std::string& path) { return Of(path) != Audience::Everybody; }

    /// Whether a report leaves the text out, unless just this text was asked for.
    bool Hides(const std::string& path);

    /// Why, and how to see it, as a part of a sentence: "text not shown: ...; --show-secrets shows it". Warns
    /// if nobody can tell.
    std::string Excuse(const std::string& path);

    /// The same for a file of which only the history says that a commit wrote it.
    static std::string ExcuseOfWhatLeftList();

    /// For somebody who asks for the text: throws a `Failure` with the remedy if secrets must be asked for.
    void RequireShown(const std::string& path);

    /// The run has written the file: what was not judged yet may be a copy of it.
    void Wrote(const std::string& path);

    /// Whether others may not read the file, links followed.
    static bool IsClosed(const std::string& file);
    static bool IsClosed(const FileState& state);

  private:
    struct Verdict {
        Audience audience;
        const char* reason;
    };

    const Verdict& Judged(const std::string& path);
    Verdict Judge(const std::string& path);
    void RequireReliableList();
    std::set<std::string> NamesOfText(const std::string& path) const;
    std::set<std::string> NamesOfTemplates(const std::string& path);
    bool HasLeftList(const std::set<std::string>& names);
    bool IsTemplateThatLeftList(const std::string& name);
    bool IsListed(const std::set<std::string>& names);
    bool IsCopyOfListed(const std::string& path);
    SecretTexts& Listed();

    Host& m_host;
    HostLists& m_lists;
    std::map<std::string, Verdict> m_verdicts;
    std::optional<SecretTexts> m_listed;  ///< of the targets that the list calls secret
    std::string m_trouble;                ///< why nobody can tell; empty once that was reported
};

}  // namespace ZET::Deploy

#endif
