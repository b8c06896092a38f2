#ifndef ZET_FIELDS_H
#define ZET_FIELDS_H

#include <cstdint>

#include "cli/Names.h"
#include "cli/Report.h"
#include "zet/ZETProblem.h"
#include "zet/deploy/Failure.h"
#include "zet/deploy/FileOutcome.h"

/// How the JSON document describes what commands find and do.
namespace ZET::Cli {

Fields FieldsOf(const Problem& problem);

/// The failure that ended the command.
Fields FieldsOf(const Failure& failure);

/// A file and what happened, or would happen, to it. `path` is its real name; `edited` tells, if known,
/// whether a commit undoes changes by others.
Fields FieldsOf(const FileOutcome& outcome, const std::string& path, bool isSecret,
                const Value& edited = nullptr);

/// The fields of a difference.
void AddDiff(Fields& fields, const ShownDiff& diff);

/// 0 and the empty text become null.
Value NumberOrNull(std::int64_t number);
Value TextOrNull(const std::string& text);

}  // namespace ZET::Cli

#endif
