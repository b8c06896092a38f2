#ifndef ZET_DEPLOY_EDIT_H
#define ZET_DEPLOY_EDIT_H

#include <optional>
#include <string>

#include "zet/ZETApi.h"
#include "zet/deploy/EditOptions.h"
#include "zet/deploy/FileOutcome.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// Single edits of any file. `file` is a path of the host, whose links are followed; a file that is missing,
/// that another user could lead root away from, or whose markers are damaged is a `Failure`, and so is one
/// that somebody else wrote at the same time: it is as it was then. With the option `dryRun` of the product,
/// nothing is written, and what would happen is returned.

/// Lines "name=value", of which no blank stands before the "=". A parameter that stands in another form in
/// the file, or in several of its sections, is a `Failure` that tells the lines: before anything is written.

/// The value of the first line; none: there is no such line. With a section, as `EditOptions` has it, only
/// there.
ZET_API std::optional<std::string> GetParam(Product& product, const std::string& file,
                                            const std::string& name,
                                            const std::optional<std::string>& section = std::nullopt);
ZET_API FileOutcome SetParam(Product& product, const std::string& file, const std::string& name,
                             const std::string& value, const EditOptions& options = EditOptions());

/// Comments the lines out that set the parameter.
ZET_API FileOutcome UnsetParam(Product& product, const std::string& file, const std::string& name,
                               const EditOptions& options = EditOptions());

/// Brings the former lines back.
ZET_API FileOutcome RestoreParam(Product& product, const std::string& file, const std::string& name,
                                 const EditOptions& options = EditOptions());

/// Lines that a regular expression chooses.
ZET_API std::optional<std::string> GetLine(Product& product, const std::string& file,
                                           const std::string& pattern,
                                           const std::optional<std::string>& section = std::nullopt);
ZET_API FileOutcome SetLine(Product& product, const std::string& file, const std::string& pattern,
                            const std::string& line, const EditOptions& options = EditOptions());
ZET_API FileOutcome RestoreLine(Product& product, const std::string& file, const std::string& pattern,
                                const EditOptions& options = EditOptions());

/// Takes the managed blocks out; a notice and kept former lines remain.
ZET_API FileOutcome StripFile(Product& product, const std::string& file,
                              const EditOptions& options = EditOptions());

/// Keeps the file as it is now, or that there is none; puts back what was kept, over changes that nothing
/// keeps only with force; drops what was kept.
ZET_API FileOutcome ReserveFile(Product& product, const std::string& file);
ZET_API FileOutcome RestoreFile(Product& product, const std::string& file,
                                const EditOptions& options = EditOptions());
ZET_API FileOutcome ForgetReserve(Product& product, const std::string& file,
                                  const EditOptions& options = EditOptions());

/// Turns what somebody changed in a committed target into a change of its template's working copy, of which
/// the outcome tells; a value that a placeholder gives can not be changed so: that is a `Failure` with the
/// lines.
ZET_API FileOutcome Adopt(Product& product, const std::string& file);

/// A parameter of the product itself; none: nobody knows it, and no line gives it.
ZET_API std::optional<std::string> GetOption(Product& product, const std::string& name);

/// What a check would have against the line is a `Failure`.
ZET_API FileOutcome SetOption(Product& product, const std::string& name, const std::string& value);

}  // namespace ZET::Deploy

#endif
