#ifndef ZET_WARNS_ONCE_H
#define ZET_WARNS_ONCE_H

#include <set>
#include <string>
#include <vector>

#include "zet/deploy/Observer.h"

namespace ZET::Deploy {

/// Passes reports on, but each warning only once: what looks at the host more than once finds it each time.
class WarnsOnce : public Observer {
  public:
    explicit WarnsOnce(Observer& observer) : m_observer(observer) {}

    /// From now on, warnings that were passed on are passed on again.
    void Forget() { m_told.clear(); }

    void Warning(const std::string& text) override {
        if (m_told.insert(text).second) m_observer.Warning(text);
    }

    void Detail(const std::string& text) override { m_observer.Detail(text); }
    void Remark(const std::string& text) override { m_observer.Remark(text); }
    void Error(const std::string& text, const std::string& lines) override { m_observer.Error(text, lines); }
    void Progress(std::size_t done, std::size_t total) override { m_observer.Progress(done, total); }
    void Done(const FileOutcome& outcome) override { m_observer.Done(outcome); }
    void Recorded(std::int64_t entry) override { m_observer.Recorded(entry); }
    void Restarts(const std::vector<std::string>& services) override { m_observer.Restarts(services); }
    void Reloads(const std::vector<std::string>& services) override { m_observer.Reloads(services); }
    bool IsCancelled() override { return m_observer.IsCancelled(); }

  private:
    Observer& m_observer;
    std::set<std::string> m_told;
};

}  // namespace ZET::Deploy

#endif
