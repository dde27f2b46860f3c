// Preloaded into a program: makes one of its allocations fail, or all from one on.
//
// Counted are the calls of malloc, calloc, realloc and the aligned kinds from the start of main on;
// what the runtime allocates to get there is none of the program's business.
//
//   FAILING_MALLOC_AT=n       the n-th call fails, counted from 1; 0: none
//   FAILING_MALLOC_ONWARDS=1  and so do all after it
//   FAILING_MALLOC_REPORT=f   the file f is made when a call fails
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

using Main = int (*)(int, char**, char**);
using StartMain = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);

Main program_main = nullptr;
bool counting = false;
long calls = 0;
long failing_call = 0;
bool fails_onwards = false;
const char* report_path = nullptr;

bool Fails() {
  if (!counting || failing_call == 0) return false;
  ++calls;
  const bool fails = fails_onwards ? calls >= failing_call : calls == failing_call;
  if (!fails) return false;
  if (calls == failing_call && report_path != nullptr) {
    close(open(report_path, O_WRONLY | O_CREAT, 0600));
  }
  errno = ENOMEM;
  return true;
}

int CountedMain(int argument_count, char** arguments, char** environment) {
  if (const char* at = std::getenv("FAILING_MALLOC_AT")) failing_call = std::atol(at);
  fails_onwards = std::getenv("FAILING_MALLOC_ONWARDS") != nullptr;
  report_path = std::getenv("FAILING_MALLOC_REPORT");
  counting = true;
  return program_main(argument_count, arguments, environment);
}

}  // namespace

extern "C" {

int __libc_start_main(Main main, int argument_count, char** arguments, void (*init)(),
                      void (*finish)(), void (*loader_finish)(), void* stack_end) {
  program_main = main;
  const auto start = reinterpret_cast<StartMain>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return start(CountedMain, argument_count, arguments, init, finish, loader_finish, stack_end);
}

void* malloc(std::size_t size) { return Fails() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
  return Fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return Fails() ? nullptr : __libc_realloc(block, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  void* made = memalign(alignment, size);
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}

}  // extern "C"
