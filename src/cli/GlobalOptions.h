#ifndef ZET_GLOBAL_OPTIONS_H
#define ZET_GLOBAL_OPTIONS_H

#include <string>

#include "zet/deploy/Options.h"

namespace ZET::Cli {

/// The options that every command takes, and which command it is.
struct GlobalOptions : Deploy::Options {
    std::string configFile = "/etc/zet/zet.conf";
    bool isConfigFileNamed = false;  ///< whether the caller gave it
    bool json = false;
    bool quiet = false;
    bool verbose = false;
    std::string color = "auto";
    std::string log = "stderr";
};

}  // namespace ZET::Cli

#endif
