// The benchmark binary's global operator new and delete: malloc and free, with a per-thread count.
#include "allocation_counter.hpp"

#include <cstdlib>
#include <new>

namespace {

// Per thread, so that counting costs one increment and another thread's work never shows.
thread_local std::uint64_t allocations = 0;

void* allocate(std::size_t size)
{
    ++allocations;
    if (size == 0)
        size = 1;
    for (;;) {
        if (void* block = std::malloc(size))
            return block;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr)
            throw std::bad_alloc();
        handler();
    }
}

void* allocate_aligned(std::size_t size, std::align_val_t alignment)
{
    ++allocations;
    std::size_t align = static_cast<std::size_t>(alignment);
    if (align < sizeof(void*))
        align = sizeof(void*);
    for (;;) {
        void* block = nullptr;
        if (posix_memalign(&block, align, size == 0 ? 1 : size) == 0)
            return block;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr)
            throw std::bad_alloc();
        handler();
    }
}

template <class Allocate, class... Args>
void* allocate_nothrow(Allocate allocate_or_throw, Args... args) noexcept
{
    try {
        return allocate_or_throw(args...);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

namespace qxbench {

std::uint64_t allocations_on_this_thread() noexcept
{
    return allocations;
}

}  // namespace qxbench

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate_nothrow(allocate, size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate_nothrow(allocate, size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return allocate_aligned(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return allocate_aligned(size, alignment); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return allocate_nothrow(allocate_aligned, size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return allocate_nothrow(allocate_aligned, size, alignment);
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete(void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete[](void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { std::free(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept { std::free(block); }
