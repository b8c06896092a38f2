#ifndef ZET_SLOT_CORE_H
#define ZET_SLOT_CORE_H

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "zet/IZETCore.h"

namespace ZET {

/// A core assembled by hand from a table of functions, without the compiler's knowledge of `IZETCore`. It
/// records the index of each function that is called; the destructor has the indexes 0 and 1.
class SlotCore {
  public:
    SlotCore();
    SlotCore(const SlotCore&) = delete;
    SlotCore& operator=(const SlotCore&) = delete;

    IZETCore& Core() { return *reinterpret_cast<IZETCore*>(this); }

  private:
    void* const* m_table;  ///< at the start of the object, where an object has it

  public:
    std::vector<std::string> calls;  ///< "index arguments"
    std::map<std::string, std::string> params;
    std::string domainName = "example.org";
    std::string serverName = "srv";
    std::vector<std::shared_ptr<CZETInterface>> interfaces;
};

}  // namespace ZET

#endif
