#ifndef ZET_STORE_FILE_H
#define ZET_STORE_FILE_H

#include <memory>
#include <string>

#include "deploy/state/store/Database.h"

namespace ZET::Deploy {

struct FoundStore {
    enum State {
        Nothing,
        Blank,  ///< its making was cut short, or somebody emptied it
        Whole
    };

    State state = Nothing;
    bool isForOthers = false;  ///< others than its owner may read its texts, there or in a journal beside it

    bool operator==(State other) const { return state == other; }
};

/// A `Damage` where one of the store's names leads to anything but a regular file of one name and the right
/// owner, which nobody else may write: what the library would wait for, or write to, is refused before it is
/// opened. And where nothing is left of a store but its journal.
FoundStore FindStore(const std::string& file);

/// Opens it with its tables, which are made where there are none. From now on, only its owner may read it,
/// where the file system has modes.
/// `isSynced`: what was recorded is on the disk when a transaction was committed.
std::unique_ptr<Database> OpenStoreToRecord(const std::string& file, FoundStore found, bool isSynced);

/// A journal of so many pages is taken over where that costs syncs: every command reads it first. Where it
/// costs none, each entry does so, which is 0.2 ms a command better than at 32 pages.
inline constexpr std::int64_t kLongJournal = 256;

/// Takes the journal over; one that somebody reads, or for which the disk is full, stays as it is. In a store
/// that is synced, what was committed is on the disk then, however it was committed.
void TakeJournalOver(Database& database, const std::string& file, bool isSynced);

/// Opens one that is there, and changes nothing.
std::unique_ptr<Database> OpenStoreToLook(const std::string& file, FoundStore found);

}  // namespace ZET::Deploy

#endif
