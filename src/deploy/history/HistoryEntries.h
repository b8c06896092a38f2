#ifndef ZET_HISTORY_ENTRIES_H
#define ZET_HISTORY_ENTRIES_H

#include <string>

#include "deploy/history/HistoryReader.h"

/// Entries of the store, as they are told.
namespace ZET::Deploy {

/// Without its files, and with the words that could be told when it was recorded.
HistoryEntry EntryAsRecorded(const RecordedEntry& entry);

/// The same with the words that can be told now.
HistoryEntry ToldEntry(const HistoryReader& reader, const RecordedEntry& entry);

/// Of the files of an entry.
std::vector<std::string> PathsOf(const HistoryReader& reader, std::int64_t number);

/// `file` has what became of it between any two instants.
HistoryFile ToldFile(const HistoryReader& reader, const RecordedFile& file);

/// All, or those of one file with that file and what stands beside it.
std::vector<HistoryEntry> ListHistory(Deployment& product, const std::string& file, std::size_t count);
HistoryEntry ShowEntry(Deployment& product, std::int64_t number);
std::string TextOf(Deployment& product, std::int64_t number, const std::string& file, Side side);

/// Who sat there: who logged in or asked sudo, where that is somebody else than the user.
std::string PersonOf(const HistoryEntry& entry);

/// The words as a shell would take them, without the message.
std::string CommandOf(const HistoryEntry& entry);

}  // namespace ZET::Deploy

#endif
