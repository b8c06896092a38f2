#ifndef ZET_HISTORY_H
#define ZET_HISTORY_H

#include <memory>
#include <optional>
#include <string>

#include "deploy/state/store/Store.h"

namespace ZET::Deploy {

class Failure;
class Host;
class WriteLock;

/// What the product remembers on this host: the store in its directory, which is opened when it is asked for
/// first.
class History {
  public:
    explicit History(Host& product) : m_product(product) {}

    /// Whether texts are kept: the parameter ZET_HISTORY.
    bool KeepsTexts() const;

    /// Whether who writes cannot do without it: one that cannot be used stops him, unless nothing is to be
    /// kept.
    bool IsNeeded() const { return KeepsTexts(); }

    StoreLimits Limits() const;

    /// Whether this user can record: the directory is there, and is his to write.
    bool CanRecord() const;

    /// Whether a store was begun. That none was is known as long as the lock is held, if it is the product's.
    bool IsBegun(const WriteLock& lock);

    /// Only under the product's lock. One that cannot be used is a `Failure`.
    Store& ToRecord();

    /// Null when nothing was recorded on this host, or this user may not read it. One that cannot be used is
    /// a `Failure`.
    Store* ToLook();

    /// The same, but one that cannot be used is told, once, and is null: for who finds what he needs beside
    /// the files, too.
    Store* ToLookIfUsable();
    bool IsUnusable() const { return m_isUnusable; }

    /// For who writes: the one where it is needed, the other where it is not.
    Store* ToLookIfNeeded() { return IsNeeded() ? ToLook() : ToLookIfUsable(); }

    /// Told once, however many ask for it.
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

    Host& m_product;
    std::unique_ptr<Store> m_store;
    FoundStore m_found = FoundStore::Nothing;
    std::weak_ptr<const void> m_foundUnder;  ///< the lock; what was found is known until it expires
    bool m_isToRecord = false;
    bool m_isUnusable = false;
    bool m_isLossTold = false;
    std::string m_told;
};

}  // namespace ZET::Deploy

#endif
