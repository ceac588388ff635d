#include "Smisc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

// rand() reaches 2^31 - 1 here: a scaling that assumed 32767 would leave
// the range at once.
TEST(RandomInt, StaysInRangeAndSpreadsEvenly)
{
    for (int n : {1, 3, 10, 256, (1 << 30) + 1}) {
        std::vector<int> seen(std::min(n, 256));
        for (int i = 0; i < 60000; i++) {
            int r = RandomInt(n);
            ASSERT_TRUE(r >= 0 && r < n) << r << " for n = " << n;
            seen[(long)r * seen.size() / n]++;
        }
        double expected = 60000.0 / seen.size();
        for (int count : seen)
            EXPECT_NEAR(count, expected, 6 * std::sqrt(expected) + 1) << "n = " << n;
    }
    EXPECT_EQ(RandomInt(0) + RandomInt(-5), 0);
}
