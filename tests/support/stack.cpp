#include "tests/support/stack.h"

#include <gtest/gtest.h>
#include <pthread.h>

namespace support {
namespace {

void* CallAction(void* action) {
  (*static_cast<const std::function<void()>*>(action))();
  return nullptr;
}

}  // namespace

void RunOnStack(std::size_t size, const std::function<void()>& action) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
  pthread_t thread;
  std::function<void()> call = action;
  ASSERT_EQ(pthread_create(&thread, &attributes, CallAction, &call), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace support
