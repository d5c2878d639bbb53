#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

#include "platform/Export.h"

namespace sdf {

/// Memory for the very many elements of one file, which are all of one size and mostly
/// live and die together: they stand side by side in pages, in the order in which they
/// are made. A page goes back to the heap with the last of its elements, whichever
/// thread drops it and whether or not the `Pages` still live.
class TREL_PLATFORM_API Pages {
public:
    Pages() = default;
    ~Pages();
    Pages(const Pages&) = delete;
    Pages& operator=(const Pages&) = delete;

    /// Room for an object of `size` bytes, at most `largest`.
    /// \throws std::bad_alloc
    void* take(std::size_t size) {
        constexpr std::size_t unit = alignof(void*);
        size = (size + unit - 1) / unit * unit;
        if (left_ < size) turn();
        ++taken_;
        return reinterpret_cast<char*>(page_) + (pageSize - std::exchange(left_, left_ - size));
    }

    /// The room that one `take` of `size` gave.
    static void giveBack(void* room, std::size_t size) noexcept;

    static constexpr std::size_t largest = 1024;

private:
    struct alignas(std::max_align_t) Page {
        std::atomic<std::size_t> inUse;
    };

    // A heap that keeps its own notes beside what it gives finds room for the next page
    // at the next multiple of the alignment.
    static constexpr std::size_t alignment = 256 * largest;
    static constexpr std::size_t pageSize = alignment - 64;

    void turn();
    void leave() noexcept;
    static void drop(Page& page, std::size_t rooms) noexcept;

    Page* page_ = nullptr;
    std::size_t left_ = 0;   // bytes of the page
    std::size_t taken_ = 0;  // rooms of the page
};

/// Has std::allocate_shared use pages, which must live while it is called.
template <typename T>
struct PageAllocator {
    using value_type = T;

    explicit PageAllocator(Pages& from) : pages(&from) {}
    template <typename Other>
    explicit(false) PageAllocator(const PageAllocator<Other>& other) : pages(other.pages) {}

    T* allocate(std::size_t) {
        static_assert(sizeof(T) <= Pages::largest && alignof(T) <= alignof(void*));
        return static_cast<T*>(pages->take(sizeof(T)));
    }
    void deallocate(T* room, std::size_t) noexcept { Pages::giveBack(room, sizeof(T)); }
    bool operator==(const PageAllocator&) const = default;

    Pages* pages;
};

}  // namespace sdf
