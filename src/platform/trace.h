// The diagnostic trace: what traced functions hand over, and the scope that does it for them.
//
// A source unit describes itself once (ORX_TRACE_UNIT), a traced function has one line at its top:
//
//   ORX_TRACE("CMConfigHandle::dump");
//   ...
//   return trace.exit(result);           // a function with a result
//
// A function without a result reports its exit when the scope ends. With every gate closed a
// traced function compares its anchor's counter copy with the counter and goes on.
//
// Flags and destination come from the environment, read at the first synchronisation:
//   ORX_TRACE       comma-separated PATTERN=FLAGS, for example "CM*=0x41,main=0x40". PATTERN is a
//                   shell pattern over function names; FLAGS a C number. All matching entries add
//                   up.
//   ORX_TRACE_FILE  the file that trace lines are appended to; standard error when it is not set.
//                   One that cannot be opened, or that names a database, is told on standard error
//                   and closes every gate: a trace never changes what a run does.
// Without ORX_TRACE every flag is 0 and unconditional lines go nowhere. Trace lines never reach
// standard output, and errno survives every call.
//
// Flag bits: 0x40 entry and exit, 0x01 detail, 0x08 and 0x10 as the traced function says.
// Events are for one thread at a time: whoever starts a second one asks traceIsOpen() first.
#pragma once

#include <atomic>
#include <concepts>
#include <cstdint>
#include <string_view>
#include <type_traits>
#include <utility>

namespace orx {

// One per source unit. The lengths are those of the text before them, without terminating zero.
struct TraceUnit {
  std::int32_t headerVersion;
  std::int32_t headerMagic;
  const char* sourceFile;
  std::int32_t sourceFileLength;
  const char* buildDate;  // "Feb 17 2016"
  std::int32_t buildDateLength;
  const char* buildTime;  // "10:17:37"
  std::int32_t buildTimeLength;
  const char* id;  // source name in upper case, without extension
  std::int32_t idLength;
  const char* suffix;
  std::int32_t suffixLength;
};

namespace detail {
constexpr std::int32_t textLength(const char* text) {
  return static_cast<std::int32_t>(std::string_view(text).size());
}
}  // namespace detail

constexpr TraceUnit makeTraceUnit(const char* sourceFile, const char* id, const char* buildDate,
                                  const char* buildTime) {
  return {630,        32768,
          sourceFile, detail::textLength(sourceFile),
          buildDate,  detail::textLength(buildDate),
          buildTime,  detail::textLength(buildTime),
          id,         detail::textLength(id),
          "*",        1};
}

// Holds 1 at start and is raised by every change of the trace setting, so that anchors notice.
extern std::int32_t traceSyncCounter;

// One per traced function, static. `flags` and `flagsAt` are written by DIAG_Sync alone.
struct TraceAnchor {
  const TraceUnit* unit;
  const char* function;
  std::int32_t functionLength;
  std::int32_t line;
  const std::int32_t* syncCounter;
  std::int32_t functionClass;       // 4096 for operations, 512 for members of value classes
  std::atomic<std::int32_t> flags;  // atomic: a traced function may run in a second thread
  std::atomic<std::int32_t> flagsAt;
};

constexpr TraceAnchor makeTraceAnchor(const TraceUnit& unit, const char* function,
                                      std::int32_t line, std::int32_t functionClass = 4096) {
  return {&unit, function, detail::textLength(function), line, &traceSyncCounter, functionClass,
          0,     0};
}

enum class TraceEvent : std::int32_t { entry = 0, exitWithValue = 1, exit = 2 };

// Refreshes the anchor's cached flags from the trace setting and returns them.
std::int32_t DIAG_Sync(TraceAnchor& anchor);

// Each writes its lines (time, unit, function, `line`) as long as the trace has a destination,
// whatever the anchor's flags are: callers ask TraceScope::on() first, or write unconditionally.
void DIAG_Event(TraceAnchor& anchor, std::int32_t line, TraceEvent kind, std::int64_t value = 0);
// Ends the line itself.
[[gnu::format(printf, 3, 4)]] void DIAG_Printf(TraceAnchor& anchor, std::int32_t line,
                                               const char* format, ...);
// `length` bytes in hexadecimal, 16 a line, below `title`.
void DIAG_Dump(TraceAnchor& anchor, std::int32_t line, const void* address, std::int64_t length,
               const char* title);

// Whether any gate may be open: work is then to be done in the calling thread.
[[nodiscard]] bool traceIsOpen();

namespace trace_setting {
// Replaces the setting read from the environment: `patterns` as ORX_TRACE, `file` as
// ORX_TRACE_FILE (empty: standard error). Every anchor synchronises again. For one thread, while no
// traced function runs in another.
void configure(std::string_view patterns, std::string_view file);
}  // namespace trace_setting

// The gate of one call of a traced function.
class TraceScope {
 public:
  static constexpr std::int32_t detail = 0x01;
  static constexpr std::int32_t events = 0x40;

  explicit TraceScope(TraceAnchor& anchor)
      : anchor_(anchor),
        flags_(anchor.flagsAt.load(std::memory_order_acquire) == *anchor.syncCounter
                   ? anchor.flags.load(std::memory_order_relaxed)
                   : DIAG_Sync(anchor)) {
    if (on(events)) DIAG_Event(anchor_, anchor_.line, TraceEvent::entry);
  }
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;
  ~TraceScope() {
    if (on(events)) DIAG_Event(anchor_, anchor_.line, TraceEvent::exit);
  }

  [[nodiscard]] bool on(std::int32_t bit) const { return (flags_ & bit) == bit; }
  [[nodiscard]] TraceAnchor& anchor() const { return anchor_; }

  // Hands `result` through; a result that is no number, flag or enumerator is traced as 0.
  template <typename Result>
  [[nodiscard]] std::remove_cvref_t<Result> exit(Result&& result,
                                                 std::int32_t line = __builtin_LINE()) {
    if (on(events)) {
      DIAG_Event(anchor_, line, TraceEvent::exitWithValue, valueOf(result));
      flags_ &= ~events;
    }
    return std::forward<Result>(result);
  }

 private:
  template <typename Result>
  static std::int64_t valueOf(const Result& result) {
    if constexpr (std::integral<Result> || std::is_enum_v<Result>) {
      return static_cast<std::int64_t>(result);
    } else if constexpr (std::is_pointer_v<Result>) {
      return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(result));  // NOLINT
    } else {
      return 0;
    }
  }

  TraceAnchor& anchor_;
  std::int32_t flags_;
};

}  // namespace orx

// Describes the source unit that the following functions belong to: ORX_TRACE_UNIT("orxccmci.cpp",
// "ORXCCMCI"). A unit of several files defines its TraceUnit in one and names it in the others by
// a reference called traceUnit.
#define ORX_TRACE_UNIT(sourceFile, id)          \
  static constexpr ::orx::TraceUnit traceUnit = \
      ::orx::makeTraceUnit(sourceFile, id, __DATE__, __TIME__)

// The one line of a traced function; defines its anchor and `trace`, its scope. Needs a TraceUnit
// called traceUnit in sight.
#define ORX_TRACE(function)                                  \
  static constinit ::orx::TraceAnchor traceAnchor =          \
      ::orx::makeTraceAnchor(traceUnit, function, __LINE__); \
  [[maybe_unused]] ::orx::TraceScope trace(traceAnchor)

// The same for the members of the small value classes.
#define ORX_TRACE_VALUE(function)                                 \
  static constinit ::orx::TraceAnchor traceAnchor =               \
      ::orx::makeTraceAnchor(traceUnit, function, __LINE__, 512); \
  [[maybe_unused]] ::orx::TraceScope trace(traceAnchor)
