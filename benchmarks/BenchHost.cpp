#include "BenchHost.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace ZET {

namespace {

/// Creates the directory in memory if possible.
std::filesystem::path MakeDirectory() {
    const std::filesystem::path memory = "/dev/shm";
    const auto parent = std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path();
    std::string name = parent / "zet-bench.XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make the directory " + name);
    std::filesystem::create_directory(name + "/templates");
    return name;
}

void Write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream stream(path);
    if (!(stream << text).flush()) throw std::runtime_error("cannot write " + path.string());
}

std::string WriteConfig(const std::filesystem::path& directory) {
    const std::string templates = directory / "templates";
    const std::string file = directory / "zet.conf";
    Write(file, "DOMAIN=example.org\nSERVER=server.example.org\nZET_SYNC=no\nZET_CFG_DIR=" + templates +
                    "\nZET_CFG_TEMPL_DIR=" + templates + "\n");
    return file;
}

}  // namespace

BenchHost::BenchHost() : m_directory(MakeDirectory()), m_host(WriteConfig(m_directory)) {
    ConfigureLog(ZETLogTarget::StandardError, ZETLogWarning, "zet-bench");
}

BenchHost::~BenchHost() {
    std::error_code ignored;
    std::filesystem::remove_all(m_directory, ignored);
}

void BenchHost::WriteTemplate(const std::string& name, const std::string& text) const {
    Write(m_directory / "templates" / name, text);
}

}  // namespace ZET
