// A library that could bring types, and brings none.
#include "smartcomp/TypeLibrary.h"

int trelComponentsAbi() { return trel::smartcomp::typeLibraryAbi; }
void trelRegisterComponents() {}
