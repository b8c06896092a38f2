#ifndef ZET_STORE_DELETION_H
#define ZET_STORE_DELETION_H

#include <cstdint>
#include <string>
#include <vector>

#include "deploy/state/store/Database.h"
#include "deploy/state/store/Records.h"
#include "deploy/state/store/Rows.h"
#include "deploy/state/store/StoreLimits.h"

/// Deletes what leaves the store or makes room for something else, with the states and texts that nothing
/// else there has.
namespace ZET::Deploy {

/// What has become known of its files since then stays.
void DeleteEntry(Database& database, std::int64_t number);

/// The entry itself stays.
void DeleteFileOf(Database& database, std::int64_t number, const std::string& path);

void DeleteKnown(Database& database, const std::string& path);

/// Replaces whatever was known of the file.
void ReplaceKnown(Database& database, const KnownFile& file);

/// From now on, the files are known as the entry left them, or not at all if the product has nothing to do
/// with them any more.
void KnowAsLeft(Database& database, const std::vector<LeftFile>& files, std::int64_t entry);

/// Also deletes texts that only the former state had.
void ReplaceStateAndTexts(Database& database, std::int64_t id, const RecordedState& state);

/// Deletes the oldest entries beyond what the limits keep, and records that there were more.
void Prune(Database& database, const StoreLimits& limits);

/// Records that not all entries up to this number are kept any more.
void RememberPruned(Database& database, std::int64_t number);

}  // namespace ZET::Deploy

#endif
