#ifndef ZET_DEPLOY_OPTIONS_H
#define ZET_DEPLOY_OPTIONS_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "zet/deploy/Role.h"

namespace ZET::Deploy {

/// One word of a command.
struct CommandWord {
    std::string text;
    bool isText = false;    ///< contents of a file, or a value: hidden from users who may not read the file
    std::size_t shown = 0;  ///< this many leading bytes are shown nevertheless: "NAME="
};

/// How the product is to be used on this host.
struct Options {
    Role role = Role::Client;
    bool needsConfigFile = true;   ///< false: if there is no main file, use the defaults
    bool mendsParameters = false;  ///< use the default of a parameter that names no directory
    std::string root;              ///< the root of a host's tree to work on from outside; empty for this host
    std::string moduleFile;        ///< empty for the one installed with the library
    std::string program = "zet-client";  ///< for messages that name a command
    std::string command;                 ///< shown to those who wait for the lock: "commit-config"
    std::vector<CommandWord> words{};    ///< for the history: the whole command; if empty, `command`
    std::string message{};               ///< for the history: the user's own reason
    bool dryRun = false;                 ///< write nothing
    bool onlyLooks = false;              ///< a pure lookup: files that this user may not write do not matter
    bool wantsDiffs = false;             ///< return a diff of every change
    bool showsSecrets = false;           ///< show texts that are not for everybody
    bool runsChecks = true;              ///< run the check commands of the list
    bool runsChecksOfTree = false;       ///< run them on this host even if `root` is set
    std::map<std::string, std::string> directories{};  ///< by parameter ("ZET_CFG_DIR"), overriding the files
};

}  // namespace ZET::Deploy

#endif
