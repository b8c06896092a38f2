#include "deploy/host/Problems.h"

#include <iterator>

namespace ZET::Deploy {

void Append(std::vector<Problem>& problems, std::vector<Problem> more) {
    problems.insert(problems.end(), std::make_move_iterator(more.begin()),
                    std::make_move_iterator(more.end()));
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
