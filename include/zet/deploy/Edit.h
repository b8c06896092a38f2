#ifndef ZET_DEPLOY_EDIT_H
#define ZET_DEPLOY_EDIT_H

#include <optional>
#include <string>

#include "zet/ZETApi.h"
#include "zet/deploy/EditOptions.h"
#include "zet/deploy/FileOutcome.h"
#include "zet/deploy/Product.h"

namespace ZET::Deploy {

/// Single edits of any file. `file` is a path on the host, whose links are followed. Each edit throws a
/// `Failure` for a file that is missing, whose markers are damaged, or that another user could redirect while
/// root edits it; and for one that somebody else wrote at the same time, which keeps what they wrote. With
/// the product's option `dryRun` nothing is written, and the result says what would happen.

/// Parameters are lines "name=value" without a blank before the "=". If the file has the parameter in another
/// form, or in several of its sections, the edit throws a `Failure` that lists the lines, before anything is
/// written.

/// The value of the first such line; none if there is no such line. With `section` only that section is
/// searched, as in `EditOptions`.
ZET_API std::optional<std::string> GetParam(Product& product, const std::string& file,
                                            const std::string& name,
                                            const std::optional<std::string>& section = std::nullopt);
ZET_API FileOutcome SetParam(Product& product, const std::string& file, const std::string& name,
                             const std::string& value, const EditOptions& options = EditOptions());

/// Comments out the lines that set the parameter.
ZET_API FileOutcome UnsetParam(Product& product, const std::string& file, const std::string& name,
                               const EditOptions& options = EditOptions());

/// Brings back the lines that were there before.
ZET_API FileOutcome RestoreParam(Product& product, const std::string& file, const std::string& name,
                                 const EditOptions& options = EditOptions());

/// Lines selected by a regular expression.
ZET_API std::optional<std::string> GetLine(Product& product, const std::string& file,
                                           const std::string& pattern,
                                           const std::optional<std::string>& section = std::nullopt);
ZET_API FileOutcome SetLine(Product& product, const std::string& file, const std::string& pattern,
                            const std::string& line, const EditOptions& options = EditOptions());
ZET_API FileOutcome RestoreLine(Product& product, const std::string& file, const std::string& pattern,
                                const EditOptions& options = EditOptions());

/// Removes the managed blocks; a notice and kept former lines remain.
ZET_API FileOutcome StripFile(Product& product, const std::string& file,
                              const EditOptions& options = EditOptions());

/// `ReserveFile` keeps the file as it is now, or records that there is none. `RestoreFile` puts back what was
/// kept; changes that are kept nowhere else are overwritten only with `force`. `ForgetReserve` drops what was
/// kept.
ZET_API FileOutcome ReserveFile(Product& product, const std::string& file);
ZET_API FileOutcome RestoreFile(Product& product, const std::string& file,
                                const EditOptions& options = EditOptions());
ZET_API FileOutcome ForgetReserve(Product& product, const std::string& file,
                                  const EditOptions& options = EditOptions());

/// Turns what somebody changed in a committed target into a change of its template's working copy, which the
/// outcome describes. A changed value that comes from a placeholder cannot be adopted: that is a `Failure`
/// with the lines.
ZET_API FileOutcome Adopt(Product& product, const std::string& file);

/// A parameter of the product itself; none if it is unknown and no line sets it.
ZET_API std::optional<std::string> GetOption(Product& product, const std::string& name);

/// Throws a `Failure` if a check would object to the line.
ZET_API FileOutcome SetOption(Product& product, const std::string& name, const std::string& value);

}  // namespace ZET::Deploy

#endif
