#ifndef ZET_REMEDY_H
#define ZET_REMEDY_H

#include <exception>
#include <string>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "zet/ZETErrors.h"

/// What the user can do about an error of the system, or of the core and the module, whose messages only say
/// what happened.
namespace ZET::Deploy {

/// The system's text for an error, in the reader's language even while a file is written in another.
std::string ReasonOf(int error);

/// The failure of a system call: `facts`, with the reason appended to their text. If they lack a remedy, they
/// get that of the reason, if it has one.
Failure SystemFailure(Problem facts, int error);

/// Throws the failure of the system call that set `errno`; `what` says what that means for the file.
[[noreturn]] void FailOfCall(const std::string& path, const std::string& what);

/// The failure for any exception, in words for its reader. An error of the core or the module that has no
/// remedy gets that of its reason, or else `otherwise`.
Failure FailureOf(const std::exception& error, const std::string& otherwise = "");

/// The failure for an error of the core or the module, with this remedy.
Failure FailureWith(const EZETError& error, const std::string& remedy);

/// The `errno` that an error of the core or the module is about; 0 if it is about none.
int ErrorNumberOf(const EZETError& error);

/// Runs `call`. An error of the core or the module becomes a `Failure` with a remedy: `otherwise`, which is
/// translated, if its reason has none.
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
