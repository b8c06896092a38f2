#ifndef ZET_REMEDY_H
#define ZET_REMEDY_H

#include <string>

#include "deploy/host/Failure.h"
#include "zet/ZETErrors.h"

/// What somebody can do about an error of the system, or of the core and the module, whose messages only tell
/// what happened.
namespace ZET::Deploy {

/// " (remedy)" for a value of `errno`; empty when there is none to give.
std::string RemedyFor(int error);

/// The message with a remedy: by the cause that it names, or else `otherwise` in brackets, if that is not
/// empty. A message that ends with a remedy stays as it is.
std::string WithRemedy(const std::string& message, const std::string& otherwise = "");

/// Does what `call` does; an error of the core or the module becomes a `Failure` with a remedy.
template <typename Call>
auto RemedyErrors(const std::string& otherwise, Call call) {
    try {
        return call();
    } catch (const EZETError& error) {
        throw Failure(WithRemedy(error.what(), otherwise));
    }
}

}  // namespace ZET::Deploy

#endif
