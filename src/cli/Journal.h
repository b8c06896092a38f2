#ifndef ZET_JOURNAL_H
#define ZET_JOURNAL_H

#include <string>
#include <vector>

#include "zet/deploy/History.h"

namespace ZET::Cli {

/// Whether this system has a journal.
bool HasJournal();

/// Sends a change to the system's journal, as one record with fields (zet-init(1), JOURNAL), by the journal's
/// own protocol. False if there is no journal, or if it does not accept the record at once: the command does
/// not wait for it. `paths` are those of the entry's files.
bool TellJournal(const std::string& program, const Deploy::HistoryEntry& entry,
                 const std::vector<std::string>& paths);

/// The record's text: "change 7 by anna as root: param set /etc/hosts a b: /etc/hosts".
std::string JournalText(const Deploy::HistoryEntry& entry, const std::vector<std::string>& paths);

}  // namespace ZET::Cli

#endif
