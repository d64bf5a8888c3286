#include "OnStackOf.h"

#include <pthread.h>

#include <stdexcept>

namespace mvtest {

void RunOnStackOf(size_t bytes, const std::function<void()>& work) {
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setstacksize(&attr, bytes);
  pthread_t thread;
  auto run = [](void* arg) -> void* {
    (*static_cast<const std::function<void()>*>(arg))();
    return nullptr;
  };
  const int error = pthread_create(&thread, &attr, run, const_cast<std::function<void()>*>(&work));
  pthread_attr_destroy(&attr);
  if (error != 0) throw std::runtime_error("cannot start a thread");
  pthread_join(thread, nullptr);
}

}  // namespace mvtest
