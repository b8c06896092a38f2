#ifndef ZET_TESTS_CORE_LOADER_FIXTURE_H
#define ZET_TESTS_CORE_LOADER_FIXTURE_H

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "Support.h"

namespace ZET::Test {

class Loader : public HostFixture {
  protected:
    Loader() {
        Start("TRACE=\n");
        ::chmod(m_directory.Path().c_str(), 0755);
    }

    /// The path of a copy of the module that only its owner can write.
    std::string Module(const std::string& name) {
        const std::string path = m_directory / (name + ".so");
        if (!Exists(path)) std::filesystem::copy_file(std::string(MODULE_DIR "/") + name + ".so", path);
        ::chmod(path.c_str(), 0755);
        return path;
    }

    void Load(const std::string& name) { m_host->LoadModule(Module(name)); }

    /// The reason why the module is refused; checks that nothing of it is left.
    std::string Refusal(const std::string& path) {
        const std::string message = MessageOf<EZETError>([&] { m_host->LoadModule(path); });
        const std::string start = "Failed to load module '" + path + "': ";
        EXPECT_THAT(message, testing::StartsWith(start));
        EXPECT_FALSE(IsInMemory(path));
        return message.substr(std::min(start.size(), message.size()));
    }

    std::string RefusalOf(const std::string& name) { return Refusal(Module(name)); }

    /// As `Refusal`, for a module that was already initialised: its code stays.
    std::string LateRefusalOf(const std::string& name) {
        const std::string message = MessageOf<EZETError>([&] { Load(name); });
        const std::string start = "Failed to load module '" + Module(name) + "': ";
        EXPECT_THAT(message, testing::StartsWith(start));
        EXPECT_TRUE(IsInMemory(Module(name)));
        return message.substr(std::min(start.size(), message.size()));
    }

    std::string Trace() { return Core().GetParam("TRACE"); }

    static bool IsInMemory(const std::string& path) {
        // Anything else is not loaded, and for a pipe the system's loader would wait for a writer.
        if (!std::filesystem::is_regular_file(path)) return false;
        void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr) ::dlclose(handle);
        return handle != nullptr;
    }
};

}  // namespace ZET::Test

#endif
