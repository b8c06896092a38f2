#ifndef ZET_FILE_DIAGNOSIS_H
#define ZET_FILE_DIAGNOSIS_H

#include <string>

#include "deploy/targets/Deployment.h"
#include "text/repair/MarkerDamage.h"

namespace ZET::Deploy {

/// What is damaged in a file's markers, and a repair of what is certain.
struct FileDiagnosis {
    std::string path;  ///< of the real file
    bool isPrivate = false;
    Text::Diagnosis diagnosis;
    std::string repair;  ///< as a unified diff; empty: there is none
};

/// `file` is as the caller wrote it. Nothing is written.
FileDiagnosis DiagnoseFile(Deployment& product, const std::string& file);

}  // namespace ZET::Deploy

#endif
