// Preloaded into a program: makes its n-th allocation fail, n from ORX_FAULT_AT, and writes the
// number of all into the file ORX_FAULT_COUNT. Allocations count from main() on, in every thread,
// whoever asks: the program, the C++ library, the engine, ICU, standard streams.
//
// What does not fail goes to the allocator that the program has without this, the one of a
// sanitizer for example. Every entry has to be there: a sanitizer does not go from one to another.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> counting{false};
std::atomic<unsigned long> count{0};
unsigned long failing = 0;

// The function of this name behind this library.
template <typename Function>
Function* behind(const char* name) {
  static_assert(sizeof(Function*) == sizeof(void*));
  void* const found = ::dlsym(RTLD_NEXT, name);
  Function* function = nullptr;
  __builtin_memcpy(&function, &found, sizeof(function));
  return function;
}

bool fails() {
  if (!counting.load(std::memory_order_relaxed) || ++count != failing) return false;
  errno = ENOMEM;
  return true;
}

void* orThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void writeCount() {
  counting = false;
  const char* const file = std::getenv("ORX_FAULT_COUNT");
  if (file == nullptr || *file == '\0') return;
  const int fd = ::open(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  (void)::dprintf(fd, "%lu", count.load());
  (void)::close(fd);
}

using Main = int(int, char**, char**);
using Start = int(Main*, int, char**, void (*)(), void (*)(), void (*)(), void*);
Main* programMain = nullptr;

int countedMain(int argc, char** argv, char** environment) {
  const char* const number = std::getenv("ORX_FAULT_AT");
  failing = number == nullptr ? 0 : std::strtoul(number, nullptr, 10);
  counting = true;
  const int result = programMain(argc, argv, environment);
  writeCount();
  return result;
}

}  // namespace

extern "C" {

// The C library calls this for main().
int __libc_start_main(Main* main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loaderFini)(), void* stackEnd) {
  programMain = main;
  return behind<Start>("__libc_start_main")(countedMain, argc, argv, init, fini, loaderFini,
                                            stackEnd);
}

void* malloc(std::size_t size) {
  static auto* const real = behind<void*(std::size_t)>("malloc");
  return fails() ? nullptr : real(size);
}
void* calloc(std::size_t number, std::size_t size) {
  static auto* const real = behind<void*(std::size_t, std::size_t)>("calloc");
  return fails() ? nullptr : real(number, size);
}
void* realloc(void* memory, std::size_t size) {
  static auto* const real = behind<void*(void*, std::size_t)>("realloc");
  return fails() ? nullptr : real(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  static auto* const real = behind<void*(std::size_t, std::size_t)>("aligned_alloc");
  return fails() ? nullptr : real(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  static auto* const real = behind<int(void**, std::size_t, std::size_t)>("posix_memalign");
  return fails() ? ENOMEM : real(memory, alignment, size);
}
}

void* operator new(std::size_t size) {
  return orThrow(malloc(size));
}
void* operator new[](std::size_t size) {
  return orThrow(malloc(size));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return malloc(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return malloc(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return orThrow(aligned_alloc(static_cast<std::size_t>(alignment), size));
}
