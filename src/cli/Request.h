#ifndef ZET_REQUEST_H
#define ZET_REQUEST_H

#include <string>
#include <vector>

#include "cli/Names.h"
#include "zet/deploy/EditOptions.h"

namespace ZET {

class Session;

/// What the caller asked for: the command line, parsed and checked for its form.
struct Request {
    std::string program;  ///< "zet-init" or "zet-client"
    std::string role;     ///< "server" or "client", by the name of the program
    std::string command;  ///< the words of the command, "param set"
    int (*run)(Session& session) = nullptr;

    std::string configFile = "/etc/zet/zet.conf";
    bool isConfigFileNamed = false;  ///< by the caller
    bool needsConfigFile = true;     ///< the command is about the product's own files
    std::string root;                ///< empty: the host's own root
    std::string moduleFile;          ///< empty: the one that belongs to the program
    bool dryRun = false;
    bool diff = false;
    bool json = false;
    bool quiet = false;
    bool verbose = false;
    std::string color = "auto";
    std::string log = "stderr";

    std::vector<std::string> names;  ///< TEMPLATE..., TARGET..., NAME...
    std::string file;                ///< FILE
    std::string name;                ///< NAME or TEMPLATE
    std::string pattern;
    std::string text;  ///< VALUE or LINE
    std::string target;
    std::vector<std::string> assignments;  ///< NAME=VALUE of --set and --value
    EditOptions edit;
    bool force = false;
    bool showSecrets = false;
    bool runChecks = false;
    bool noChecks = false;

    /// Nothing is to be written: what this user may not write does not matter.
    bool OnlyLooks() const { return dryRun || command == "check-config"; }
};

}  // namespace ZET

#endif
