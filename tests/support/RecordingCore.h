#ifndef ZET_RECORDING_CORE_H
#define ZET_RECORDING_CORE_H

#include <cstdarg>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "zet/IZETCore.h"

namespace ZET {

/// Thrown by a scripted call. Derived from nothing, so that no handler catches it by accident.
struct ScriptedFailure {
    std::string call;
};

/// One use of `CZETFormatCall`. `domain` is that of the translation whose result was formatted; empty for an
/// untranslated text.
struct RecordedMessage {
    std::string domain;
    std::string source;
    std::string function;
    std::size_t line = 0;
    std::size_t count = 0;
    std::size_t translationsBefore = 0;  ///< the number of texts translated before the formatter was built
    std::string format;
    std::string result;
};

/// A core for tests: it records every call in order, answers from a script, and fails on demand. It also
/// replaces what the core's library defines for a module (errors, formatter, log, file helpers) and
/// `dgettext`, all of which report to the one recording core of the process. The file helpers act on the real
/// file system.
class RecordingCore : public IZETCore {
  public:
    RecordingCore();
    ~RecordingCore() override;

    /// Null if there is no recording core at the moment.
    static RecordingCore* Current();

    const std::string& GetDomainName() override;
    const std::string& GetServerName() override;
    bool IsServiceDiscovery() override;
    bool RegisterInterface(std::shared_ptr<CZETInterface> interface) override;
    bool RemoveInterface(const std::string& name) override;
    std::string GetParam(const std::string& key) override;
    void UpdateParam(const std::string& key, const std::string& value) override;
    bool MatchRegEx(const std::string& pattern, const std::string& subject, void* reserved,
                    std::size_t flags) override;
    void WriteStatus(std::ostream& stream) override;

    void SetParam(const std::string& key, const std::string& value) { m_params[key] = value; }
    void SetDomainName(const std::string& name) { m_domainName = name; }
    void SetServerName(const std::string& name) { m_serverName = name; }
    void SetServiceDiscovery(bool on) { m_serviceDiscovery = on; }

    /// Sets the translation of a message; all others stay as they are.
    void SetTranslation(const std::string& text, const std::string& translation);

    /// Sets a function that answers `MatchRegEx` instead of PCRE2.
    void SetMatcher(std::function<bool(const std::string&, const std::string&)> matcher);

    /// Sets a function that does the work of `WriteStatus`.
    void SetStatusWriter(std::function<void(std::ostream&)> writer) { m_statusWriter = std::move(writer); }

    /// Makes `RegisterInterface` keep nothing and return false.
    void RefuseInterfaces() { m_refusesInterfaces = true; }

    /// Makes the `nth` call of `call` from now on (1 is the next) throw `ScriptedFailure` and do nothing
    /// else. `call` is the first word of a journal entry, or a whole entry.
    void FailAt(const std::string& call, std::size_t nth = 1);

    /// Makes all formatters return null from now on.
    void RefuseToFormat() { m_refusesToFormat = true; }

    /// Records a call, or throws if the script says so. Public for the library's free functions.
    void Note(const std::string& call, const std::string& arguments);
    const char* Translate(const char* domain, const char* text);
    char* Format(RecordedMessage message, const char* format, std::va_list arguments)
        __attribute__((format(printf, 3, 0)));

    /// All calls so far, each "Call arguments".
    const std::vector<std::string>& Journal() const { return m_journal; }

    /// The entries whose call is one of `calls`, in order.
    std::vector<std::string> Journal(const std::set<std::string>& calls) const;
    const std::vector<RecordedMessage>& Messages() const { return m_messages; }
    std::size_t Translations() const { return m_translated; }

    /// The number of owners of the interface offered last, at that time.
    long OwnersWhenOffered() const { return m_ownersWhenOffered; }

    /// The log, each record as "level text".
    std::vector<std::string> Log() const;

    const std::vector<std::shared_ptr<CZETInterface>>& Interfaces() const { return m_interfaces; }
    std::shared_ptr<CZETInterface> LastOffered() const { return m_lastOffered.lock(); }

    /// Empties the journal, the messages and the log.
    void Forget();

  private:
    std::vector<std::string> m_journal;
    std::vector<RecordedMessage> m_messages;
    std::map<std::string, std::string> m_params;
    std::string m_domainName;
    std::string m_serverName;
    bool m_serviceDiscovery = false;
    bool m_refusesInterfaces = false;
    bool m_refusesToFormat = false;
    std::size_t m_translated = 0;
    long m_ownersWhenOffered = 0;
    std::map<std::string, std::string> m_translations;
    std::map<std::string, std::string> m_domains;  ///< by translated text
    std::map<std::string, std::size_t> m_failures;
    std::function<bool(const std::string&, const std::string&)> m_matcher;
    std::function<void(std::ostream&)> m_statusWriter;
    std::vector<std::shared_ptr<CZETInterface>> m_interfaces;
    std::weak_ptr<CZETInterface> m_lastOffered;
};

}  // namespace ZET

#endif
