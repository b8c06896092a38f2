#include "SlotCore.h"

#include <typeinfo>

namespace ZET {

namespace {

// The type that the table claims to belong to; sanitizers ask for it.
struct NamedCore : IZETCore {};

SlotCore& Note(void* self, const std::string& call) {
    SlotCore& core = *static_cast<SlotCore*>(self);
    core.calls.push_back(call);
    return core;
}

void Destroy(void* self) {
    Note(self, "destructor");
}

const std::string& Place2(void* self) {
    return Note(self, "2").domainName;
}
const std::string& Place3(void* self) {
    return Note(self, "3").serverName;
}
bool Place4(void* self) {
    Note(self, "4");
    return false;
}
bool Place5(void* self, std::shared_ptr<CZETInterface> interface) {
    Note(self, "5 " + interface->GetName()).interfaces.push_back(interface);
    return true;
}
bool Place6(void* self, const std::string& name) {
    Note(self, "6 " + name).interfaces.clear();
    return true;
}
std::string Place7(void* self, const std::string& key) {
    return Note(self, "7 " + key).params[key];
}
void Place8(void* self, const std::string& key, const std::string& value) {
    Note(self, "8 " + key + "=" + value);
}
bool Place9(void* self, const std::string& pattern, const std::string& subject, void* reserved,
            std::size_t flags) {
    Note(self,
         "9 " + pattern + " in " + subject + (reserved == nullptr && flags == 0 ? "" : " (not null and 0)"));
    return subject.starts_with("x=");
}
void Place10(void* self, std::ostream& stream) {
    Note(self, "10");
    stream << "status=1\n";
}

template <typename Function>
void* Word(Function* function) {
    return reinterpret_cast<void*>(function);
}

// The distance to the whole object and its type stand before the first function.
void* const theTable[] = {nullptr,        const_cast<std::type_info*>(&typeid(NamedCore)),
                          Word(&Destroy), Word(&Destroy),
                          Word(&Place2),  Word(&Place3),
                          Word(&Place4),  Word(&Place5),
                          Word(&Place6),  Word(&Place7),
                          Word(&Place8),  Word(&Place9),
                          Word(&Place10)};

}  // namespace

SlotCore::SlotCore() : m_table(theTable + 2) {}

}  // namespace ZET
