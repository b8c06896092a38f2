#ifndef ZET_PARTS_H
#define ZET_PARTS_H

#include <string>

#include "deploy/host/Remedy.h"
#include "deploy/state/Overrides.h"
#include "deploy/targets/Deployment.h"
#include "zet/deploy/Outcome.h"
#include "zet/deploy/Plan.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// Returns what `call` returns. What the core or the module throws becomes a `Failure`, and what they log is
/// reported to `observer`.
template <typename Call>
auto Tell(Observer& observer, Call call) {
    const LogToObserver log(observer);
    return RemedyErrors("", call);
}

/// Passes reports on to the caller's observer, and collects what happened.
class Relay : public Observer {
  public:
    explicit Relay(Observer* observer) : m_observer(observer != nullptr ? *observer : m_nobody) {}

    void Detail(const std::string& text) override { Reached().Detail(text); }
    void Remark(const std::string& text) override { Reached().Remark(text); }
    void Warning(const std::string& text) override { Reached().Warning(text); }
    void Error(const std::string& text, const std::string& lines) override { Reached().Error(text, lines); }
    void Progress(std::size_t done, std::size_t total) override { Reached().Progress(done, total); }
    bool IsCancelled() override { return Reached().IsCancelled(); }

    void Done(const FileOutcome& outcome) override {
        m_outcome.files.push_back(outcome);
        Reached().Done(outcome);
    }

    void Recorded(std::int64_t entry) override {
        m_outcome.entry = entry;
        Reached().Recorded(entry);
    }

    void Restarts(const std::vector<std::string>& services) override {
        m_outcome.restarts = services;
        Reached().Restarts(services);
    }

    void Reloads(const std::vector<std::string>& services) override {
        m_outcome.reloads = services;
        Reached().Reloads(services);
    }

    /// Returns what `call` made happen. Reports go to `observer`, unless it is null, instead of the usual
    /// one.
    template <typename Call>
    Outcome Collect(Observer* observer, Call call) {
        m_outcome = {};
        m_instead = observer;
        try {
            call();
        } catch (...) {
            m_instead = nullptr;
            throw;
        }
        m_instead = nullptr;
        return std::move(m_outcome);
    }

  private:
    Observer& Reached() { return m_instead != nullptr ? *m_instead : m_observer; }

    Observer m_nobody;
    Observer& m_observer;
    Observer* m_instead = nullptr;
    Outcome m_outcome;
};

class Product::Implementation {
  public:
    Implementation(const std::string& configFile, const Options& options, Observer* observer)
        : relay(observer), deployment(Tell(relay, [&] { return Deployment(configFile, options, relay); })) {}

    Relay relay;
    Deployment deployment;
    const Plan::Implementation* plan = nullptr;  ///< the one that waits for its commit
    int calls = 0;                               ///< under way; an observer may make calls, too
};

/// A call of the library. No directory of the host is held once the outermost call has ended.
class Call {
  public:
    explicit Call(Product::Implementation& parts) : m_parts(parts) { ++m_parts.calls; }
    ~Call() {
        if (--m_parts.calls == 0) m_parts.deployment.EndCall();
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    /// The host as it is now. Within another call, or while a plan waits for its commit, the host as these
    /// found it.
    Deployment& Begin() const {
        if (m_parts.calls == 1 && m_parts.plan == nullptr) m_parts.deployment.BeginAnew();
        return m_parts.deployment;
    }

  private:
    Product::Implementation& m_parts;
};

/// Returns what `work(deployment)` returns, as one call.
template <typename Work>
auto Use(Product& product, Work work) {
    return Tell(product.Parts().relay, [&] {
        const Call call(product.Parts());
        return work(call.Begin());
    });
}

/// Returns what `work(deployment)` made happen. Reports go to `observer`, unless it is null, instead of the
/// product's.
template <typename Work>
Outcome Collect(Product& product, Observer* observer, Work work) {
    return product.Parts().relay.Collect(observer, [&] { Use(product, work); });
}

}  // namespace ZET::Deploy

#endif
