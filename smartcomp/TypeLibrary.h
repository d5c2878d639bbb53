#pragma once

#include "smartcomp/Export.h"

/// What a library of component types gives a program that loads it. A library
/// defines both functions; a program asks for the number first and registers
/// only types that were built against the same layout of the classes.
extern "C" {
TREL_API int trelComponentsAbi();
TREL_API void trelRegisterComponents();
}

namespace trel::smartcomp {

/// Changes whenever a class that types derive from changes its layout or its
/// table of virtual operations, and when one whose inline functions they use changes its
/// layout or what it takes for granted of its members.
inline constexpr int typeLibraryAbi = 10;

}  // namespace trel::smartcomp
