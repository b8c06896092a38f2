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

/// One thing that is wrong with the marker lines of a file.
struct MarkerProblem {
    std::size_t line = 0;  ///< from 1
    std::string kind;      ///< a word for programs
    std::string text;
    std::vector<std::string> remedies;  ///< one when the repair is certain; else the choices
};

struct Diagnosis {
    std::string path;  ///< of the real file
    std::vector<MarkerProblem> problems;
    std::string repair;  ///< what is certain, as a unified diff; empty: nothing is, or it is hidden
};

/// What is lost, doubled, nested or changed by hand among the markers of a file. Nothing is written.
ZET_API Diagnosis Diagnose(Product& product, const std::string& file);

struct Repair {
    Diagnosis found;      ///< before
    FileOutcome outcome;  ///< unchanged where there was no damage
};

/// Writes what is certain of the repair, as an edit that can be undone; of the options, only `noBackup`
/// counts. What has several choices stays. Where nothing is certain, that is a `Failure`.
ZET_API Repair Fix(Product& product, const std::string& file, const EditOptions& options = EditOptions());

}  // namespace ZET::Deploy

#endif
