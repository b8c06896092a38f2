#ifndef ZET_ENTRY_TO_OPEN_H
#define ZET_ENTRY_TO_OPEN_H

#include "deploy/state/Host.h"
#include "deploy/state/store/Records.h"

namespace ZET::Deploy {

/// Whether the command's words hold texts of files, so that it matters who may read those files.
bool HasTexts(const Options& options);

/// Who runs the command, and with which words. If `isPrivate`, texts of files in the words are hidden.
RecordedEntry EntryToOpen(const Host& host, bool isPrivate);

}  // namespace ZET::Deploy

#endif
