#include "zet/ZETInterface.h"

namespace ZET {

CZETInterface::CZETInterface(const std::string& name) : m_name(name) {}

CZETInterface::~CZETInterface() = default;

const std::string& CZETInterface::GetName() const {
    return m_name;
}

}  // namespace ZET
