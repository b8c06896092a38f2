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
    bool isText = false;    ///< of a file, or a value: not for everybody where the file is not
    std::size_t shown = 0;  ///< so many bytes before the text are for everybody all the same: "NAME="
};

/// How the product is to be used on this host.
struct Options {
    Role role = Role::Client;
    bool needsConfigFile = true;   ///< false: where the main file is not there, the defaults serve
    bool mendsParameters = false;  ///< where a parameter names no directory, its default serves meanwhile
    std::string root;              ///< of a host tree that is worked on from outside; empty: this host itself
    std::string moduleFile;        ///< empty: the one that was installed with the library
    std::string program = "zet-client";  ///< for messages that name a command
    std::string command;                 ///< told to whoever waits for the lock: "commit-config"
    std::vector<CommandWord> words{};    ///< for the history: the whole command; empty: `command`
    std::string message{};               ///< for the history: why it is done, in the user's own words
    bool dryRun = false;                 ///< nothing is written
    bool onlyLooks = false;              ///< nor would it be: what this user may not write does not matter
    bool wantsDiffs = false;             ///< of every change
    bool showsSecrets = false;           ///< texts that are not for everybody, too
    bool runsChecks = true;              ///< the check commands of the list
    bool runsChecksOfTree = false;       ///< with a root: on this host
    std::map<std::string, std::string> directories{};  ///< "ZET_CFG_DIR" and the like, not as the files say
};

}  // namespace ZET::Deploy

#endif
