// A library that ends the process that loads it.
#include <cstdlib>

#include "smartcomp/TypeLibrary.h"

int trelComponentsAbi() { return trel::smartcomp::typeLibraryAbi; }
void trelRegisterComponents() { std::abort(); }
