// ThisMachine.h - what the machine that the tests run on has to keep helpers apart with. Tests ask
// for all of it, whatever machine they are on.
#ifndef TARN_TESTS_SIBLINGS_CLIENT_THISMACHINE_H
#define TARN_TESTS_SIBLINGS_CLIENT_THISMACHINE_H

namespace tarn::test {

struct Machine {
  bool hasNamespaces = true;
  bool hasLandlock = true;
  bool hasSeccomp = true;
};

// Found out once, without the code that is tested: by a start of bubblewrap that does nothing, by
// Landlock's version, and by a filter of system calls that allows all.
const Machine& ThisMachine();

// Takes away what `machine` has not, from this thread and all that it starts from now on; what
// neither has stays away. False: it cannot be done.
bool BecomeMachine(const Machine& machine);

// What there is when a thread of this machine becomes that one.
Machine BothOf(const Machine& one, const Machine& other);

}  // namespace tarn::test

#endif
