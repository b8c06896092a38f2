#ifndef ZET_INSTRUCTIONS_H
#define ZET_INSTRUCTIONS_H

#include <optional>
#include <string>

#include "deploy/state/HostProduct.h"
#include "zet/ZETProblem.h"

/// What tells a command what to do: when root runs one that writes, nobody else may have a hand in it.
namespace ZET::Deploy {

/// What is wrong with one of its files or directories, under the path that can be opened, and with the way to
/// one that is not there yet.
std::optional<Problem> CheckInstruction(const Paths& paths, const std::string& path);

/// The same of one that was found.
std::optional<Problem> CheckInstruction(const FoundFile& found);

/// A `Failure` with it. Of one that is not there yet, the way to it is looked at.
void RequireOwnInstruction(const Paths& paths, const std::string& path);

/// The same of the way to it alone, for what is looked at itself by whoever opens it.
std::optional<Problem> CheckWayTo(const Paths& paths, const std::string& path);

/// The same of the module, which is the host's own, whatever tree is worked on.
std::optional<Problem> CheckModule(HostProduct& product);

/// A `Failure` with what is wrong with the module, the main file, those with values, and the product's
/// directories.
void RequireOwnInstructions(HostProduct& product);

}  // namespace ZET::Deploy

#endif
