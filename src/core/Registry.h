#ifndef ZET_CORE_REGISTRY_H
#define ZET_CORE_REGISTRY_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "zet/ZETInterface.h"

namespace ZET::Core {

/// The interfaces that modules registered, by name.
class Registry {
  public:
    /// False when the name is taken. Throws `EZETCheckError` when there is no interface or no name.
    bool Register(std::shared_ptr<CZETInterface> interface);

    /// The name that was last found taken since the last call; empty when there is none.
    std::string TakeRefusedName();

    /// False when there is none of that name, or it is kept.
    bool Remove(const std::string& name);

    /// Until the next call, `Remove` leaves the interfaces of these names alone. They are sorted, and outlive
    /// that; null lets all go.
    void Keep(const std::vector<std::string>* names) noexcept { m_kept = names; }

    /// `names` are sorted.
    void RemoveAllBut(const std::vector<std::string>& names) noexcept;

    /// Null when there is none of that name.
    std::shared_ptr<CZETInterface> Find(const std::string& name) const;

    std::vector<std::string> Names() const;

  private:
    std::map<std::string, std::shared_ptr<CZETInterface>> m_interfaces;
    std::string m_refusedName;
    const std::vector<std::string>* m_kept = nullptr;
};

}  // namespace ZET::Core

#endif
