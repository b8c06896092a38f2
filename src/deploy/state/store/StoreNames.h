#ifndef ZET_STORE_NAMES_H
#define ZET_STORE_NAMES_H

/// The names of the store's files, by what follows the name of the database.
namespace ZET::Deploy {

inline constexpr char kJournalSuffix[] = "-wal";

/// The journal of a single transaction: while the tables are made, and where the other one is impossible.
inline constexpr char kUndoJournalSuffix[] = "-journal";

/// The memory that its users share.
inline constexpr char kMemorySuffix[] = "-shm";

inline constexpr char kLastNumberSuffix[] = "-last";

/// All of them.
inline constexpr const char* kStoreSuffixes[] = {"", kJournalSuffix, kMemorySuffix, kUndoJournalSuffix,
                                                 kLastNumberSuffix};

}  // namespace ZET::Deploy

#endif
