#ifndef ZET_REMEDY_H
#define ZET_REMEDY_H

#include <exception>
#include <string>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "zet/ZETErrors.h"

/// What somebody can do about an error of the system, or of the core and the module, whose messages only tell
/// what happened.
namespace ZET::Deploy {

/// What the system calls an error, in the reader's language also while a file is written in another one.
std::string ReasonOf(int error);

/// The failure of a system call: `facts`, with the reason after their text. A remedy that they lack is that
/// of the reason, if there is one.
Failure SystemFailure(Problem facts, int error);

/// Fails by the `errno` of a system call that has just failed; `what` says about the file what it means.
[[noreturn]] void FailOfCall(const std::string& path, const std::string& what);

/// What any call failed with, in the words for its reader. An error of the core or the module gets the remedy
/// of its reason, or else `otherwise`, unless it has its own.
Failure FailureOf(const std::exception& error, const std::string& otherwise = "");

/// The same of an error of the core or the module, with this remedy.
Failure FailureWith(const EZETError& error, const std::string& remedy);

/// The `errno` that an error of the core is about; 0: none.
int ErrorNumberOf(const EZETError& error);

/// Does what `call` does; an error of the core or the module becomes a `Failure` with a remedy, the text
/// `otherwise` where its reason has none.
template <typename Call>
auto RemedyErrors(const char* otherwise, Call call) {
    try {
        return call();
    } catch (const EZETError& error) {
        throw FailureOf(error, _(otherwise));
    }
}

}  // namespace ZET::Deploy

#endif
