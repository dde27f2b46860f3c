// Allocation that never fails silently, and the one place where a run is stopped.
//
// Passes do not handle lack of memory: the wrappers below call the registered handler, which ends
// the process. Registering a handler covers `new` and the standard containers too.
#pragma once

#include <cstddef>

// Registers the function that is called when memory is short (null: none). It must not return.
void MemSetOomHandler(void (*handler)());

// Each answers the block, or calls the handler; null only when no handler is registered.
// A zero-filled block.
void* MemAllocZero(std::size_t size);
// The block resized, contents kept. A null block is allocated.
void* MemRealloc(void* block, std::size_t size);
// A heap copy of a string; null for null.
char* MemStrdup(const char* text);
// Releases a block; null is allowed.
void MemFree(void* block);

// Ends the process with `status` after flushing standard output. Every stop of the system goes
// through here.
[[noreturn]] void CdfgStop(int status);
// Makes CdfgStop call `handler` instead (null: end the process again), so that tests and fuzzing
// can look at a stop from within. The handler must not return; it may throw.
void CdfgSetStopHandler(void (*handler)(int status));
