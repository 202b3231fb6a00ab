#include "app/worker_heaps.hpp"

#include <malloc.h>

namespace pellago::app {

namespace {

// As large as one of glibc's worker heaps: each is made writable whole when it is created.
constexpr int kHeapPad = 64 << 20;

}  // namespace

void pad_worker_heaps() { mallopt(M_TOP_PAD, kHeapPad); }

}  // namespace pellago::app
