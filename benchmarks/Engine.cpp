// Drives the module like a host that keeps it loaded: the cost of the engine without a command around it.

#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "zet/IZETConfig.h"
#include "zet/ZETHost.h"

namespace {

using Arguments = std::vector<std::string>;

std::shared_ptr<ZET::IZETConfigFile> OpenFile(ZET::IZETConfig& config, const std::string& file) {
    auto opened = config.OpenConfigFile(file, "client", false);
    if (!opened) throw std::runtime_error("cannot open " + file);
    return opened;
}

/// TEMPLATE TARGET
void Render(ZET::IZETConfig& config, const Arguments& arguments) {
    config.ProcessConfigFileTemplate(arguments.at(0), arguments.at(1), "client", nullptr);
}

/// COUNT DIRECTORY: the templates "0", "1", ... into files of those names
void RenderMany(ZET::IZETConfig& config, const Arguments& arguments) {
    const int count = std::stoi(arguments.at(0));
    for (int number = 0; number < count; ++number) {
        const std::string name = std::to_string(number);
        config.ProcessConfigFileTemplate(name, arguments.at(1) + "/" + name, "client", nullptr);
    }
}

/// FILE NAME VALUE
void SetParam(ZET::IZETConfig& config, const Arguments& arguments) {
    const auto file = OpenFile(config, arguments.at(0));
    file->SetParamValue(arguments.at(1), arguments.at(2));
    file->Save(true);
}

/// FILE NAME
void GetParam(ZET::IZETConfig& config, const Arguments& arguments) {
    std::cout << OpenFile(config, arguments.at(0))->GetParamValue(arguments.at(1)) << '\n';
}

/// FILE
void Strip(ZET::IZETConfig& config, const Arguments& arguments) {
    const auto file = OpenFile(config, arguments.at(0));
    file->RemoveZETMarkers();
    file->Save(true);
}

const std::map<std::string, std::function<void(ZET::IZETConfig&, const Arguments&)>> kWorks = {
    {"render", Render}, {"render-many", RenderMany}, {"set", SetParam}, {"get", GetParam}, {"strip", Strip},
};

void Run(const std::string& configFile, const std::string& module, const std::string& work,
         const Arguments& arguments) {
    ZET::CZETHost host(configFile);
    host.LoadModule(module);
    const auto config = std::dynamic_pointer_cast<ZET::IZETConfig>(host.FindInterface("zet-config"));
    if (!config) throw std::runtime_error(module + " registers no interface \"zet-config\"");
    kWorks.at(work)(*config, arguments);
    if (ZET::CountLoggedErrors() > 0) throw std::runtime_error("the module logged an error");
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 4) {
        std::cerr << "usage: zet-bench-engine CONFIG MODULE render|render-many|set|get|strip ARGUMENT...\n";
        return EXIT_FAILURE;
    }
    try {
        ZET::ConfigureLog(ZET::ZETLogTarget::StandardError, ZET::ZETLogWarning, "zet-bench-engine");
        Run(arguments[1], arguments[2], arguments[3], Arguments(arguments + 4, arguments + count));
    } catch (const std::exception& error) {
        std::cerr << "zet-bench-engine: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
