#include "Replacement.h"

#include <unistd.h>

#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace ZET {

Replacement::Replacement(const std::string& path, const Judge& judge) {
    SetRenameGuard([path, judge](const ZETRename& rename) {
        if (rename.to != path || rename.from != path + ZETTemporarySuffix) return;
        try {
            judge(rename.from);
        } catch (...) {
            unlink(rename.from.c_str());
            throw;
        }
    });
}

Replacement::~Replacement() {
    SetRenameGuard(nullptr);
}

}  // namespace ZET
