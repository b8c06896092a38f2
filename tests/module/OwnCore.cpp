// A host with a core of its own, of which the module finds the services in the process:
// zet-own-core-... MODULE
#include <dlfcn.h>

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "RecordingCore.h"
#include "zet/IZETConfig.h"
#include "zet/ZETErrors.h"
#include "zet/ZETModule.h"

namespace {

template <typename Function>
Function* Find(void* handle, const char* name) {
    void* const found = ::dlsym(handle, name);
    if (found == nullptr) throw std::runtime_error(::dlerror());
    return reinterpret_cast<Function*>(found);
}

/// The module throws an error of this core's, which is known here, and everything it asks for is noted here.
void RequireServicesOf(ZET::RecordingCore& core, ZET::IZETConfig& config) {
    try {
        config.OpenConfigFile("", "client", false);
        throw std::runtime_error("an empty name was taken");
    } catch (const ZET::EZETCheckError&) {
    }
    if (config.OpenConfigFile("/nowhere/nothing", "client", false))
        throw std::runtime_error("a file was opened");
    if (core.Log().empty() || core.Messages().empty()) throw std::runtime_error("the log is another core's");
}

void Serve(void* module) {
    const ZET::ZETModuleRecord host = {1 * 65536, "own-core", "1", 0, nullptr, nullptr};
    ZET::RecordingCore core;
    if (Find<decltype(get_module_info)>(module, "get_module_info")(&host) == nullptr)
        throw std::runtime_error("the module refuses the host");
    if (!Find<decltype(module_init)>(module, "module_init")(core))
        throw std::runtime_error("the module did not start");
    const auto config = std::dynamic_pointer_cast<ZET::IZETConfig>(core.Interfaces().at(0));
    if (!config) throw std::runtime_error("no interface");
    RequireServicesOf(core, *config);
    Find<decltype(module_done)>(module, "module_done")(core);
}

}  // namespace

int main(int, char** arguments) try {
    void* const module = ::dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) throw std::runtime_error(::dlerror());
    Serve(module);
    return 0;
} catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 1;
}
