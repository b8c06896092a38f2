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
    /// False if the name is taken. Throws `EZETCheckError` if the interface is null or has no name.
    bool Register(std::shared_ptr<CZETInterface> interface);

    /// The last name that `Register` refused since the previous call; empty if none.
    std::string TakeRefusedName();

    /// False if there is none of that name, or if it is kept.
    bool Remove(const std::string& name);

    /// Until the next call, `Remove` does not remove interfaces of these names. They must be sorted and live
    /// that long; null ends it.
    void Keep(const std::vector<std::string>* names) noexcept { m_kept = names; }

    /// `names` must be sorted.
    void RemoveAllBut(const std::vector<std::string>& names) noexcept;

    /// Null if there is none of that name.
    std::shared_ptr<CZETInterface> Find(const std::string& name) const;

    std::vector<std::string> Names() const;

  private:
    std::map<std::string, std::shared_ptr<CZETInterface>> m_interfaces;
    std::string m_refusedName;
    const std::vector<std::string>* m_kept = nullptr;
};

}  // namespace ZET::Core

#endif
