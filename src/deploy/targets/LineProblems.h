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

/// Warnings of edits whose line goes on in the next one, as many formats have it: the marker after it would
/// be a part of it.
std::vector<Problem> EditsThatGoOn(Deployment& product);

}  // namespace ZET::Deploy

#endif
