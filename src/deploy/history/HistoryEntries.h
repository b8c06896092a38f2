#ifndef ZET_HISTORY_ENTRIES_H
#define ZET_HISTORY_ENTRIES_H

#include <string>

#include "deploy/history/HistoryReader.h"

/// Entries of the store as they are shown.
namespace ZET::Deploy {

/// Without its files, and with the words as they were recorded.
HistoryEntry EntryAsRecorded(const RecordedEntry& entry);

/// The same, with the words that may be shown now.
HistoryEntry ToldEntry(const HistoryReader& reader, const RecordedEntry& entry);

/// The paths of the files of an entry.
std::vector<std::string> PathsOf(const HistoryReader& reader, std::int64_t number);

/// `file` may have the states of any two instants, not only those of one entry.
HistoryFile ToldFile(const HistoryReader& reader, const RecordedFile& file);

/// The same for what the entry did to it.
HistoryFile ToldFileOf(const HistoryReader& reader, std::int64_t number, const RecordedFile& file);

/// All entries, or only those of `file`, which then list nothing but that file and its companions.
std::vector<HistoryEntry> ListHistory(Deployment& product, const std::string& file, std::size_t count);
HistoryEntry ShowEntry(Deployment& product, std::int64_t number);
std::string TextOf(Deployment& product, std::int64_t number, const std::string& file, Side side);

/// The person behind the entry: who logged in, else who asked sudo, else the user.
std::string PersonOf(const HistoryEntry& entry);

/// The command's words in the quotes that a shell needs, without the message.
std::string CommandOf(const HistoryEntry& entry);

}  // namespace ZET::Deploy

#endif
