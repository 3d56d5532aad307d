#include "platform/trace.h"

#include <fcntl.h>
#include <fnmatch.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "platform/file.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"

namespace orx {

constinit std::int32_t traceSyncCounter = 1;

namespace {

class KeepErrno {
 public:
  KeepErrno() : saved_(errno) {}
  KeepErrno(const KeepErrno&) = delete;
  KeepErrno& operator=(const KeepErrno&) = delete;
  ~KeepErrno() { errno = saved_; }

 private:
  int saved_;
};

struct CloseStream {
  void operator()(std::FILE* stream) const {
    if (stream != stderr) (void)std::fclose(stream);
  }
};

struct Gate {
  std::string pattern;
  std::int32_t flags;
};

struct Setting {
  std::vector<Gate> gates;
  std::unique_ptr<std::FILE, CloseStream> stream;  // none while every gate is closed
};

std::vector<Gate> parseGates(std::string_view text) {
  std::vector<Gate> gates;
  while (!text.empty()) {
    const std::string entry(text.substr(0, text.find(',')));
    text.remove_prefix(std::min(text.size(), entry.size() + 1));
    const auto equals = entry.rfind('=');
    if (equals == std::string::npos || equals == 0) continue;
    const auto flags = std::strtol(entry.c_str() + equals + 1, nullptr, 0);
    gates.push_back({entry.substr(0, equals), static_cast<std::int32_t>(flags)});
  }
  return gates;
}

void sayClosed(const char* why) {
  (void)std::fprintf(stderr, "nothing is traced: ORX_TRACE_FILE %s\n", why);
}

// Also of one that is to come: a trace in its place would keep it from being made.
bool isDatabaseName(const std::string& file) {
  return kdb::belongsToDatabase(file) || kdb::looksLikeDatabase(file.c_str());
}

// Null, and one line on standard error, for a file that cannot take a trace: lines in a database
// would be its end. A pipe that nobody reads keeps nobody waiting.
std::FILE* openTraceFile(const std::string& file) {
  if (isDatabaseName(file)) {
    sayClosed("names a database");
    return nullptr;
  }
  UniqueFd opened = openFile(file, O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY, 0666);
  std::FILE* const stream = opened.valid() ? ::fdopen(opened.get(), "a") : nullptr;
  if (stream == nullptr) {
    sayClosed("cannot be opened");
    return nullptr;
  }
  const int descriptor = opened.release();       // the stream closes it
  (void)::fcntl(descriptor, F_SETFL, O_APPEND);  // whoever reads a pipe slowly gets all the same
  return stream;
}

// A file that cannot be opened closes the trace; tracing must not change what a run does.
Setting makeSetting(std::string_view patterns, std::string_view file) {
  Setting setting{parseGates(patterns), nullptr};
  if (setting.gates.empty()) return setting;
  setting.stream.reset(file.empty() ? stderr : openTraceFile(std::string(file)));
  if (setting.stream == nullptr) setting.gates.clear();
  return setting;
}

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

Setting& setting() {
  static Setting current = makeSetting(environment("ORX_TRACE"), environment("ORX_TRACE_FILE"));
  return current;
}

void printHead(std::FILE* stream, const TraceAnchor& anchor, std::int32_t line) {
  std::timespec now{};
  (void)std::timespec_get(&now, TIME_UTC);
  std::tm parts{};
  (void)gmtime_r(&now.tv_sec, &parts);
  (void)std::fprintf(stream, "%02d:%02d:%02d.%06ld %s %s:%d ", parts.tm_hour, parts.tm_min,
                     parts.tm_sec, now.tv_nsec / 1000, anchor.unit->id, anchor.function, line);
}

void printDumpRow(std::FILE* stream, const std::uint8_t* bytes, std::int64_t offset,
                  std::int64_t count) {
  (void)std::fprintf(stream, "  %06llx ", static_cast<unsigned long long>(offset));
  for (std::int64_t i = 0; i < 16; ++i) {
    if (i < count) {
      (void)std::fprintf(stream, " %02X", bytes[offset + i]);
    } else {
      (void)std::fputs("   ", stream);
    }
  }
  (void)std::fputs("  ", stream);
  for (std::int64_t i = 0; i < count; ++i) {
    const std::uint8_t c = bytes[offset + i];
    (void)std::fputc(c >= 0x20 && c < 0x7F ? c : '.', stream);
  }
  (void)std::fputc('\n', stream);
}

}  // namespace

std::int32_t DIAG_Sync(TraceAnchor& anchor) {
  const KeepErrno keep;
  std::int32_t flags = 0;
  for (const Gate& gate : setting().gates) {
    if (fnmatch(gate.pattern.c_str(), anchor.function, FNM_NOESCAPE) == 0) flags |= gate.flags;
  }
  anchor.flags.store(flags, std::memory_order_relaxed);
  anchor.flagsAt.store(*anchor.syncCounter, std::memory_order_release);
  return flags;
}

void DIAG_Event(TraceAnchor& anchor, std::int32_t line, TraceEvent kind, std::int64_t value) {
  const KeepErrno keep;
  std::FILE* stream = setting().stream.get();
  if (stream == nullptr) return;
  printHead(stream, anchor, line);
  switch (kind) {
    case TraceEvent::entry:
      (void)std::fputs("entry\n", stream);
      break;
    case TraceEvent::exitWithValue:
      (void)std::fprintf(stream, "exit %lld\n", static_cast<long long>(value));
      break;
    case TraceEvent::exit:
      (void)std::fputs("exit\n", stream);
      break;
  }
  (void)std::fflush(stream);
}

void DIAG_Printf(TraceAnchor& anchor, std::int32_t line, const char* format, ...) {
  const KeepErrno keep;
  std::FILE* stream = setting().stream.get();
  if (stream == nullptr) return;
  printHead(stream, anchor, line);
  std::va_list arguments;
  va_start(arguments, format);
  (void)std::vfprintf(stream, format, arguments);
  va_end(arguments);
  (void)std::fputc('\n', stream);
  (void)std::fflush(stream);
}

void DIAG_Dump(TraceAnchor& anchor, std::int32_t line, const void* address, std::int64_t length,
               const char* title) {
  const KeepErrno keep;
  std::FILE* stream = setting().stream.get();
  if (stream == nullptr) return;
  printHead(stream, anchor, line);
  (void)std::fprintf(stream, "%s (%lld bytes)\n", title, static_cast<long long>(length));
  const auto* bytes = static_cast<const std::uint8_t*>(address);
  for (std::int64_t offset = 0; offset < length; offset += 16) {
    printDumpRow(stream, bytes, offset, std::min<std::int64_t>(16, length - offset));
  }
  (void)std::fflush(stream);
}

bool traceIsOpen() {
  return !setting().gates.empty();
}

namespace trace_setting {
void configure(std::string_view patterns, std::string_view file) {
  setting() = makeSetting(patterns, file);
  ++traceSyncCounter;
}
}  // namespace trace_setting

}  // namespace orx
