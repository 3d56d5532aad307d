#include "platform/kdb.h"

#include <cstring>
#include <string>
#include <utility>

#include "platform/kdb/engine.h"
#include "platform/kdb/failure.h"
#include "platform/kdb/slots.h"

namespace orx::kdb {

namespace {

constexpr std::int32_t numberOf(Code code) {
  return static_cast<std::int32_t>(code);
}

template <typename Kind>
Kind* objectOf(kdbHandle handle) {
  if (handle.slot == nullptr || handle.slot->tag != handle.tag) return nullptr;
  return std::get_if<Kind>(&handle.slot->object);
}

// The one place where a handle is checked: `call` gets the object only when the tags agree and it
// is of the right kind. A failure is remembered for GetLastStatus.
template <typename Kind, typename Call>
std::int32_t checked(kdbHandle handle, Call call) {
  Kind* object = objectOf<Kind>(handle);
  if (object == nullptr) return numberOf(Code::badObject);
  Database* database = handle.slot->database;
  const Outcome outcome = call(*object, *database);
  if (!outcome.ok() && handle.slot->database == database) database->noteFailure(outcome);
  return numberOf(outcome.code);
}

using OwnedDatabase = std::unique_ptr<Database>;
using OwnedScan = std::unique_ptr<OpenScan>;
using OwnedSnapshot = std::unique_ptr<Snapshot>;

constexpr Outcome badLength{Code::badArgument, Reason::length};
constexpr Outcome badArgument{Code::badArgument, Reason::arguments};

bool isKey(const std::uint8_t* key, std::int32_t length) {
  return key != nullptr && length == static_cast<std::int32_t>(keySize);
}

bool isRecord(const std::uint8_t* buffer, std::int32_t length) {
  return buffer != nullptr && length == static_cast<std::int32_t>(recordSize);
}

Outcome openMode(std::int32_t number, OpenMode& mode) {
  switch (number) {
    case openForReading:
      mode = OpenMode::read;
      return succeeded;
    case openForUpdate:
      mode = OpenMode::update;
      return succeeded;
    case openAsNew:
      mode = OpenMode::create;
      return succeeded;
    default:
      return badArgument;
  }
}

Outcome openDatabase(const char* name, std::int32_t nameLength, std::int32_t modeNumber,
                     kdbHandle& handle) {
  OpenMode mode{};
  if (name == nullptr || nameLength <= 0) return badArgument;
  if (const Outcome outcome = openMode(modeNumber, mode); !outcome.ok()) return outcome;
  OwnedDatabase database;
  const std::string text(name, static_cast<std::size_t>(nameLength));
  if (const Outcome outcome = Database::open(text, mode, database); !outcome.ok()) return outcome;
  Database* object = database.get();
  handle = SlotTable::instance().enter(std::move(database), object);
  return succeeded;
}

template <typename Change>
std::int32_t changeRecord(kdbHandle handle, const std::uint8_t* key, std::int32_t keyLength,
                          const std::uint8_t* buffer, std::int32_t bufferLength, Change change) {
  return checked<OwnedDatabase>(handle, [&](OwnedDatabase&, Database& database) -> Outcome {
    if (!isKey(key, keyLength) || !isRecord(buffer, bufferLength)) return badLength;
    return (database.*change)(Key::ofRecord(key), buffer);
  });
}

}  // namespace

std::int32_t kdbOpen(const char* name, std::int32_t nameLength, std::int32_t mode,
                     kdbHandle& database, kdbStatus& status) {
  database = kdbHandle();
  status = statusOf(openDatabase(name, nameLength, mode, database));
  return status.returnCode;
}

std::int32_t StartUpdate(kdbHandle database, const std::uint8_t* key, std::int32_t keyLength,
                         kdbHandle& scan) {
  scan = kdbHandle();
  return checked<OwnedDatabase>(database, [&](OwnedDatabase&, Database& open) -> Outcome {
    if (!isKey(key, keyLength)) return badLength;
    OwnedSnapshot snapshot;
    if (const Outcome outcome = open.snapshot(snapshot); !outcome.ok()) return outcome;
    auto made = std::make_unique<OpenScan>(OpenScan{Scan(std::move(*snapshot))});
    if (const Key start = Key::ofRecord(key); start != Key()) {
      if (const Outcome outcome = made->scan.seek(start); !outcome.ok()) return outcome;
    }
    OpenScan& started = *made;
    scan = SlotTable::instance().enter(std::move(made), &open);
    started.held = SlotTable::instance().enter(HeldRecord{scan.slot}, &open).slot;
    return succeeded;
  });
}

std::int32_t ReadNextForUpdate(kdbHandle scan, std::int32_t, std::uint8_t* buffer,
                               std::int32_t bufferLength, std::int32_t& length, kdbHandle& held) {
  held = kdbHandle();
  return checked<OwnedScan>(scan, [&](OwnedScan& open, Database&) -> Outcome {
    if (!isRecord(buffer, bufferLength)) return badLength;
    const std::uint8_t* record = nullptr;
    // Before the record is copied: the caller passes the handle on as one piece, and would wait for
    // its parts to be stored.
    held = SlotTable::renew(*open->held);
    if (const Outcome outcome = open->scan.next(record); !outcome.ok()) {
      held = kdbHandle();
      return outcome;
    }
    std::memcpy(buffer, record, recordSize);
    length = static_cast<std::int32_t>(recordSize);
    return succeeded;
  });
}

std::int32_t DeleteHeldRecord(kdbHandle held) {
  return checked<HeldRecord>(held, [&](HeldRecord& record, Database& database) -> Outcome {
    auto& open = std::get<OwnedScan>(record.scan->object);
    const Outcome outcome = database.deleteHeld(open->scan);
    if (outcome.ok()) (void)SlotTable::renew(*open->held);
    return outcome;
  });
}

std::int32_t AddRecord(kdbHandle database, const std::uint8_t* key, std::int32_t keyLength,
                       const std::uint8_t* buffer, std::int32_t bufferLength) {
  return changeRecord(database, key, keyLength, buffer, bufferLength, &Database::add);
}

std::int32_t UpdateByKey(kdbHandle database, const std::uint8_t* key, std::int32_t keyLength,
                         const std::uint8_t* buffer, std::int32_t bufferLength) {
  return changeRecord(database, key, keyLength, buffer, bufferLength, &Database::update);
}

std::int32_t DeleteByKey(kdbHandle database, const std::uint8_t* key, std::int32_t keyLength) {
  return checked<OwnedDatabase>(database, [&](OwnedDatabase&, Database& open) -> Outcome {
    return isKey(key, keyLength) ? open.erase(Key::ofRecord(key)) : badLength;
  });
}

std::int32_t ReadNextByKey(kdbHandle database, const std::uint8_t* key, std::int32_t keyLength,
                           std::uint8_t* buffer, std::int32_t bufferLength, std::int32_t& length) {
  return checked<OwnedDatabase>(database, [&](OwnedDatabase&, Database& open) -> Outcome {
    if (!isKey(key, keyLength) || !isRecord(buffer, bufferLength)) return badLength;
    const Key wanted = Key::ofRecord(key);
    const Outcome outcome = open.readNext(wanted, buffer);
    if (!outcome.ok()) return outcome;
    // Stored under a key that is not its own: who goes on from its own would never come to an end.
    if (Key::ofRecord(buffer) < wanted) return notADatabase;
    length = static_cast<std::int32_t>(recordSize);
    return succeeded;
  });
}

std::int32_t OpenCursor(kdbHandle database, const std::uint8_t*, std::int32_t, kdbHandle& cursor) {
  cursor = kdbHandle();
  return checked<OwnedDatabase>(database, [&](OwnedDatabase&, Database& open) -> Outcome {
    OwnedSnapshot snapshot;
    if (const Outcome outcome = open.snapshot(snapshot); !outcome.ok()) return outcome;
    cursor = SlotTable::instance().enter(std::move(snapshot), &open);
    return succeeded;
  });
}

std::int32_t ReadNextFromCursor(kdbHandle cursor, std::int32_t, std::uint8_t* buffer,
                                std::int32_t bufferLength, std::int32_t& length) {
  return checked<OwnedSnapshot>(cursor, [&](OwnedSnapshot& open, Database&) -> Outcome {
    if (!isRecord(buffer, bufferLength)) return badLength;
    Key key;
    const std::uint8_t* record = nullptr;
    if (const Outcome outcome = open->next(key, record); !outcome.ok()) return outcome;
    std::memcpy(buffer, record, recordSize);
    length = static_cast<std::int32_t>(recordSize);
    return succeeded;
  });
}

std::int32_t GetCursorKey(kdbHandle cursor, std::uint8_t* key, std::int32_t keyLength) {
  return checked<OwnedSnapshot>(cursor, [&](OwnedSnapshot& open, Database&) -> Outcome {
    if (!isKey(key, keyLength)) return badLength;
    if (!open->lastKey()) return recordNotFound;
    open->lastKey()->toRecord(key);
    return succeeded;
  });
}

std::int32_t CloseDatabase(kdbHandle database, kdbStatus& status) {
  Outcome outcome{Code::badObject, Reason::noError};
  if (const OwnedDatabase* open = objectOf<OwnedDatabase>(database); open != nullptr) {
    outcome = (*open)->publish();
    SlotTable::instance().releaseAll(open->get());
  }
  status = statusOf(outcome);
  return status.returnCode;
}

std::int32_t AbandonDatabase(kdbHandle database) {
  const OwnedDatabase* open = objectOf<OwnedDatabase>(database);
  if (open == nullptr) return numberOf(Code::badObject);
  SlotTable::instance().releaseAll(open->get());
  return numberOf(Code::success);
}

std::uint64_t recordsWhenOpened(kdbHandle database) {
  const OwnedDatabase* open = objectOf<OwnedDatabase>(database);
  return open == nullptr ? 0 : (*open)->entries();
}

std::int32_t GetLastStatus(kdbHandle database, kdbStatus& status) {
  const OwnedDatabase* open = objectOf<OwnedDatabase>(database);
  status = statusOf(open == nullptr ? Outcome{Code::badObject, Reason::noError}
                                    : (*open)->lastFailure());
  return numberOf(Code::success);
}

std::int32_t Checkpoint(kdbHandle database) {
  return checked<OwnedDatabase>(database, [](OwnedDatabase&, Database&) { return succeeded; });
}

bool advanceKey(std::uint8_t* key) {
  const std::uint32_t recn = loadLE32(key + 16) + 1;
  storeLE32(key + 16, recn);
  if (recn != 0) return true;
  for (int i = 15; i >= 0; --i) {
    if (++key[i] != 0) return true;
  }
  return false;
}

const char* engineVersion() {
  return mdb_version(nullptr, nullptr, nullptr);
}

}  // namespace orx::kdb
