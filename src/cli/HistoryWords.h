#ifndef ZET_HISTORY_WORDS_H
#define ZET_HISTORY_WORDS_H

#include <cstdint>
#include <string>

#include "cli/Fields.h"
#include "deploy/history/LineAges.h"
#include "zet/deploy/History.h"

/// The history of the host, in words and as fields of the document.
namespace ZET::Cli {

/// A time in nanoseconds since 1970, shown in the user's time zone.
std::string LocalTime(std::int64_t time);

/// One line: number, time, user, role, outcome unless it is "done", command, message.
std::string LineOf(const HistoryEntry& entry);

/// "PATH: changed, mode 0644 -> 0600".
std::string LineOf(const HistoryFile& file);

Fields FieldsOf(const HistoryEntry& entry);
Fields FieldsOf(const HistoryFile& file);
Fields FieldsOf(const HistoryDiff& diff);

/// "anna as root"
std::string WhoOf(const HistoryEntry& entry);

/// "since change 12, 2026-11-22 10:12:03, by anna: param set ..."
std::string SinceText(const LineAge& age);
Value SinceValue(const std::optional<LineAge>& age);

/// Whether `one` is newer than `other`.
bool IsNewer(const LineAge& one, const LineAge& other);

}  // namespace ZET::Cli

#endif
