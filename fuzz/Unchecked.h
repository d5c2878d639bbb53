#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TREL_LEAKS_ARE_CHECKED
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
#define TREL_LEAKS_ARE_CHECKED
#endif

#ifdef TREL_LEAKS_ARE_CHECKED
#include <sanitizer/lsan_interface.h>
#endif

namespace fuzz {

/// What is allocated while one lives may be lost.
class Unchecked {
public:
#ifdef TREL_LEAKS_ARE_CHECKED
    Unchecked() { __lsan_disable(); }
    ~Unchecked() { __lsan_enable(); }
#else
    Unchecked() {}
    ~Unchecked() {}
#endif
    Unchecked(const Unchecked&) = delete;
    Unchecked& operator=(const Unchecked&) = delete;
};

}  // namespace fuzz
