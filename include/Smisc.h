// Small helpers that fit nowhere else: the library's random numbers.
//
// Not thread-safe: rand and the one-time seeding flag are process-wide.
#ifndef TARNWICK_SMISC_H
#define TARNWICK_SMISC_H

// A pseudo-random int in 0 .. n - 1 from rand, scaled over rand's whole
// range (0 .. RAND_MAX) so that each result is as likely as any other, give
// or take one part in RAND_MAX / n; 0 when n < 1.  The first call of the
// process seeds rand with the time in seconds plus the process id,
// overriding any srand the program made before.  Not for secrets: rand is
// predictable.
int RandomInt(int n);

#endif
