#pragma once

// Compiled into the copy of the library that is mutated, in front of every file
// of it: all mutants are in one build, and one of them at a time is switched on.
extern "C" {
extern int trelActiveMutant;              // TREL_MUTANT
extern unsigned char* trelMutantReached;  // a byte each, in the file TREL_MUTANTS_REACHED
}

inline bool trelMutant(int number) {
    trelMutantReached[number] = 1;
    return number == trelActiveMutant;
}
