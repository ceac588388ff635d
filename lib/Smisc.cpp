// Random numbers.

#include "Smisc.h"

#include <stdlib.h>
#include <time.h>

#include "Sprocess.h"

namespace {

int randomSeeded = 0;

void SeedOnce()
{
    if (!randomSeeded) {
        srand((unsigned)(time(0) + atol(ProcessIdString().Data())));
        randomSeeded = 1;
    }
}

}  // namespace

int RandomInt(int n)
{
    SeedOnce();
    if (n < 1)
        return 0;
    // rand() / (RAND_MAX + 1) lies in [0, 1), so the product stays below n
    // whatever RAND_MAX is, and every result covers an equal share of it.
    return (int)(rand() * (double)n / ((double)RAND_MAX + 1.0));
}
