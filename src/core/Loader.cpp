#include "Loader.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <utility>

#include "Catalogues.h"
#include "Message.h"
#include "posix/PathNames.h"
#include "posix/Printable.h"
#include "zet/ZETErrors.h"
#include "zet/ZETHost.h"
#include "zet/ZETLogProvider.h"

namespace ZET::Core {

namespace {

constexpr std::uintptr_t kVersion = ZET_RECORD_VERSION;
/// The major part of a record's version: the contract that its owner was built against.
constexpr std::uintptr_t kContract = kVersion / 65536;
constexpr std::uint32_t kHostType = 0;
constexpr std::uint32_t kModuleType = 1;

constexpr ZETModuleRecord kHost = {kVersion,  "zet-core", ZET_RECORD_VERSION_TEXT,
                                   kHostType, nullptr,    nullptr};

struct Problem {
    std::string message;
    std::string detail;
};

/// Runs code of the module. An exception's code may be in the module too and must be gone before it is
/// unloaded, so only the texts are kept.
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

/// The modules that hosts have claimed; never destroyed, since hosts might outlive it.
struct Claims {
    std::mutex mutex;
    std::set<const void*> modules;
};

Claims& AllClaims() {
    static Claims& claims = *new Claims;
    return claims;
}

/// Ignores lack of memory for a message, so that a module is ended all the same.
template <typename Call>
void TellIfPossible(Call call) {
    try {
        call();
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace

void RefuseModule(const std::string& path, const std::string& reason, const std::string& detail, int error) {
    throw EZETHostError(Message("Failed to load module '%s': %s.", Printable(path).c_str(), reason.c_str()),
                        detail, {.path = path, .errorNumber = error});
}

void ModuleCode::Refuse(const std::string& reason, const std::string& detail) const {
    RefuseModule(m_path, reason, detail);
}

bool LoadedModule::Claim::Take(const void* module) {
    Claims& claims = AllClaims();
    const std::lock_guard<std::mutex> lock(claims.mutex);
    if (!claims.modules.insert(module).second) return false;
    m_module = module;
    return true;
}

LoadedModule::Claim::~Claim() {
    if (m_module == nullptr) return;
    Claims& claims = AllClaims();
    const std::lock_guard<std::mutex> lock(claims.mutex);
    claims.modules.erase(m_module);
}

LoadedModule::LoadedModule(CZETCore& core, const std::string& path, const std::vector<std::string>& taken)
    : m_core(core), m_code(path) {
    BindCatalogue();
    ReadName(taken);
    if (!m_claim.Take(m_code.Identity()))
        Refuse(Message("it serves another host of this process (unload it there first)"));
    Initialise();
}

LoadedModule::~LoadedModule() {
    if (DropInterfaces()) return;
    TellIfPossible([&] {
        Warn("An interface of module '%s' is still in use (let it go before the module is unloaded).",
             m_name.c_str());
    });
}

void LoadedModule::Refuse(const std::string& reason, const std::string& detail) const {
    m_code.Refuse(reason, detail);
}

/// A module's message domain is named after its library. It is bound first because the module's record is
/// already translated.
void LoadedModule::BindCatalogue() const {
    const std::string file = BaseNameOf(m_code.Path());
    Core::BindCatalogue(file.substr(0, file.find(".so")));
}

void LoadedModule::ReadName(const std::vector<std::string>& taken) {
    const ZETModuleRecord* record = nullptr;
    const std::optional<Problem> problem = Run([&] { record = m_code.Entries().getInfo(&kHost); });
    if (problem) Refuse(problem->message, problem->detail);
    if (record == nullptr) Refuse(Message("it does not serve this host"));
    if (record->type != kModuleType)
        Refuse(Message("its record is of type %u, not of a module", record->type));
    if (record->name == nullptr || *record->name == '\0') Refuse(Message("its record has no name"));
    if (record->version == 0) Refuse(Message("its record has no version"));
    if (record->version / 65536 != kContract)
        Refuse(Message("its record is of version %zu, not of %zu", std::size_t{record->version / 65536},
                       std::size_t{kContract}));
    m_name = record->name;
    if (std::find(taken.begin(), taken.end(), m_name) != taken.end())
        Refuse(Message("module '%s' is loaded already", Printable(m_name).c_str()));
}

void LoadedModule::Initialise() {
    Registry& registry = m_core.GetRegistry();
    const std::vector<std::string> before = registry.Names();
    bool isInitialised = false;
    try {
        registry.TakeRefusedName();
        const std::optional<Problem> problem = Run([&] { isInitialised = m_code.Entries().init(m_core); });
        if (problem) Refuse(problem->message, problem->detail);
        if (!isInitialised) Refuse(Message("it failed to initialise"));
        NoteInterfaces(before);
        RequireInterfaces();
    } catch (...) {
        // `module_done` removes interfaces by name, and such a name may belong to another owner.
        registry.Keep(&before);
        if (isInitialised) Done();
        registry.Keep(nullptr);
        registry.RemoveAllBut(before);
        if (isInitialised) m_code.Keep();
        throw;
    }
    m_code.Keep();
}

/// A module without interfaces is of no use, and might be in use elsewhere. One whose interface was refused
/// would, in `module_done`, remove the other owner's.
void LoadedModule::RequireInterfaces() {
    const std::string name = m_core.GetRegistry().TakeRefusedName();
    if (!name.empty()) Refuse(Message("there is an interface '%s' already", Printable(name).c_str()));
    if (m_interfaces.empty()) Refuse(Message("it registered no interface"));
}

void LoadedModule::NoteInterfaces(const std::vector<std::string>& before) {
    for (const std::string& name : m_core.GetRegistry().Names())
        if (!std::binary_search(before.begin(), before.end(), name))
            m_interfaces.push_back({name, m_core.GetRegistry().Find(name)});
    // Reserved now, since `DropInterfaces` must not fail for lack of memory.
    m_lost.reserve(m_interfaces.size());
}

void LoadedModule::Done() {
    TellIfPossible([&] {
        const std::optional<Problem> problem = Run([&] { m_code.Entries().done(m_core); });
        if (!problem) return;
        const std::string text =
            Message("Failed to end module '%s': %s.", m_name.c_str(), problem->message.c_str());
        CZETLogProvider::GetLogProvider().Put(ZETLogError, 1, text.c_str());
    });
}

/// Ends the module. False if one of its interfaces is still held elsewhere. Interfaces of other owners that
/// have such a name by now stay.
bool LoadedModule::DropInterfaces() {
    Registry& registry = m_core.GetRegistry();
    for (RegisteredInterface& interface : m_interfaces)
        if (registry.Find(interface.name) != interface.object.lock())
            m_lost.push_back(std::move(interface.name));
    registry.Keep(&m_lost);
    Done();
    for (const RegisteredInterface& interface : m_interfaces)
        m_core.RemoveInterface(interface.name);
    registry.Keep(nullptr);
    const auto isGone = [](const RegisteredInterface& interface) { return interface.object.expired(); };
    return std::all_of(m_interfaces.begin(), m_interfaces.end(), isGone);
}

}  // namespace ZET::Core
