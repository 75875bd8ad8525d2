#include "support/small_stack.h"

#include <pthread.h>

#include <gtest/gtest.h>

namespace vrktest {

void runOnSmallStack(const std::function<void()> &work, std::size_t bytes) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, bytes), 0);
    pthread_t thread;
    auto entry = [](void *argument) -> void * {
        (*static_cast<const std::function<void()> *>(argument))();
        return nullptr;
    };
    ASSERT_EQ(
        pthread_create(&thread, &attributes, entry, const_cast<std::function<void()> *>(&work)),
        0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

}  // namespace vrktest
