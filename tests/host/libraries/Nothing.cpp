#include "smartcomp/Export.h"

// A library, but none of component types.
extern "C" TREL_API int trelComponentsAbi();
int trelComponentsAbi() { return 1; }
