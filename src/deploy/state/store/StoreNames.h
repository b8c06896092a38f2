#ifndef ZET_STORE_NAMES_H
#define ZET_STORE_NAMES_H

/// What the files of the store are called: what stands behind the name of the database.
namespace ZET::Deploy {

inline constexpr char kJournalSuffix[] = "-wal";

/// Of the journal of one transaction: while the tables are made, and where there cannot be the other one.
inline constexpr char kUndoJournalSuffix[] = "-journal";

inline constexpr char kLastNumberSuffix[] = "-last";

/// All of them.
inline constexpr const char* kStoreSuffixes[] = {"", kJournalSuffix, "-shm", kUndoJournalSuffix,
                                                 kLastNumberSuffix};

}  // namespace ZET::Deploy

#endif
