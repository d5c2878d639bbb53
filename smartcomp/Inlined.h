#pragma once

/// Put together with its caller where the compiler optimises, for the sources of the library
/// only. Where it does not, a frame would keep room for each part, and deliveries nest.
#ifdef __OPTIMIZE__
#define TREL_INLINED [[gnu::always_inline]]
#else
#define TREL_INLINED
#endif

/// The same, with a caller that ends in a tail call: clang makes none where anything stands on
/// the stack that somebody has the address of, so there it stays apart.
#ifdef __clang__
#define TREL_INLINED_IN_TAIL_CALLER [[gnu::noinline]]
#else
#define TREL_INLINED_IN_TAIL_CALLER TREL_INLINED inline
#endif
