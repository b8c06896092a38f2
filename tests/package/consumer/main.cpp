// A program of somebody else that embeds the core: zet-consumer PARAMETER-FILE TEMPLATE TARGET
// How it is built tells it where the module is, as ZET_MODULE.
#include <iostream>
#include <memory>

#include "zet/IZETConfig.h"
#include "zet/ZETErrors.h"
#include "zet/ZETHost.h"

namespace {

void Render(const ZET::CZETHost& host, const char* templateName, const char* target) {
    const auto config = std::dynamic_pointer_cast<ZET::IZETConfig>(host.FindInterface("zet-config"));
    if (!config) throw ZET::EZETError("there is no interface \"zet-config\"", "");
    config->ProcessConfigFileTemplate(templateName, target, "client", nullptr);
}

}  // namespace

int main(int, char** arguments) try {
    ZET::CZETHost host(arguments[1]);
    host.LoadModule(ZET_MODULE);
    Render(host, arguments[2], arguments[3]);
    host.UnloadModules();
    return 0;
} catch (const ZET::EZETError& error) {
    std::cerr << error.what() << "\n";
    return 1;
}
