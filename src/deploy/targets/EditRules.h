#ifndef ZET_EDIT_RULES_H
#define ZET_EDIT_RULES_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "deploy/host/Words.h"
#include "zet/IZETCore.h"

/// What the commands demand of NAME, VALUE, PATTERN and LINE before the module, which takes each as it is,
/// gets to see it. A demand that is not met is a `UsageError`.
namespace ZET::Deploy {

/// The remedy when an expression is too much work on a line.
inline constexpr char kSimplerExpression[] = ZET_TEXT("give a simpler expression");

/// `what` names the argument.
void RequireOneLine(const std::string& text, const std::string& what);

/// The text is going to be a line: none that the system would take for one of its own.
void RequireNoMarker(const std::string& line);

/// Whether the expression, which is valid, selects the line; it may be too much work on a long one.
bool Selects(IZETCore& core, const std::string& pattern, const std::string& line);

/// The first of the lines that it selects.
std::optional<std::string> FirstSelected(IZETCore& core, const std::string& pattern, std::string_view lines);

/// Not empty, and valid.
void RequirePattern(IZETCore& core, const std::string& pattern);

void RequireParamName(const std::string& name);

/// The same for a parameter of the product itself; `what` names the argument.
void RequireOptionName(const std::string& name, const std::string& what);

/// The name of a section, as `EditOptions` has it.
void RequireSectionName(const std::optional<std::string>& section);

/// The text as a regular expression that selects nothing else.
std::string Escaped(std::string_view text);

/// Whether the name selects nothing but itself, whatever the file holds.
bool IsLiteralName(const std::string& name);

/// The name is part of a regular expression: it must select itself, and no line of the file that holds
/// something else before its "=". `opening` is what stands before the name in the expression, `text` that of
/// the file, or a part of it that has so many lines before.
void RequireLiteralName(IZETCore& core, const std::string& path, std::string_view text,
                        const std::string& opening, const std::string& name, std::size_t linesBefore = 0);

/// A pattern for `SetLine` that selects what `pattern` does, but no line that the system itself wrote to keep
/// order in the file.
std::string PatternForSet(IZETCore& core, const std::string& path, std::string_view text,
                          const std::string& pattern);

}  // namespace ZET::Deploy

#endif
