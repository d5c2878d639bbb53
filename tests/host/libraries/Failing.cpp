// A library that fails while it registers its types.
#include <stdexcept>

#include "smartcomp/TypeLibrary.h"

int trelComponentsAbi() { return trel::smartcomp::typeLibraryAbi; }
void trelRegisterComponents() { throw std::runtime_error("no licence"); }
