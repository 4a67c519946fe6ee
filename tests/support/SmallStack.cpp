#include "SmallStack.h"

#include <gtest/gtest.h>

#include <cstddef>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <pthread.h>
#endif

namespace kestrel::graph::test
{

namespace
{

// Builds whose frames are larger than those of the library as it is used say how much they need.
#if defined(TEST_STACK_SIZE)
constexpr std::size_t stackSize = TEST_STACK_SIZE;
#else
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif
#else
constexpr bool sanitized = false;
#endif

constexpr std::size_t stackSize = (sanitized ? std::size_t{16} : std::size_t{1}) << 20;
#endif

using Work = std::function<void()>;

#if defined(_WIN32)
DWORD WINAPI runWork(void* work)
{
    (*static_cast<Work*>(work))();
    return 0;
}
#else
void* runWork(void* work)
{
    (*static_cast<Work*>(work))();
    return nullptr;
}
#endif

} // namespace

#if defined(_WIN32)
void onSmallStack(Work work)
{
    HANDLE const thread =
        CreateThread(nullptr, stackSize, &runWork, &work, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(nullptr, thread);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}
#else
void onSmallStack(Work work)
{
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, stackSize));
    pthread_t thread;
    int const started = pthread_create(&thread, &attributes, &runWork, &work);
    pthread_attr_destroy(&attributes);
    ASSERT_EQ(0, started);
    ASSERT_EQ(0, pthread_join(thread, nullptr));
}
#endif

} // namespace kestrel::graph::test
