#ifndef ZET_ZETINTERFACE_H
#define ZET_ZETINTERFACE_H

#include <string>

#include "zet/ZETApi.h"

namespace ZET {

/// Base of every interface object that a module registers with the core, which finds it by its name.
class ZET_API CZETInterface {
  public:
    explicit CZETInterface(const std::string& name);
    virtual ~CZETInterface();
    CZETInterface(const CZETInterface&) = delete;
    CZETInterface& operator=(const CZETInterface&) = delete;

    /// The name; valid as long as the object.
    const std::string& GetName() const;

  private:
    std::string m_name;
};

}  // namespace ZET

#endif
