#ifndef ZET_STATE_DIRECTORY_H
#define ZET_STATE_DIRECTORY_H

#include <string>
#include <vector>

#include "deploy/state/HostProduct.h"

namespace ZET::Deploy {

inline constexpr char kServer[] = "server";
inline constexpr char kClient[] = "client";

/// The other role that a host can have, too.
inline const char* OtherRole(const std::string& role) {
    return role == kServer ? kClient : kServer;
}

/// The names of the files in ZET_VAR_LIB_DIR.
class StateDirectory {
  public:
    explicit StateDirectory(HostProduct& product) : m_path(product.Param("ZET_VAR_LIB_DIR")) {}

    const std::string& Path() const { return m_path; }
    std::string Lock() const { return m_path + "/zet.lock"; }
    std::string Pending() const { return m_path + "/zet.pending"; }
    std::string Manifest(const std::string& role) const { return m_path + "/zet-" + role + ".manifest"; }
    std::string Status(const std::string& role) const { return m_path + "/zet-" + role + ".status"; }

    /// Of a client: the kind of its file server.
    std::string FileServerStatus() const { return Status("client-fs"); }

    /// All of both roles.
    std::vector<std::string> Files() const {
        return {Lock(),          Pending(),       Manifest(kServer), Manifest(kClient),
                Status(kServer), Status(kClient), FileServerStatus()};
    }

  private:
    std::string m_path;
};

}  // namespace ZET::Deploy

#endif
