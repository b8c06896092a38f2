#ifndef ZET_STORE_JOURNAL_FILE_H
#define ZET_STORE_JOURNAL_FILE_H

namespace ZET::Deploy {

/// The name of the way to open files that saves a sync: SQLite syncs the directory of each journal that it
/// might have made. One that earlier entries left got its name on the disk with the first of them;
/// if they were not synced, as ZET_SYNC was no, it is there as soon as the file system writes it.
const char* WayOfKeptJournal();

}  // namespace ZET::Deploy

#endif
