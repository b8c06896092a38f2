/// A complete module for the tests of the loader. A source file defines the parts in which it differs and
/// then includes this file; without definitions, it is a sound module.

#include <memory>
#include <string>

#include "zet/ZETErrors.h"
#include "zet/ZETModule.h"

#ifndef MODULE_NAME
#define MODULE_NAME "sound"
#endif
#ifndef MODULE_RECORD_NAME
#define MODULE_RECORD_NAME MODULE_NAME
#endif
#ifndef MODULE_VERSION
#define MODULE_VERSION 0x10725
#endif
#ifndef MODULE_TYPE
#define MODULE_TYPE 1
#endif
#ifndef MODULE_GET_INFO
#define MODULE_GET_INFO return host->type == 0 ? &record : nullptr;
#endif
#ifndef MODULE_INIT
#define MODULE_INIT return Register(core);
#endif
#ifndef MODULE_DONE
#define MODULE_DONE core.RemoveInterface(MODULE_NAME);
#endif

namespace {

/// Appends to the core's parameter "TRACE", which shows the tests the order of events.
void Trace(ZET::IZETCore& core, const std::string& event) {
    core.UpdateParam("TRACE", core.GetParam("TRACE") + MODULE_NAME " " + event + ";");
}

class ObservedInterface : public ZET::CZETInterface {
  public:
    explicit ObservedInterface(ZET::IZETCore& core) : CZETInterface(MODULE_NAME), m_core(core) {}
    ~ObservedInterface() override { Trace(m_core, "interface gone"); }

  private:
    ZET::IZETCore& m_core;
};

/// Records when the shared object is unloaded, if the module was given the core and was not ended.
struct UnloadObserver {
    ~UnloadObserver() {
        if (core != nullptr) Trace(*core, "unloaded");
    }
    ZET::IZETCore* core = nullptr;
} unloadObserver;

[[maybe_unused]] bool Register(ZET::IZETCore& core) {
    unloadObserver.core = &core;
    return core.RegisterInterface(std::make_shared<ObservedInterface>(core));
}

[[maybe_unused]] const ZET::ZETModuleRecord record = {
    MODULE_VERSION, MODULE_RECORD_NAME, "1.7.37", MODULE_TYPE, nullptr, nullptr};

}  // namespace

extern "C" {

#ifndef MODULE_WITHOUT_GET_INFO
const ZET::ZETModuleRecord* get_module_info([[maybe_unused]] const ZET::ZETModuleRecord* host) {
    MODULE_GET_INFO
}
#endif

#ifndef MODULE_WITHOUT_INIT
bool module_init([[maybe_unused]] ZET::IZETCore& core) {
    MODULE_INIT
}
#endif

#ifndef MODULE_WITHOUT_DONE
void module_done([[maybe_unused]] ZET::IZETCore& core) {
    Trace(core, "done");
    unloadObserver.core = nullptr;
    MODULE_DONE
}
#endif
}
