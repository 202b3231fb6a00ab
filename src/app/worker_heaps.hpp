#pragma once

namespace pellago::app {

// The window checks and merges on worker threads. glibc grows a worker thread's heap one page,
// and one system call, at a time unless it is told to pad each growth; a large project's tree
// then costs hundreds of thousands of calls (a 20 000-clip merge on a worker thread took a fifth
// longer than on the main thread). Call once at start, before any worker runs. With another C
// library it does nothing.
void pad_worker_heaps();

}  // namespace pellago::app
