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
// Within an entry that asks another one of these for its memory.
thread_local bool nested = false;

template <typename Function>
Function* next(const char* name) {
  static_assert(sizeof(Function*) == sizeof(void*));
  void* const found = ::dlsym(RTLD_NEXT, name);
  Function* function = nullptr;
  __builtin_memcpy(&function, &found, sizeof(function));
  return function;
}

bool fails() {
  return !nested && counting.load(std::memory_order_relaxed) && ++count == failing;
}

// The allocation function of the given name behind this library, found at its first call.
template <typename Function>
class Behind {
 public:
  explicit constexpr Behind(const char* name) : name_(name) {}

  template <typename... Arguments>
  auto operator()(Arguments... arguments) {
    if (function_.load() == nullptr) function_.store(next<Function>(name_));
    const bool before = nested;
    nested = true;
    const auto result = function_.load()(arguments...);
    nested = before;
    return result;
  }

 private:
  const char* name_;
  std::atomic<Function*> function_{nullptr};
};

template <typename Function, typename... Arguments>
void* allocate(Behind<Function>& behind, Arguments... arguments) {
  if (!fails()) return behind(arguments...);
  errno = ENOMEM;
  return nullptr;
}

template <typename Function, typename... Arguments>
void* allocateOrThrow(Behind<Function>& behind, Arguments... arguments) {
  void* const memory = allocate(behind, arguments...);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void writeCount() {
  counting = false;
  const char* const file = std::getenv("ORX_FAULT_COUNT");
  if (file == nullptr) return;
  const int fd = ::open(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  char text[32];
  const int size = std::snprintf(text, sizeof(text), "%lu", count.load());
  (void)!::write(fd, text, static_cast<std::size_t>(size));
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

constinit Behind<void*(std::size_t)> mallocBehind("malloc");
constinit Behind<void*(std::size_t, std::size_t)> callocBehind("calloc");
constinit Behind<void*(void*, std::size_t)> reallocBehind("realloc");
constinit Behind<void*(std::size_t, std::size_t)> alignedBehind("aligned_alloc");
constinit Behind<int(void**, std::size_t, std::size_t)> posixBehind("posix_memalign");
constinit Behind<void*(std::size_t)> newBehind("_Znwm");
constinit Behind<void*(std::size_t)> newArrayBehind("_Znam");
constinit Behind<void*(std::size_t, const std::nothrow_t&)> newNothrowBehind("_ZnwmRKSt9nothrow_t");
constinit Behind<void*(std::size_t, const std::nothrow_t&)> newArrayNothrowBehind(
    "_ZnamRKSt9nothrow_t");
constinit Behind<void*(std::size_t, std::align_val_t)> newAlignedBehind("_ZnwmSt11align_val_t");

}  // namespace

extern "C" {

// The C library calls this for main().
int __libc_start_main(Main* main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loaderFini)(), void* stackEnd) {
  programMain = main;
  return next<Start>("__libc_start_main")(countedMain, argc, argv, init, fini, loaderFini,
                                          stackEnd);
}

void* malloc(std::size_t size) {
  return allocate(mallocBehind, size);
}
void* calloc(std::size_t number, std::size_t size) {
  return allocate(callocBehind, number, size);
}
void* realloc(void* memory, std::size_t size) {
  return allocate(reallocBehind, memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return allocate(alignedBehind, alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  return fails() ? ENOMEM : posixBehind(memory, alignment, size);
}
}

void* operator new(std::size_t size) {
  return allocateOrThrow(newBehind, size);
}
void* operator new[](std::size_t size) {
  return allocateOrThrow(newArrayBehind, size);
}
void* operator new(std::size_t size, const std::nothrow_t& tag) noexcept {
  return allocate<void*(std::size_t, const std::nothrow_t&), std::size_t, const std::nothrow_t&>(
      newNothrowBehind, size, tag);
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return allocate<void*(std::size_t, const std::nothrow_t&), std::size_t, const std::nothrow_t&>(
      newArrayNothrowBehind, size, tag);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(newAlignedBehind, size, alignment);
}
