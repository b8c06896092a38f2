#ifndef ZET_STORE_DELETION_H
#define ZET_STORE_DELETION_H

#include <cstdint>
#include <string>
#include <vector>

#include "deploy/state/store/Database.h"
#include "deploy/state/store/Records.h"
#include "deploy/state/store/Rows.h"
#include "deploy/state/store/StoreLimits.h"

/// What goes from the store, or makes room for another, with the states and texts that nothing else there
/// has.
namespace ZET::Deploy {

/// What is known since of its files stays.
void DeleteEntry(Database& database, std::int64_t number);

/// The entry stays.
void DeleteFileOf(Database& database, std::int64_t number, const std::string& path);

void DeleteKnown(Database& database, const std::string& path);

/// Whatever was known of the file, that is known now.
void ReplaceKnown(Database& database, const KnownFile& file);

/// The files are known as the entry left them, or not at all where the product has nothing to do with them
/// any more.
void KnowAsLeft(Database& database, const std::vector<LeftFile>& files, std::int64_t entry);

/// What the former state alone had of texts goes.
void ReplaceStateAndTexts(Database& database, std::int64_t id, const RecordedState& state);

/// Deletes the oldest entries beyond what the limits keep, and notes that there were more.
void Prune(Database& database, const StoreLimits& limits);

/// That entries up to the number are no longer kept.
void RememberPruned(Database& database, std::int64_t number);

}  // namespace ZET::Deploy

#endif
