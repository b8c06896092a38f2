#ifndef ZET_TESTS_PLAYER_H
#define ZET_TESTS_PLAYER_H

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "Scenario.h"

namespace ZET {

/// How often a play met the cases that the properties are about.
struct Tally {
    std::size_t expansions = 0;
    std::size_t endlessExpansions = 0;
    std::size_t exhaustedSteps = 0;  ///< steps on a text that a lookup had exhausted
    std::size_t exceptions = 0;
    std::size_t warnings = 0;
    std::size_t foreignFiles = 0;  ///< plays in which somebody else's file has the name to write

    Tally& operator+=(const Tally& other);
};

/// All that can be observed of one play, in order: results, exceptions, calls into the core, the files after
/// each save.
struct Report {
    std::vector<std::string> events;
    std::set<std::size_t> leftOut;  ///< steps that were skipped because they would never end
    bool leavesTemporary = false;   ///< a successful save left its temporary file behind
    Tally tally;
};

Report PlayPlain(const Scenario& scenario);

/// `leftOut` are the steps that the plain engine's play skipped.
Report PlayReal(const Scenario& scenario, const std::set<std::size_t>& leftOut);

/// Plays the scenario with both engines. Empty if they behave alike; otherwise the first difference and the
/// steps that led to it.
std::string Difference(const Scenario& scenario);

/// The result when the real engine opens a file with this text without markers and saves it at once.
std::string TextWrittenBack(const std::string& text);

}  // namespace ZET

#endif
