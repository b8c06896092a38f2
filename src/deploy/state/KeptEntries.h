#ifndef ZET_KEPT_ENTRIES_H
#define ZET_KEPT_ENTRIES_H

#include <cstdint>
#include <optional>
#include <vector>

#include "deploy/state/Host.h"
#include "deploy/state/store/Store.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// The number of the newest entry ever made; 0 if none was.
std::int64_t LastNumberOf(Store& store);

/// Throws a `UsageError` for a number that no entry has, or one that is no longer kept.
RecordedEntry KeptEntry(Store& store, std::int64_t number);

/// Throws for a host that has no history: a `UsageError` if a change was asked for by its number, and there
/// cannot have been any.
[[noreturn]] void FailOfNoHistory(Host& host, const std::optional<std::int64_t>& number);

/// Throws a `Failure` if not all entries after this one are kept any more. `remedy` has a gap for the number
/// of the first entry from which on all are kept.
void RequireAllKeptAfter(Store& store, std::int64_t number, const char* remedy);

/// The files that were written after the entry, and of which no entry tells, as nothing was to be kept.
std::vector<Problem> UntoldAfter(Host& host, Store& store, std::int64_t number);

/// Throws a `Failure` if nothing is kept: then the newest entry may not be the last change.
void RequireLastTold(Host& host);

}  // namespace ZET::Deploy

#endif
