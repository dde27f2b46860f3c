#include "driver/stop.h"

#include <cstdio>

#include "cdfg/memory.h"

void StopShortOfMemory() {
  std::puts("kelvo :Error : Short of memory");
  CdfgStop(255);
}

void StopIfMemoryIsShort(const CdfgGraph* graph) {
  if (CdfgMemoryIsShort(graph) != 0) StopShortOfMemory();
}
