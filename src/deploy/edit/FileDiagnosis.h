#ifndef ZET_FILE_DIAGNOSIS_H
#define ZET_FILE_DIAGNOSIS_H

#include <string>

#include "deploy/targets/Deployment.h"
#include "text/repair/MarkerDamage.h"

namespace ZET::Deploy {

/// The damage to a file's markers, and a repair of the damage that can be repaired in one way only.
struct FileDiagnosis {
    std::string path;  ///< of the real file
    bool isPrivate = false;
    Text::Diagnosis diagnosis;
    std::string repair;  ///< a unified diff; empty: there is no such repair
};

/// `file` is as the caller wrote it. Nothing is written.
FileDiagnosis DiagnoseFile(Deployment& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
