#ifndef ZET_INSTRUCTIONS_H
#define ZET_INSTRUCTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/state/HostProduct.h"
#include "zet/ZETProblem.h"

/// What tells a command what to do. If root runs one that writes, nobody else may have a hand in it.
namespace ZET::Deploy {

/// What is wrong with such a file or directory, whose path can be opened, or with the way to it if it does
/// not exist yet. None unless root runs the command.
std::optional<Problem> CheckInstruction(const Paths& paths, const std::string& path);

/// The same for a file that was found already.
std::optional<Problem> CheckInstruction(const FoundFile& found);

/// Throws that problem as a `Failure`, if there is one.
void RequireOwnInstruction(const Paths& paths, const std::string& path);

/// The same for the way alone, if whoever opens the file checks that itself.
std::optional<Problem> CheckWayTo(const Paths& paths, const std::string& path);

/// The same for the module, which is the host's own, whatever tree is worked on.
std::optional<Problem> CheckModule(HostProduct& product);

/// Throws a `Failure` if something is wrong with the module, the main file, the files with values, or the
/// product's directories.
void RequireOwnInstructions(HostProduct& product);

/// Takes out each problem that is there already: several parameters may name one directory.
void TakeOutRepeats(std::vector<Problem>& problems);

}  // namespace ZET::Deploy

#endif
