#include <gtest/gtest.h>

#include <cstdlib>

// RapidCheck's own number of cases is small. Whoever sets RC_PARAMS, for example to reproduce a failure by
// what it printed, is obeyed.
int main(int argc, char** argv) {
    setenv("RC_PARAMS", "max_success=5000", 0);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
