#include "Smisc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

// rand() reaches 2^31 - 1 here: a scaling that assumed 32767 would leave
// the range at once.
TEST(RandomInt, StaysInRangeAndSpreadsEvenly)
{
    const int draws = 60000;
    for (int n : {1, 2, 3, 10, 256}) {
        std::vector<int> seen(n);
        for (int i = 0; i < draws; i++) {
            int r = RandomInt(n);
            ASSERT_TRUE(r >= 0 && r < n) << r << " for n = " << n;
            seen[r]++;
        }
        double expected = (double)draws / n;
        for (int k = 0; k < n; k++)
            EXPECT_NEAR(seen[k], expected, 6 * std::sqrt(expected) + 1) << k << " of " << n;
    }
    const int big = (1 << 30) + 1;
    int upperHalf = 0;
    for (int i = 0; i < 1000; i++) {
        int r = RandomInt(big);
        ASSERT_TRUE(r >= 0 && r < big);
        upperHalf += r >= big / 2;
    }
    EXPECT_NEAR(upperHalf, 500, 100);
    EXPECT_EQ(RandomInt(0), 0);
    EXPECT_EQ(RandomInt(-5), 0);
}
