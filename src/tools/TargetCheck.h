#ifndef ZET_TARGET_CHECK_H
#define ZET_TARGET_CHECK_H

#include <set>
#include <string>
#include <vector>

#include "Problem.h"
#include "Session.h"
#include "Targets.h"

namespace ZET {

/// Everything that would keep a commit of these targets from succeeding, all in one go; nothing is written.
/// The placeholders that the templates use are added to `used`, unless it is null.
std::vector<Problem> CheckTargets(Session& session, const std::vector<Target>& targets,
                                  std::set<std::string>* used = nullptr);

/// The problems of one template and of one file to be written (links followed), as far as they concern it
/// alone.
std::vector<Problem> CheckTemplateFile(Session& session, const std::string& templateName,
                                       const StringMap& values, std::set<std::string>* used = nullptr);
std::vector<Problem> CheckTargetFile(const std::string& path);

}  // namespace ZET

#endif
