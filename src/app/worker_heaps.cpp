#include "app/worker_heaps.hpp"

#include <cstdlib>  // defines __GLIBC__ with glibc

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace pellago::app {

#ifdef __GLIBC__

namespace {

// As large as one of glibc's worker heaps: each is made writable whole when it is created.
constexpr int kHeapPad = 64 << 20;

}  // namespace

void pad_worker_heaps() { mallopt(M_TOP_PAD, kHeapPad); }

#else

void pad_worker_heaps() {}

#endif

}  // namespace pellago::app
