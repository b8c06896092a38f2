#ifndef ZET_TEMPLATE_CHECK_H
#define ZET_TEMPLATE_CHECK_H

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "text/PlainValues.h"
#include "zet/ZETProblem.h"
#include "zet/ZETTypes.h"

namespace ZET::Text {

/// Passes a text to `take` in non-empty pieces of whole lines, with their line feeds.
using LineSource = std::function<void(const std::function<void(std::string_view lines)>& take)>;

/// Values for the check of many templates, prepared once. The keys of `all` are whole placeholders; it must
/// outlive the object. The placeholders that templates use are added to `used`, unless it is null.
struct ValuesToCheck {
    explicit ValuesToCheck(const StringMap& values, std::set<std::string>* namesUsed = nullptr);

    const StringMap& all;
    std::set<std::string>* const used;
    PlainValues plain;
    std::size_t longestKey = 0;
    bool hasLineFeeds = false;  ///< whether a value has several lines
    const bool hasSigns;        ///< whether a plain value contains the first character of a marker
};

/// Finds what prevents a template from becoming a usable file: a placeholder without a value or without an
/// end, a value that reproduces itself; in the rendered lines, markers that are unbalanced or made by a
/// value, a notice that takes the place of the target's, and a first line that no notice may precede. The
/// problems name `file`. Without `hasNotice`, what concerns the notice is no problem.
///
/// The module renders a template without problems in bounded time.
std::vector<Problem> CheckTemplate(const std::string& file, const LineSource& lines, ValuesToCheck& values,
                                   bool hasNotice = true);

/// As above, for a single template.
std::vector<Problem> CheckTemplate(const std::string& file, const LineSource& lines, const StringMap& values,
                                   std::set<std::string>* used = nullptr, bool hasNotice = true);

}  // namespace ZET::Text

#endif
