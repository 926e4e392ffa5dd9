// RandomDraws.h - the random numbers that the kernel draws, as a test wants them: collisions of
// names cannot be had otherwise. Sits between the kernel and the system.
#ifndef TARN_TESTS_KERNEL_RANDOMDRAWS_H
#define TARN_TESTS_KERNEL_RANDOMDRAWS_H

namespace tarn::test {

// The next so many draws give zeros; those after them are the system's again.
void GiveZeros(int draws);

// How many of them have not been drawn.
int ZeroDrawsLeft();

}  // namespace tarn::test

#endif
