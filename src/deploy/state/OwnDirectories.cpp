#include "deploy/state/OwnDirectories.h"

#include <map>
#include <set>

#include "deploy/host/Words.h"
#include "deploy/state/ConfFile.h"
#include "deploy/state/Host.h"

namespace ZET::Deploy {

namespace {

/// If several lines give one, the last counts.
std::map<std::string, std::string> DirectoriesIn(std::string_view text) {
    std::map<std::string, std::string> directories;
    for (GivenParameter& given : ReadConfText("", text).given)
        if (IsOwnDirectory(given.name)) directories[given.name] = std::move(given.value);
    return directories;
}

std::string DirectoryIn(const std::map<std::string, std::string>& directories, const std::string& name) {
    const auto given = directories.find(name);
    return given != directories.end() ? given->second : KnownParameter(name)->value;
}

}  // namespace

std::string CannotMove(const std::string& name) {
    return Words("%s cannot be changed while something is committed, which is known there", name);
}

std::set<std::string> DirectoriesThatDiffer(std::string_view one, std::string_view other) {
    const std::map<std::string, std::string> sides[] = {DirectoriesIn(one), DirectoriesIn(other)};
    std::set<std::string> names;
    for (const auto& side : sides)
        for (const auto& [name, directory] : side)
            if (DirectoryIn(sides[0], name) != DirectoryIn(sides[1], name)) names.insert(name);
    return names;
}

}  // namespace ZET::Deploy
