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

/// Hands a text to `take` in pieces of whole lines, with their line feeds; a piece is not empty.
using LineSource = std::function<void(const std::function<void(std::string_view lines)>& take)>;

/// Values for the check of many templates, which are looked at once. `all` has whole placeholders as keys,
/// and must outlive the object; the placeholders that the templates ask for are added to `used`, unless it is
/// null.
struct ValuesToCheck {
    explicit ValuesToCheck(const StringMap& values, std::set<std::string>* namesUsed = nullptr);

    const StringMap& all;
    std::set<std::string>* const used;
    PlainValues plain;
    std::size_t longestKey = 0;
    bool hasLineFeeds = false;  ///< there is a value of several lines
    const bool hasSigns;        ///< a plain value has what a marker begins with
};

/// What keeps a template from becoming a file that one would want: a placeholder without a value or without
/// an end, a value that reproduces itself; in the lines that it renders to, markers that are not balanced or
/// that a value made, a notice that stands for the target's, a first line that no notice may come before.
/// `file` is named in the problems. Without a notice, what keeps one out is none.
///
/// A template that is found fine is one that the module renders in bounded time.
std::vector<Problem> CheckTemplate(const std::string& file, const LineSource& lines, ValuesToCheck& values,
                                   bool hasNotice = true);

/// The same of one template.
std::vector<Problem> CheckTemplate(const std::string& file, const LineSource& lines, const StringMap& values,
                                   std::set<std::string>* used = nullptr, bool hasNotice = true);

}  // namespace ZET::Text

#endif
