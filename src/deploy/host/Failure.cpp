#include "deploy/host/Failure.h"

#include <iterator>
#include <utility>

#include "deploy/host/Words.h"

namespace ZET::Deploy {

UsageError::~UsageError() = default;
Failure::~Failure() = default;
Damage::~Damage() = default;
Interrupted::~Interrupted() = default;

Failure::Failure(const Problem& facts, int errorNumber) : Failure(facts.Describe(), facts, errorNumber) {}

Failure::Failure(const std::string& words, const Problem& facts, int errorNumber)
    : std::runtime_error(words), m_facts(facts), m_errorNumber(errorNumber) {}

Interrupted::Interrupted(const Problem& facts) : std::runtime_error(facts.Describe()), m_facts(facts) {}

Problem ProblemOf(const std::string& file, const Failure& failure) {
    Problem problem = failure.Facts();
    if (problem.file != file) {
        if (!problem.textNamesFile && !problem.file.empty())
            problem.text = problem.Place() + ": " + problem.text;
        problem.file = file;
        problem.line = problem.column = 0;
    }
    problem.textNamesFile = false;
    if (problem.remedy.empty()) problem.remedy = _("repair or replace the file");
    return problem;
}

void Append(std::vector<Problem>& problems, std::vector<Problem> more) {
    problems.insert(problems.end(), std::make_move_iterator(more.begin()),
                    std::make_move_iterator(more.end()));
}

void Append(std::vector<Problem>& problems, std::optional<Problem> problem) {
    if (problem) problems.push_back(std::move(*problem));
}

std::string LinesOf(const std::vector<Problem>& problems) {
    std::string lines;
    for (const Problem& problem : problems)
        lines += problem.Describe() + "\n";
    return lines;
}

Problem WithOthersBelow(const std::vector<Problem>& problems) {
    Problem first = problems.front();
    first.output += LinesOf({problems.begin() + 1, problems.end()});
    return first;
}

}  // namespace ZET::Deploy
