// Runs something where deep recursion would not get far.
#ifndef KVXDM_TESTS_SMALL_STACK_H
#define KVXDM_TESTS_SMALL_STACK_H

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

/** Runs `action` to its end on a thread with a stack of 1 MiB, or as much more as a sanitizer makes of it. */
inline void onSmallStack(std::function<void()> action) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, KVXDM_SANITIZED ? 8 << 20 : 1 << 20), 0);
  auto run = [](void* given) -> void* {
    (*static_cast<std::function<void()>*>(given))();
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &action), 0);
  EXPECT_EQ(pthread_join(thread, nullptr), 0);
  EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
}

#endif
