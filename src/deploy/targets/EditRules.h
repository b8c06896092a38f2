#ifndef ZET_EDIT_RULES_H
#define ZET_EDIT_RULES_H

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "deploy/host/Words.h"
#include "zet/IZETCore.h"
#include "zet/deploy/Observer.h"

/// What the commands require of NAME, VALUE, PATTERN and LINE before the module, which takes each as it is,
/// sees them. Each `Require...` throws a `UsageError`.
namespace ZET::Deploy {

/// The remedy if matching an expression takes too much work.
inline constexpr char kSimplerExpression[] = ZET_TEXT("give a simpler expression");

/// The remedy if an expression does not reach over the carriage return of a line.
inline constexpr char kPatternForReturn[] = ZET_TEXT("write \"\\r?$\" in place of \"$\"");

/// `what` names the argument.
void RequireOneLine(const std::string& text, const std::string& what);

/// The text is going to be a line, and must not look like one of the system's own.
void RequireNoMarker(const std::string& line);

/// Whether the expression, which is valid, selects the line. Throws a `Failure` if a long line takes too much
/// work.
bool Selects(IZETCore& core, const std::string& pattern, const std::string& line);

/// The first of the lines that the expression selects.
std::optional<std::string> FirstSelected(IZETCore& core, const std::string& pattern, std::string_view lines);

/// Whether the expression selects the line only without the carriage return at its end.
bool SelectsWithoutReturn(IZETCore& core, const std::string& pattern, const std::string& line);

/// The number of the first such line that is not one of the system's own; 0 if there is none.
std::size_t FirstSelectedWithoutReturn(IZETCore& core, const std::string& pattern, std::string_view lines);

/// The pattern must not be empty, and must be valid.
void RequirePattern(IZETCore& core, const std::string& pattern);

void RequireParamName(const std::string& name);

/// The same for a parameter of the product itself; `what` names the argument.
void RequireOptionName(const std::string& name, const std::string& what);

/// Checks the name of a section, as `EditOptions` has it.
void RequireSectionName(const std::optional<std::string>& section);

/// The module takes a byte order mark for a part of its line, and would add another line because it does not
/// find the one behind the mark.
[[noreturn]] void FailOfByteOrderMark(const std::string& path, std::size_t line);

/// The edit parts each of these lines from the next one, in which it goes on. Throws a `Failure` of the
/// first; if the edit is forced, only warns of all.
void JudgeParting(Observer& observer, const std::string& path, const std::set<std::size_t>& lines,
                  bool isForced);

/// The text as a regular expression that selects nothing else.
std::string Escaped(std::string_view text);

/// Whether the name selects nothing but itself, whatever the file holds.
bool IsLiteralName(const std::string& name);

/// The name becomes part of a regular expression: it must select itself, and no line that has something else
/// before its "=". `opening` stands before the name in the expression. `text` is that of the file, or of a
/// part of it that comes after `linesBefore` lines.
void RequireLiteralName(IZETCore& core, const std::string& path, std::string_view text,
                        const std::string& opening, const std::string& name, std::size_t linesBefore = 0);

/// A pattern for `SetLine` that selects what `pattern` does, except lines that the system wrote to keep order
/// in the file.
std::string PatternForSet(IZETCore& core, const std::string& path, std::string_view text,
                          const std::string& pattern);

}  // namespace ZET::Deploy

#endif
