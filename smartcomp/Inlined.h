#pragma once

/// Inlined where the compiler optimises, for the sources of the library only. Where it does
/// not, a frame keeps room for each part of what is inlined, and deliveries nest.
#ifdef __OPTIMIZE__
#define TREL_INLINED [[gnu::always_inline]]
#else
#define TREL_INLINED
#endif
