#ifndef ZET_KEPT_ENTRIES_H
#define ZET_KEPT_ENTRIES_H

#include <cstdint>
#include <vector>

#include "deploy/state/Host.h"
#include "deploy/state/store/Store.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// Of the entries that were ever made; 0: none was.
std::int64_t LastNumberOf(Store& store);

/// A number that is no entry, or no longer one, is a `UsageError`.
RecordedEntry KeptEntry(Store& store, std::int64_t number);

/// A `UsageError` of a number while nothing was recorded.
[[noreturn]] void FailOfNothingRecorded(std::int64_t number);

/// A `Failure` where what came after the entry is not all kept any more; `remedy` gets the number of the
/// first of which it is.
void RequireAllKeptAfter(Store& store, std::int64_t number, const char* remedy);

/// Files that were written after the entry, of which no entry tells, as nothing was to be kept.
std::vector<Problem> UntoldAfter(Host& host, Store& store, std::int64_t number);

/// A `Failure` where nothing is kept: the newest entry may not be the last change then.
void RequireLastTold(Host& host);

}  // namespace ZET::Deploy

#endif
