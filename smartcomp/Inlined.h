#pragma once

/// Put together with its caller where the compiler optimises, for the sources of the library
/// only. Where it does not, a frame would keep room for each part, and deliveries nest.
#ifdef __OPTIMIZE__
#define TREL_INLINED [[gnu::always_inline]]
#else
#define TREL_INLINED
#endif
