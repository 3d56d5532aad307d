// Return codes and reasons of the keyed database, and the status that carries a pair of them.
#pragma once

#include <cstdint>

namespace orx::kdb {

// The database itself never gives 6, 9 and 10.
enum class Code : std::int32_t {
  success = 0,
  badArgument = 1,  // a length, a mode or a name that cannot be used
  badObject = 2,    // a stale handle, or one of another kind
  busyObject = 3,   // another process has it, or its name leads elsewhere by now
  duplicate = 4,    // the key or the name is taken
  notThere = 5,     // end of data, no record under the key, no such database
  protocolError = 6,
  shortage = 7,     // of space, memory or open files
  systemError = 8,  // input and output, a damaged file, a file system that cannot
  unknownError = 9,
  warning = 10,
  authority = 11,  // no permission, or opened for reading
};

// Only the reasons that the database itself gives; the operator's names of all of them are in
// messages/error_msg.cpp.
enum class Reason : std::int32_t {
  noError = 0,
  arguments = 1,
  authority = 3,
  endOfFile = 14,
  format = 17,
  inUse = 19,
  ioError = 20,
  length = 22,
  notFound = 28,
  notHeld = 29,
  space = 40,
  storage = 41,
  systemReject = 42,  // the file system lacks something
  unique = 46,
  open = 62,  // no further file can be opened
};

// A code with its reason, as every part of the database reports it.
struct [[nodiscard]] Outcome {
  Code code = Code::success;
  Reason reason = Reason::noError;

  [[nodiscard]] constexpr bool ok() const { return code == Code::success; }
  friend constexpr bool operator==(const Outcome&, const Outcome&) = default;
};

inline constexpr Outcome succeeded{};
inline constexpr Outcome endOfData{Code::notThere, Reason::endOfFile};
inline constexpr Outcome recordNotFound{Code::notThere, Reason::notFound};
inline constexpr Outcome duplicateKey{Code::duplicate, Reason::unique};
inline constexpr Outcome noPermission{Code::authority, Reason::authority};
inline constexpr Outcome notADatabase{Code::systemError, Reason::format};
inline constexpr Outcome inputOutputError{Code::systemError, Reason::ioError};
inline constexpr Outcome notSupported{Code::systemError, Reason::systemReject};
inline constexpr Outcome noSpace{Code::shortage, Reason::space};
inline constexpr Outcome noMemory{Code::shortage, Reason::storage};
inline constexpr Outcome tooManyFiles{Code::shortage, Reason::open};
inline constexpr Outcome nameOfAnother{Code::badArgument, Reason::arguments};
inline constexpr Outcome inUse{Code::busyObject, Reason::inUse};

// A storage failure leaves the database as it was before the run: nothing of it is published.
[[nodiscard]] constexpr bool isStorageFailure(Code code) {
  return code == Code::shortage || code == Code::systemError || code == Code::unknownError ||
         code == Code::authority;
}

// An Outcome as the calls of kdb.h hand it out.
struct kdbStatus {
  std::int32_t reason = 0;
  std::int32_t returnCode = 0;
};

[[nodiscard]] constexpr kdbStatus statusOf(const Outcome& outcome) {
  return {.reason = static_cast<std::int32_t>(outcome.reason),
          .returnCode = static_cast<std::int32_t>(outcome.code)};
}

}  // namespace orx::kdb
