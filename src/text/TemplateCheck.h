#ifndef ZET_TEMPLATE_CHECK_H
#define ZET_TEMPLATE_CHECK_H

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "zet/ZETProblem.h"
#include "zet/ZETTypes.h"

namespace ZET::Text {

/// Hands a text to `take` in pieces of whole lines, with their line feeds; a piece is not empty.
using LineSource = std::function<void(const std::function<void(std::string_view lines)>& take)>;

/// What keeps a template from becoming a file that one would want: a placeholder without a value or without
/// an end, a value that reproduces itself; in the lines that it renders to, markers that are not balanced or
/// that a value made, a notice that stands for the target's, a first line that no notice may come before.
/// `file` is named in the problems; `values` has whole placeholders as keys. The placeholders that the
/// template asks for are added to `used`, unless it is null. Without a notice, what keeps one out is none.
///
/// A template that is found fine is one that the module renders in bounded time.
std::vector<Problem> CheckTemplate(const std::string& file, const LineSource& lines, const StringMap& values,
                                   std::set<std::string>* used = nullptr, bool hasNotice = true);

}  // namespace ZET::Text

#endif
