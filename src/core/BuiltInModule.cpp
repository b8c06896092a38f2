// The module and its message catalogues for a program that contains both module and core: compiled instead of
// ModuleFile.cpp and Catalogues.cpp.

#include <libintl.h>

#include "Catalogues.h"
#include "Message.h"
#include "ModuleCode.h"
#include "posix/OwnPlace.h"
#include "posix/PathNames.h"

namespace ZET::Core {

namespace {

constexpr char kName[] = "libzet-config";

/// The translations are installed in the same prefix as the program.
std::string LocaleDirectory() {
    const std::string program = OwnProgram();
    return program.empty() ? "" : PathIn(DirectoryOf(program), ZET_LOCALE_WAY);
}

}  // namespace

ModuleCode::ModuleCode(const std::string& path)
    : m_path(path.empty() ? kName : path), m_entries{&get_module_info, &module_init, &module_done} {
    if (!path.empty()) Refuse(Message("it does not serve this host"));
    m_handle.reset(reinterpret_cast<void*>(&module_init));
}

/// The program's own code must not be closed.
void ModuleCode::Closer::operator()(void* /*handle*/) const {}

void BindCatalogue(const std::string& domain) {
    static const std::string directory = LocaleDirectory();
    if (!directory.empty()) ::bindtextdomain(domain.c_str(), directory.c_str());
}

}  // namespace ZET::Core
