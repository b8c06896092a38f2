#ifndef ZET_STATE_DIRECTORY_H
#define ZET_STATE_DIRECTORY_H

#include <string>
#include <utility>
#include <vector>

#include "deploy/state/store/StoreNames.h"
#include "zet/deploy/Role.h"

namespace ZET::Deploy {

/// The names of the files in ZET_VAR_LIB_DIR.
class StateDirectory {
  public:
    explicit StateDirectory(std::string path) : m_path(std::move(path)) {}

    const std::string& Path() const { return m_path; }
    std::string Lock() const { return m_path + "/zet.lock"; }
    std::string Store() const { return m_path + "/state.db"; }
    std::string Status(Role role) const { return m_path + "/zet-" + NameOf(role) + ".status"; }

    /// For a client: the kind of its file server.
    std::string FileServerStatus() const { return m_path + "/zet-client-fs.status"; }

    /// All statuses that a commit of the role writes.
    std::vector<std::string> StatusesOf(Role role) const {
        if (role != Role::Client) return {Status(role)};
        return {Status(role), FileServerStatus()};
    }

    /// All files, including those of both roles.
    std::vector<std::string> Files() const {
        std::vector<std::string> files = {Lock(), FileServerStatus()};
        for (const Role role : kRoles)
            files.push_back(Status(role));
        for (const char* const suffix : kStoreSuffixes)
            files.push_back(Store() + suffix);
        return files;
    }

  private:
    std::string m_path;
};

}  // namespace ZET::Deploy

#endif
