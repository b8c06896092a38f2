#ifndef ZET_STORE_SCHEMA_H
#define ZET_STORE_SCHEMA_H

#include <optional>
#include <string>

#include "deploy/state/store/Database.h"

namespace ZET::Deploy {

/// The version that is written here.
inline constexpr std::int64_t kSchemaVersion = 3;

/// The version of an opened store; 0: it has no tables yet. What is no store, or a newer one's, is a
/// `Failure` that names `file`.
std::int64_t VersionOfStore(Database& database, const std::string& file);

/// Brings the tables to the present version, as one transaction.
void UpgradeStore(Database& database, std::int64_t version, const std::string& file);

/// What the marks of texts are made by; none where it was damaged.
std::optional<std::string> MarkKey(Database& database);

/// Makes another key: the marks by the former one are gone, and are made again as the texts come.
void RenewMarkKey(Database& database, const std::string& file);

}  // namespace ZET::Deploy

#endif
