#include "LoadedModule.h"

#include <dlfcn.h>

#include <cstdio>
#include <stdexcept>

namespace ZET {

namespace {
template <typename Function>
void Find(void* handle, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(handle, name));
    if (function == nullptr) throw std::runtime_error(std::string("no ") + name);
}
}  // namespace

LoadedModule::LoadedModule() : m_handle(::dlopen(Path().c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_handle == nullptr) throw std::runtime_error(::dlerror());
    Find(m_handle, "get_module_info", info);
    Find(m_handle, "module_init", init);
    Find(m_handle, "module_done", done);
}

LoadedModule::~LoadedModule() {
    ::dlclose(m_handle);
}

std::string LoadedModule::Path() {
    return ZET_MODULE_FILE;
}

std::vector<std::string> OutputOf(const std::string& command) {
    std::FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
    std::vector<std::string> lines;
    char line[4096] = "";
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        lines.emplace_back(line);
        if (lines.back().ends_with('\n')) lines.back().pop_back();
    }
    if (::pclose(pipe) != 0) throw std::runtime_error("failed: " + command);
    return lines;
}

std::vector<std::string> NeedsOf(const std::string& file) {
    std::vector<std::string> needs;
    for (const std::string& line : OutputOf("readelf -dW '" + file + "'")) {
        if (line.find("(NEEDED)") == std::string::npos) continue;
        const auto from = line.find('[') + 1;
        needs.push_back(line.substr(from, line.find(']') - from));
    }
    // All need the C library, so an output that names none was not understood.
    if (needs.empty()) throw std::runtime_error("no libraries found that are needed by " + file);
    return needs;
}

}  // namespace ZET
