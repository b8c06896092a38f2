#ifndef ZET_HISTORY_WORDS_H
#define ZET_HISTORY_WORDS_H

#include <cstdint>
#include <string>

#include "cli/Fields.h"
#include "deploy/history/LineAges.h"
#include "zet/deploy/History.h"

/// What was done on the host, in words and in fields of the document.
namespace ZET::Cli {

/// A time in nanoseconds since 1970, as it is where the reader is.
std::string LocalTime(std::int64_t time);

/// One line: number, time, who, role, how it ended unless it is done, the command, why.
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

/// The newer of two, by what was done first.
bool IsNewer(const LineAge& one, const LineAge& other);

}  // namespace ZET::Cli

#endif
