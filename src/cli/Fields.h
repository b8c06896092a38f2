#ifndef ZET_FIELDS_H
#define ZET_FIELDS_H

#include "cli/Names.h"
#include "cli/Report.h"
#include "deploy/host/FileState.h"
#include "zet/ZETProblem.h"

/// What the document says of the things that commands find and do.
namespace ZET {

Fields FieldsOf(const Problem& problem);

/// mode_before, mode_after, owner_before, owner_after; null for a file that is not there.
Fields ChangeFields(const FileState& before, const FileState& after);

}  // namespace ZET

#endif
