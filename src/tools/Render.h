#ifndef ZET_RENDER_H
#define ZET_RENDER_H

#include <cstdint>
#include <string>
#include <vector>

#include "Session.h"
#include "Staging.h"
#include "Targets.h"
#include "zet/ZETTypes.h"

namespace ZET {

/// The file that a template is rendered from: its working copy, or the pristine one as long as there is none.
/// Empty when there is neither.
std::string TemplateFile(Session& session, const std::string& templateName);

/// The working copy's path, whether it is there or not.
std::string WorkingCopy(Session& session, const std::string& templateName);

/// How many bytes the targets' templates have; one that cannot be told counts as none.
std::uintmax_t SizeOfTemplates(Session& session, const std::vector<Target>& targets);

/// Renders a template in the private directory, to the bytes and mode that a commit would give its target;
/// `values`, which may be null, wins over the template values. Nothing outside the directory changes: a
/// missing working copy is not installed. Returns the path of the result. A failure of the module is a
/// `Failure`.
std::string RenderStaged(Session& session, const Staging& staging, const std::string& templateName,
                         StringMap* values = nullptr);

/// The same; what the log has to say comes with the real rendering.
std::string RenderQuietly(Session& session, const Staging& staging, const std::string& templateName);

/// Renders a template into a file as `RenderTarget` does, but keeps nothing and compares nothing: a
/// `Replacement` is there for that. `values` wins over the template values.
void RenderOnce(Session& session, const std::string& templateName, const std::string& path,
                const StringMap& values);

/// Renders a template into its target, for good: keeps what is there first, and compares what came out with
/// `staged`. A working copy that is missing is installed. A difference is a `Failure`.
void RenderTarget(Session& session, const std::string& templateName, const std::string& path,
                  const std::string& staged, StringMap* values = nullptr);

}  // namespace ZET

#endif
