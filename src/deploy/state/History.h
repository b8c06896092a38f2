#ifndef ZET_HISTORY_H
#define ZET_HISTORY_H

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "deploy/state/store/Store.h"

namespace ZET::Deploy {

class Failure;
class Host;
class WriteLock;

/// What a command is about to do.
enum class Purpose {
    Writes,
    GoesBack  ///< which needs no history: what was there before stands beside the files, too
};

/// What the product remembers on this host: the store in its directory, which is opened when it is asked for
/// first.
class History {
  public:
    explicit History(Host& host) : m_host(host) {}

    /// Whether texts are kept: the parameter ZET_HISTORY.
    bool KeepsTexts() const;

    /// Whether an unusable one stops a command: it does, unless nothing is to be kept or files go back.
    bool IsNeeded(Purpose purpose = Purpose::Writes) const {
        return purpose == Purpose::Writes && KeepsTexts();
    }

    StoreLimits Limits() const;

    /// Whether this user can record: the directory is there, and is his to write.
    bool CanRecord() const;

    /// Whether a store was begun. That there is none is found out once while the product's lock is held.
    bool IsBegun(const WriteLock& lock);

    /// Only under the product's lock. One that cannot be used is a `Failure`.
    Store& ToRecord();

    /// Null when nothing was recorded on this host, or this user may not read it. One that cannot be used is
    /// a `Failure`.
    Store* ToLook();

    /// As `ToLook`, but an unusable one is reported as a warning, once, and null: for callers that find what
    /// they need beside the files, too.
    Store* ToLookIfUsable();
    bool IsUnusable() const { return m_isUnusable; }

    /// Calls `call` with that store, if there is one. What makes the store unusable only then is reported,
    /// too, and ends the call early.
    void TryLook(const std::function<void(Store& store)>& call);

    /// For a command that writes: `ToLook` where the history is needed, else `ToLookIfUsable`.
    Store* ToLookForWriting() { return IsNeeded() ? ToLook() : ToLookIfUsable(); }

    /// Reports it as a warning, once, however many ask.
    void TellUnusable(const Failure& failure);

    /// Whether there is one that this user may not read.
    bool IsDenied() const;

  private:
    std::string File() const;
    FoundStore Find();
    void FollowDirectories(Store& store) const;
    bool IsKnownToBeNone() const;
    void TellLoss();
    void TellNewKey();
    void TellReaders(bool isMended);

    Host& m_host;
    std::unique_ptr<Store> m_store;
    FoundStore m_found;
    std::weak_ptr<const void> m_foundUnder;  ///< the lock; what was found is known until it expires
    bool m_isToRecord = false;
    bool m_isUnusable = false;
    bool m_isLossTold = false;
    bool m_areReadersTold = false;
    std::string m_told;
};

}  // namespace ZET::Deploy

#endif
