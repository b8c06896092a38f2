#ifndef ZET_TESTS_PLAYER_H
#define ZET_TESTS_PLAYER_H

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "Scenario.h"

namespace ZET {

/// How often a play met what the properties are about.
struct Tally {
    std::size_t expansions = 0;
    std::size_t endlessExpansions = 0;
    std::size_t exhaustedSteps = 0;  ///< steps on a text that a lookup had exhausted
    std::size_t exceptions = 0;
    std::size_t warnings = 0;
    std::size_t foreignFiles = 0;  ///< plays with a file of somebody else at the name that is written

    Tally& operator+=(const Tally& other);
};

/// All that can be observed of one play, in order: results, exceptions, calls into the core, the files after
/// each save.
struct Report {
    std::vector<std::string> events;
    std::set<std::size_t> leftOut;  ///< steps that would never end, and so were not taken
    bool leavesTemporary = false;   ///< a save that succeeded left its temporary file behind
    Tally tally;
};

Report PlayPlain(const Scenario& scenario);

/// `leftOut` is what the plain engine's play had to leave out.
Report PlayReal(const Scenario& scenario, const std::set<std::size_t>& leftOut);

/// Plays the scenario with both engines. Empty when nothing tells them apart, otherwise the first difference
/// and what led to it.
std::string Difference(const Scenario& scenario);

/// What the real engine makes of a file with this text that it opens without markers and saves at once.
std::string TextWrittenBack(const std::string& text);

}  // namespace ZET

#endif
