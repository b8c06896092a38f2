#ifndef ZET_PARAM_RULES_H
#define ZET_PARAM_RULES_H

#include <string>

#include "text/ParamLook.h"
#include "zet/deploy/Observer.h"

/// What a file holds of a parameter that the module would not see, or would see too much of. Each refusal is
/// a `Failure`.
namespace ZET::Deploy {

/// A parameter as it was found in a file.
struct FoundParam {
    const std::string& path;
    const std::string& name;
    const Text::ParamLook& look;
};

/// No line sets it with blanks before the "=": such a line stays what it is, and programs that read the file
/// would see two. `command` is what takes a PATTERN instead, and `effect` what it does to the line.
void RequireNoBlanks(const FoundParam& found, const std::string& command, const std::string& effect);

/// No line sets it behind a byte order mark, where it stays what it is, too.
void RequireNoMarkBefore(const FoundParam& found);

/// Only one section of the file has it; of the lines that a lookup, an edit or a restore would take.
void RequireOneSectionToGet(const FoundParam& found);
void RequireOneSectionToSet(const FoundParam& found);
void RequireOneSectionToRestore(const FoundParam& found);

/// Where the edit would add a line, the file has one section at most in which it can come to stand.
void RequirePlaceForNewLine(const FoundParam& found);

/// Tells which lines, other than the one that everybody expects, the edit is about.
void TellLinesToSet(Observer& observer, const FoundParam& found);

}  // namespace ZET::Deploy

#endif
