#include "platform/sdf/Pages.h"

#include <sys/mman.h>

#include <cstdint>
#include <limits>
#include <new>

// A room that was given back is nobody's until its page goes.
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(room, size)
#define ASAN_UNPOISON_MEMORY_REGION(room, size)
#endif

namespace sdf {

// Has the system give the memory that is soon written to, in one go instead of at each
// first touch; where it cannot, the touches do.
static void populate([[maybe_unused]] void* start, [[maybe_unused]] std::size_t size) {
#ifdef MADV_POPULATE_WRITE
    ::madvise(start, size, MADV_POPULATE_WRITE);
#endif
}

// A page from which rooms are still taken counts as having more of them than it can have.
constexpr std::size_t open = std::numeric_limits<std::size_t>::max() / 2;

Pages::~Pages() { leave(); }

void Pages::turn() {
    const bool isFirst = page_ == nullptr;  // and may stay the only one
    leave();
    page_ = new (::operator new(pageSize, std::align_val_t(alignment))) Page{open};
    left_ = pageSize - sizeof(Page);
    if (!isFirst) populate(page_, pageSize);
}

void Pages::leave() noexcept {
    if (page_) drop(*page_, open - taken_);
    page_ = nullptr;
    left_ = taken_ = 0;
}

void Pages::giveBack(void* room, [[maybe_unused]] std::size_t size) noexcept {
    ASAN_POISON_MEMORY_REGION(room, size);
    const auto address = reinterpret_cast<std::uintptr_t>(room);
    drop(*reinterpret_cast<Page*>(address - address % alignment), 1);
}

void Pages::drop(Page& page, std::size_t rooms) noexcept {
    if (page.inUse.fetch_sub(rooms, std::memory_order_acq_rel) != rooms) return;
    page.~Page();
    ASAN_UNPOISON_MEMORY_REGION(&page, pageSize);
    ::operator delete(&page, pageSize, std::align_val_t(alignment));
}

}  // namespace sdf
