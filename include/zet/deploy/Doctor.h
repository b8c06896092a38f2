#ifndef ZET_DEPLOY_DOCTOR_H
#define ZET_DEPLOY_DOCTOR_H

#include <cstddef>
#include <string>
#include <vector>

#include "zet/ZETApi.h"
#include "zet/deploy/EditOptions.h"
#include "zet/deploy/FileOutcome.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// One defect in the marker lines of a file.
struct MarkerProblem {
    std::size_t line = 0;  ///< from 1
    std::string kind;      ///< a fixed word for programs
    std::string text;
    std::vector<std::string> remedies;  ///< a single one if the repair is certain; else the choices
};

struct Diagnosis {
    std::string path;  ///< of the real file
    std::vector<MarkerProblem> problems;
    std::string repair;  ///< the certain part as a unified diff; empty if there is none, or if it is hidden
};

/// Finds markers of a file that are lost, doubled, nested or changed by hand. Nothing is written.
ZET_API Diagnosis Diagnose(Product& product, const std::string& file);

struct Repair {
    Diagnosis found;      ///< the diagnosis before the repair
    FileOutcome outcome;  ///< unchanged if there was no damage
};

/// Writes the certain part of the repair as an edit that can be undone; of the options, only `noBackup`
/// counts. Damage with several possible repairs stays. Throws a `Failure` if no repair is certain.
ZET_API Repair Fix(Product& product, const std::string& file, const EditOptions& options = EditOptions());

}  // namespace ZET::Deploy

#endif
