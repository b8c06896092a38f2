#ifndef ZET_LOADED_MODULE_H
#define ZET_LOADED_MODULE_H

#include <cstddef>
#include <string>
#include <vector>

#include "zet/ZETModule.h"

namespace ZET {

/// The built module, loaded as a host loads it.
class LoadedModule {
  public:
    LoadedModule();
    ~LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    static std::string Path();

    decltype(&get_module_info) info = nullptr;
    decltype(&module_init) init = nullptr;
    decltype(&module_done) done = nullptr;

  private:
    void* m_handle;
};

/// Calls an operation as compiled code does: by its index in the table of virtual functions, where the
/// destructor has two entries.
template <typename Result, typename... Arguments>
Result CallSlot(void* object, std::size_t slot, Arguments... arguments) {
    using Operation = Result (*)(void*, Arguments...);
    void** const table = *static_cast<void***>(object);
    return reinterpret_cast<Operation>(table[slot])(object, static_cast<Arguments>(arguments)...);
}

/// The lines that a program prints.
std::vector<std::string> OutputOf(const std::string& command);

/// The shared objects that a file needs.
std::vector<std::string> NeedsOf(const std::string& file);

}  // namespace ZET

#endif
