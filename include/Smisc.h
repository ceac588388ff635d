// Small helpers that fit nowhere else.
#ifndef TARNWICK_SMISC_H
#define TARNWICK_SMISC_H

// A pseudo-random int in 0 .. n - 1, seeded once per process.
int RandomInt(int n);

#endif
