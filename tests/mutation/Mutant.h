#pragma once

// Compiled into the copy of the library that is mutated, in front of every file
// of it: all mutants are in one build, and one of them at a time is switched on.
extern "C" {
// Inline functions of the library's headers ask too, in every library that has them.
[[gnu::visibility("default")]] extern int trelActiveMutant;  // TREL_MUTANT
// A byte each, in the file TREL_MUTANTS_REACHED.
[[gnu::visibility("default")]] extern unsigned char* trelMutantReached;
}

inline bool trelMutant(int number) {
    trelMutantReached[number] = 1;
    return number == trelActiveMutant;
}
