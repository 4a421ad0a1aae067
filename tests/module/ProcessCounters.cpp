#include "tests/module/ProcessCounters.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cstdlib>
#include <new>
#include <typeinfo>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define COUNT_MALLOC 0
#else
#define COUNT_MALLOC 1
#endif

namespace
{
thread_local ProcessCounts t_counts;
thread_local bool t_bCounting = false;

void count(std::size_t ProcessCounts::*pCount)
{
    if (t_bCounting) {
        ++(t_counts.*pCount);
    }
}

/** The next definition of a function after this executable's. */
template <class TFunction> TFunction nextDefinition(const char* pName)
{
    return reinterpret_cast<TFunction>(dlsym(RTLD_NEXT, pName));
}

void* allocate(std::size_t nSize)
{
    count(&ProcessCounts::nNew);
    if (void* pMemory = std::malloc(nSize == 0 ? 1 : nSize)) {
        return pMemory;
    }
    throw std::bad_alloc();
}
} // namespace

void ProcessCounters::start()
{
    t_counts = ProcessCounts{};
    t_bCounting = true;
}

ProcessCounts ProcessCounters::stop()
{
    t_bCounting = false;
    return t_counts;
}

bool ProcessCounters::isMallocCounted()
{
    return COUNT_MALLOC != 0;
}

void* operator new(std::size_t nSize)
{
    return allocate(nSize);
}

void* operator new[](std::size_t nSize)
{
    return allocate(nSize);
}

void* operator new(std::size_t nSize, const std::nothrow_t&) noexcept
{
    count(&ProcessCounts::nNew);
    return std::malloc(nSize == 0 ? 1 : nSize);
}

void* operator new[](std::size_t nSize, const std::nothrow_t&) noexcept
{
    count(&ProcessCounts::nNew);
    return std::malloc(nSize == 0 ? 1 : nSize);
}

void operator delete(void* pMemory) noexcept
{
    std::free(pMemory);
}

void operator delete[](void* pMemory) noexcept
{
    std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t) noexcept
{
    std::free(pMemory);
}

void operator delete[](void* pMemory, std::size_t) noexcept
{
    std::free(pMemory);
}

extern "C" {
int pthread_mutex_lock(pthread_mutex_t* pMutex) noexcept
{
    static const auto s_next = nextDefinition<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    count(&ProcessCounts::nLock);
    return s_next(pMutex);
}

// The runtime's own, which the compiler calls for a throw expression and would not let us declare by its name.
[[noreturn]] void countedThrow(void* pException, std::type_info* pType, void (*destroy)(void*)) __asm__("__cxa_throw");

void countedThrow(void* pException, std::type_info* pType, void (*destroy)(void*))
{
    using Throw = void (*)(void*, std::type_info*, void (*)(void*));
    count(&ProcessCounts::nThrow);
    nextDefinition<Throw>("__cxa_throw")(pException, pType, destroy);
    std::abort();
}

#if COUNT_MALLOC
// The C library's own names of its allocator.
void* __libc_malloc(std::size_t nSize);
void* __libc_calloc(std::size_t nCount, std::size_t nSize);
void* __libc_realloc(void* pMemory, std::size_t nSize);

void* malloc(std::size_t nSize) noexcept
{
    count(&ProcessCounts::nMalloc);
    return __libc_malloc(nSize);
}

void* calloc(std::size_t nCount, std::size_t nSize) noexcept
{
    count(&ProcessCounts::nMalloc);
    return __libc_calloc(nCount, nSize);
}

void* realloc(void* pMemory, std::size_t nSize) noexcept
{
    count(&ProcessCounts::nMalloc);
    return __libc_realloc(pMemory, nSize);
}
#endif
}
