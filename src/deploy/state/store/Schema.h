#ifndef ZET_STORE_SCHEMA_H
#define ZET_STORE_SCHEMA_H

#include <optional>
#include <string>

#include "deploy/state/store/Database.h"

namespace ZET::Deploy {

/// The version of the tables that are written here.
inline constexpr std::int64_t kSchemaVersion = 3;

/// The version of an opened store; 0 if it has no tables yet. Throws a `Damage` if it is no store, a
/// `Failure` if a newer version wrote it; both name `file`.
std::int64_t VersionOfStore(Database& database, const std::string& file);

/// Brings the tables to the present version in one transaction.
void UpgradeStore(Database& database, std::int64_t version, const std::string& file);

/// The key by which the marks of texts are made; none if it was damaged.
std::optional<std::string> MarkKey(Database& database);

/// Makes another key. Marks made by the former one are dropped, and made again as the texts come.
void RenewMarkKey(Database& database, const std::string& file);

}  // namespace ZET::Deploy

#endif
