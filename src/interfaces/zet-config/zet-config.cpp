#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>

#include "Messages.h"
#include "ZETConfig.h"
#include "zet/ZETModule.h"

namespace {

constexpr char kName[] = "zet-config";
constexpr std::uintptr_t kVersion = ZET_RECORD_VERSION;
constexpr char kVersionText[] = ZET_RECORD_VERSION_TEXT;
constexpr std::uint32_t kModuleType = 1;
constexpr std::uint32_t kHostType = 0;
/// Callers rely on this line number in the message; it does not follow the source.
constexpr std::size_t kInvalidHostTypeLine = 17;

ZET::ZETModuleRecord moduleRecord = {kVersion, kName, kVersionText, kModuleType, nullptr, nullptr};
std::string moduleDescription;  ///< owns the record's description once it is set
bool moduleInitialised = false;

}  // namespace

const ZET::ZETModuleRecord* get_module_info(const ZET::ZETModuleRecord* host) {
    if (host->type != kHostType) {
        ZET::Message message(ZET::kEntryPointsSource, "get_module_info", kInvalidHostTypeLine);
        // A null text puts the stream into its failed state, as for any other writer.
        std::cerr << message.Format()(1, message.Translated(ZET::kCoreDomain, "Invalid host type %d."),
                                      static_cast<int>(host->type))
                  << std::endl;
        return nullptr;
    }
    if (moduleRecord.description == nullptr) {
        moduleDescription = dgettext(ZET::kModuleDomain, "ZET config interface");
        moduleRecord.description = moduleDescription.c_str();
    }
    return &moduleRecord;
}

bool module_init(ZET::IZETCore& core) {
    if (moduleInitialised) return true;
    const auto config = std::make_shared<ZET::CZETConfig>(core);
    // The result is ignored: the core knows what it returned and decides whether a taken name is an error.
    core.RegisterInterface(config);
    moduleInitialised = true;
    return true;
}

void module_done(ZET::IZETCore& core) {
    core.RemoveInterface(kName);
    moduleInitialised = false;
}
