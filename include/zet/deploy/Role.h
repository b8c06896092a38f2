#ifndef ZET_DEPLOY_ROLE_H
#define ZET_DEPLOY_ROLE_H

#include <optional>
#include <string_view>

namespace ZET::Deploy {

/// The role of a host in its network domain.
enum class Role { Server, Client };

inline constexpr Role kRoles[] = {Role::Server, Role::Client};

/// The name used in files, in messages and by the module.
constexpr const char* NameOf(Role role) {
    return role == Role::Server ? "server" : "client";
}

/// The command for hosts of the role.
constexpr const char* ProgramOf(Role role) {
    return role == Role::Server ? "zet-init" : "zet-client";
}

/// None if the word names no role.
constexpr std::optional<Role> RoleNamed(std::string_view name) {
    for (const Role role : kRoles)
        if (name == NameOf(role)) return role;
    return std::nullopt;
}

/// The other role; a host can have both.
constexpr Role OtherRole(Role role) {
    return role == Role::Server ? Role::Client : Role::Server;
}

}  // namespace ZET::Deploy

#endif
