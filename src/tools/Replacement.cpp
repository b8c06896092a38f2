#include "Replacement.h"

#include <unistd.h>

#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace ZET {

Replacement::Replacement(const std::string& path, const Judge& judge) {
    SetRenameGuard([path, judge](const std::string& from, const std::string& to) {
        if (to != path || from != path + ZETTemporarySuffix) return;
        try {
            judge(from);
        } catch (...) {
            unlink(from.c_str());
            throw;
        }
    });
}

Replacement::~Replacement() {
    SetRenameGuard(nullptr);
}

}  // namespace ZET
