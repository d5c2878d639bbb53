#include "smartcomp/Hints.h"

namespace trel::smartcomp {

std::uint64_t nextNumber() {
    static std::uint64_t last = 0;
    return ++last;
}

}  // namespace trel::smartcomp
