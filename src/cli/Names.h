#ifndef ZET_CLI_NAMES_H
#define ZET_CLI_NAMES_H

namespace ZET::Deploy {}

/// The commands use the names of the library that does their work.
namespace ZET::Cli {
using namespace Deploy;
}

#endif
