#ifndef ZET_STORE_SQLITE_H
#define ZET_STORE_SQLITE_H

#include <sqlite3.h>

#include "deploy/state/store/Library.h"

namespace ZET::Deploy {

/// The functions of SQLite that are used here, looked up when the first database is opened.
struct Sqlite {
    decltype(sqlite3_config)* configureAll;
    decltype(sqlite3_open_v2)* open;
    decltype(sqlite3_close_v2)* close;
    decltype(sqlite3_db_config)* configure;
    decltype(sqlite3_file_control)* control;
    decltype(sqlite3_busy_timeout)* setPatience;
    decltype(sqlite3_extended_result_codes)* wantExtendedCodes;
    decltype(sqlite3_prepare_v3)* prepare;
    decltype(sqlite3_finalize)* finalize;
    decltype(sqlite3_step)* step;
    decltype(sqlite3_reset)* reset;
    decltype(sqlite3_clear_bindings)* clear;
    decltype(sqlite3_bind_int64)* bindNumber;
    decltype(sqlite3_bind_text64)* bindText;
    decltype(sqlite3_bind_blob64)* bindBlob;
    decltype(sqlite3_bind_null)* bindNothing;
    decltype(sqlite3_column_type)* type;
    decltype(sqlite3_column_int64)* number;
    decltype(sqlite3_column_blob)* bytes;
    decltype(sqlite3_column_bytes)* size;
    decltype(sqlite3_errmsg)* message;
    decltype(sqlite3_errstr)* describe;
    decltype(sqlite3_system_errno)* systemError;
    decltype(sqlite3_last_insert_rowid)* lastRow;
    decltype(sqlite3_get_autocommit)* isOutside;  ///< of any transaction
    decltype(sqlite3_wal_hook)* tellJournal;
    decltype(sqlite3_db_status)* status;
    decltype(sqlite3_vfs_find)* way;  ///< in which files are opened
    decltype(sqlite3_vfs_register)* addWay;
    decltype(sqlite3_vfs_unregister)* removeWay;

    Sqlite() {
        const Library library("libsqlite3.so.0", "libsqlite3-0");
        library.Find(configureAll, "sqlite3_config");
        library.Find(open, "sqlite3_open_v2");
        library.Find(close, "sqlite3_close_v2");
        library.Find(configure, "sqlite3_db_config");
        library.Find(control, "sqlite3_file_control");
        library.Find(setPatience, "sqlite3_busy_timeout");
        library.Find(wantExtendedCodes, "sqlite3_extended_result_codes");
        library.Find(prepare, "sqlite3_prepare_v3");
        library.Find(finalize, "sqlite3_finalize");
        library.Find(step, "sqlite3_step");
        library.Find(reset, "sqlite3_reset");
        library.Find(clear, "sqlite3_clear_bindings");
        library.Find(bindNumber, "sqlite3_bind_int64");
        library.Find(bindText, "sqlite3_bind_text64");
        library.Find(bindBlob, "sqlite3_bind_blob64");
        library.Find(bindNothing, "sqlite3_bind_null");
        library.Find(type, "sqlite3_column_type");
        library.Find(number, "sqlite3_column_int64");
        library.Find(bytes, "sqlite3_column_blob");
        library.Find(size, "sqlite3_column_bytes");
        library.Find(message, "sqlite3_errmsg");
        library.Find(describe, "sqlite3_errstr");
        library.Find(systemError, "sqlite3_system_errno");
        library.Find(lastRow, "sqlite3_last_insert_rowid");
        library.Find(isOutside, "sqlite3_get_autocommit");
        library.Find(tellJournal, "sqlite3_wal_hook");
        library.Find(status, "sqlite3_db_status");
        library.Find(way, "sqlite3_vfs_find");
        library.Find(addWay, "sqlite3_vfs_register");
        library.Find(removeWay, "sqlite3_vfs_unregister");
        // Nobody asks how much memory SQLite has, and counting it takes a lock for each piece: 2% of a
        // command's instructions. If the process uses the library already, this is too late, but harmless.
        configureAll(SQLITE_CONFIG_MEMSTATUS, 0);
    }
};

inline const Sqlite& TheSqlite() {
    static const Sqlite sqlite;
    return sqlite;
}

}  // namespace ZET::Deploy

#endif
