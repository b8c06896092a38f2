#include "Loader.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <libintl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>

#include "Descriptor.h"
#include "Message.h"
#include "Printable.h"
#include "zet/ZETErrors.h"
#include "zet/ZETLogProvider.h"

namespace ZET {

namespace {

constexpr std::uintptr_t kVersion =
    std::uintptr_t{ZET_VERSION_MAJOR} * 65536 + std::uintptr_t{ZET_VERSION_MINOR} * 256 + ZET_VERSION_PATCH;
constexpr std::uint32_t kHostType = 0;
constexpr std::uint32_t kModuleType = 1;

constexpr ZETModuleRecord kHost = {kVersion, "zet-core", ZET_VERSION_TEXT, kHostType, nullptr, nullptr};

[[noreturn]] void RefuseModule(const std::string& path, const std::string& reason,
                               const std::string& detail) {
    throw EZETError(Message("Failed to load module '%s': %s.", Printable(path).c_str(), reason.c_str()),
                    detail);
}

/// Absolute and without links: the search path for libraries plays no part, and the directory that is checked
/// is the one that the file is in.
std::string ResolvePath(const std::string& path) {
    RequireNotEmpty(path, "LoadModule");
    if (path.find('\0') != std::string::npos)
        RefuseModule(path, Message("the file name holds a NUL byte"), "");
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    if (resolved == nullptr) RefuseModule(path, Message("%m"), "");
    return resolved.get();
}

bool IsWritableByOthers(const struct stat& status) {
    return status.st_uid != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

/// A module runs with the rights of its host: as root, only root may have a hand in it.
void CheckFile(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_PATH | O_CLOEXEC));
    struct stat status;
    if (!file.IsOpen() || ::fstat(file.Number(), &status) != 0) RefuseModule(path, Message("%m"), "");
    if (!S_ISREG(status.st_mode)) RefuseModule(path, Message("it is not a regular file"), "");
    if (::geteuid() != 0) return;
    if (IsWritableByOthers(status))
        RefuseModule(path, Message("others than root may write the file, and root runs it"), "");
    const std::string directory = path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
    if (::stat(directory.c_str(), &status) != 0) RefuseModule(path, Message("%m"), "");
    if (IsWritableByOthers(status))
        RefuseModule(path, Message("others than root may write its directory, and root runs it"), "");
}

void* Open(const std::string& path) {
    CheckFile(path);
    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) RefuseModule(path, ::dlerror(), "");
    return handle;
}

struct Problem {
    std::string message;
    std::string detail;
};

/// Runs code of the module. The code of what it throws may be in the module, too, and must be gone before
/// it: only the texts are kept.
template <typename Call>
std::optional<Problem> Run(Call call) {
    try {
        call();
        return std::nullopt;
    } catch (const EZETError& error) {
        return Problem{error.GetMessage(), error.GetDetail()};
    } catch (const std::exception& error) {
        return Problem{error.what(), ""};
    } catch (...) {
        return Problem{Message("an exception of an unknown kind"), ""};
    }
}

/// A module is ended even when there is no memory for words about it.
template <typename Call>
void TellIfPossible(Call call) {
    try {
        call();
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace

void LoadedModule::Closer::operator()(void* handle) const {
    ::dlclose(handle);
}

LoadedModule::LoadedModule(CZETCore& core, const std::string& path, const std::vector<std::string>& taken)
    : m_core(core), m_path(ResolvePath(path)), m_handle(Open(m_path)) {
    m_getInfo = reinterpret_cast<decltype(m_getInfo)>(EntryPoint("get_module_info"));
    m_init = reinterpret_cast<decltype(m_init)>(EntryPoint("module_init"));
    m_done = reinterpret_cast<decltype(m_done)>(EntryPoint("module_done"));
    ReadName(taken);
    Initialise();
}

LoadedModule::~LoadedModule() {
    if (DropInterfaces()) return;
    static_cast<void>(m_handle.release());
    TellIfPossible(
        [&] { Warn("Module '%s' stays in memory: an interface of it is still in use.", m_name.c_str()); });
}

void LoadedModule::Refuse(const std::string& reason, const std::string& detail) const {
    RefuseModule(m_path, reason, detail);
}

void* LoadedModule::EntryPoint(const char* name) const {
    void* address = ::dlsym(m_handle.get(), name);
    if (address == nullptr) Refuse(Message("it has no entry point '%s'", name));
    return address;
}

void LoadedModule::ReadName(const std::vector<std::string>& taken) {
    const ZETModuleRecord* record = nullptr;
    const std::optional<Problem> problem = Run([&] { record = m_getInfo(&kHost); });
    if (problem) Refuse(problem->message, problem->detail);
    if (record == nullptr) Refuse(Message("it does not serve this host"));
    if (record->type != kModuleType)
        Refuse(Message("its record is of type %u, not of a module", record->type));
    if (record->name == nullptr || *record->name == '\0') Refuse(Message("its record has no name"));
    if (record->version == 0) Refuse(Message("its record has no version"));
    m_name = record->name;
    if (std::find(taken.begin(), taken.end(), m_name) != taken.end())
        Refuse(Message("module '%s' is loaded already", Printable(m_name).c_str()));
    // The domain of a module's messages has the name of its library.
    ::bindtextdomain(("lib" + m_name).c_str(), ZET_LOCALE_DIR);
}

void LoadedModule::Initialise() {
    const std::vector<std::string> before = m_core.GetRegistry().Names();
    try {
        m_core.GetRegistry().TakeRefusedName();
        bool isInitialised = false;
        const std::optional<Problem> problem = Run([&] { isInitialised = m_init(m_core); });
        if (problem) Refuse(problem->message, problem->detail);
        if (!isInitialised) Refuse(Message("it failed to initialise"));
        RequireOwnNames();
        NoteInterfaces(before);
    } catch (...) {
        // Their code is about to go.
        m_core.GetRegistry().RemoveAllBut(before);
        throw;
    }
}

/// A module ends by removing its interfaces by name: it would take away the other owner's.
void LoadedModule::RequireOwnNames() {
    const std::string name = m_core.GetRegistry().TakeRefusedName();
    if (!name.empty()) Refuse(Message("there is an interface '%s' already", Printable(name).c_str()));
}

void LoadedModule::NoteInterfaces(const std::vector<std::string>& before) {
    for (const std::string& name : m_core.GetRegistry().Names())
        if (!std::binary_search(before.begin(), before.end(), name)) m_interfaces.push_back({name, {}});
}

void LoadedModule::Done() {
    TellIfPossible([&] {
        const std::optional<Problem> problem = Run([&] { m_done(m_core); });
        if (!problem) return;
        const std::string text =
            Message("Failed to end module '%s': %s.", m_name.c_str(), problem->message.c_str());
        CZETLogProvider::GetLogProvider().Put(ZETLogError, 1, text.c_str());
    });
}

/// Ends the module. False when somebody still holds an interface of it.
bool LoadedModule::DropInterfaces() {
    for (RegisteredInterface& interface : m_interfaces)
        interface.object = m_core.GetRegistry().Find(interface.name);
    Done();
    for (const RegisteredInterface& interface : m_interfaces)
        m_core.RemoveInterface(interface.name);
    const auto isGone = [](const RegisteredInterface& interface) { return interface.object.expired(); };
    return std::all_of(m_interfaces.begin(), m_interfaces.end(), isGone);
}

}  // namespace ZET
