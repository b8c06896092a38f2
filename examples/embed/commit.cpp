// Shows what a commit would change, and makes it: commit MAIN_FILE.
#include <cstdio>

#include "zet/deploy/Commit.h"

int main(int, char** arguments) try {
    ZET::Deploy::Product product(arguments[1]);
    ZET::Deploy::Plan plan = ZET::Deploy::MakePlan(product);
    for (const ZET::Problem& problem : plan.Problems())
        std::printf("%s\n", problem.Describe().c_str());
    for (const ZET::Deploy::FileOutcome& file : plan.Files())
        std::printf("%s: to be %s\n", file.path.c_str(), NameOf(file.result));
    const ZET::Deploy::Outcome outcome = ZET::Deploy::Commit(product, plan);
    for (const std::string& service : outcome.restarts)
        std::printf("restart %s\n", service.c_str());
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
