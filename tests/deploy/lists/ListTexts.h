#ifndef ZET_TEST_LIST_TEXTS_H
#define ZET_TEST_LIST_TEXTS_H

#include <algorithm>
#include <string>
#include <vector>

#include "deploy/lists/TargetListReader.h"

namespace ZET::Deploy {

/// A valid entry of a list of targets, with additional lines.
inline std::string Entry(const std::string& lines, const std::string& name = "one") {
    return "[templates.\"" + name + "\"]\ntarget = \"/etc/" + name + "\"\nroles = \"both\"\n" + lines + "\n";
}

/// The contents of one list, while no parameter has a value.
inline TargetList ReadTargetText(const std::string& file, const std::string& text) {
    return ReadTargetTexts({{file, text}}, [](const std::string&) { return std::string(); });
}

/// The problems of the list, in the words for the user.
inline std::vector<std::string> ProblemsOf(const TargetList& list) {
    std::vector<std::string> told;
    for (const Problem& problem : list.problems)
        told.push_back(problem.Describe());
    return told;
}

inline std::vector<std::string> ProblemsOf(const std::string& text) {
    return ProblemsOf(ReadTargetText("LIST", text));
}

/// The smallest of three times: other users of the processor only make a run longer.
inline double SmallestTime(double (*secondsFor)(int count), int count) {
    return std::min({secondsFor(count), secondsFor(count), secondsFor(count)});
}

}  // namespace ZET::Deploy

#endif
