// A library that was built for another layout of the classes.
#include "smartcomp/TypeLibrary.h"

int trelComponentsAbi() { return trel::smartcomp::typeLibraryAbi + 1; }
void trelRegisterComponents() {}
