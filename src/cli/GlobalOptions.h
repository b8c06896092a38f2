#ifndef ZET_GLOBAL_OPTIONS_H
#define ZET_GLOBAL_OPTIONS_H

#include <string>
#include <vector>

#include "zet/deploy/Options.h"
#include "zet/deploy/Role.h"

namespace ZET::Cli {

/// What every command may be told, and which one it is.
struct GlobalOptions {
    std::string program;                       ///< "zet-init" or "zet-client"
    Deploy::Role role = Deploy::Role::Client;  ///< by the name of the program
    std::string command;                       ///< its words, "param set"
    std::vector<Deploy::CommandWord> words;    ///< all that the caller wrote behind the program's name

    std::string configFile = "/etc/zet/zet.conf";
    bool isConfigFileNamed = false;  ///< by the caller
    std::string root;                ///< empty: the host's own root
    std::string moduleFile;          ///< empty: the one that belongs to the program
    std::string message;             ///< why the caller does it; empty: he does not say
    bool dryRun = false;
    bool diff = false;
    bool json = false;
    bool showSecrets = false;
    bool quiet = false;
    bool verbose = false;
    std::string color = "auto";
    std::string log = "stderr";
};

}  // namespace ZET::Cli

#endif
