#ifndef ZET_LINE_PROBLEMS_H
#define ZET_LINE_PROBLEMS_H

#include <vector>

#include "deploy/targets/Deployment.h"
#include "deploy/targets/ListedLines.h"
#include "zet/ZETProblem.h"

namespace ZET::Deploy {

/// What keeps the lines that the lists ask for from being set in the file: each line of it must belong to one
/// edit at most, and each edit must find its own line again.
std::vector<Problem> ProblemsOfLines(Deployment& product, const FileWithLines& file);

}  // namespace ZET::Deploy

#endif
