// The keyed database ("key1 database"): records of 296 bytes under 20-byte keys, in one file.
//
// Order of calls: kdbOpen; then any of the record operations; then CloseDatabase, which alone
// makes changes durable and visible, or AbandonDatabase, which drops them.
//
// - The file that carries the database's name is never written. The first change starts the
//   successor NAME.orx-new beside it (mode 0600); changes may wait in memory, up to 100 MB of them,
//   so that a full disk or damage can show later than the change. CloseDatabase syncs the
//   successor, gives it the mode and owner of the database, puts it in the place of the database in
//   one atomic step and syncs the directory. The database that was replaced stays as
//   NAME.orx-previous (one generation).
// - A run that changes nothing publishes nothing; to store a record as it is stored already is no
//   change. After a storage failure (7, 8, 9, 11) nothing is published either, and every later
//   change, look-up by key and opening of a scan or cursor answers with that failure. After an
//   ordinary failure (a duplicate key, say) the changes before it are published at close.
// - A process that dies leaves the database as it was or, when CloseDatabase had come to the step
//   that changes it, as the run made it. The next open for update discards a stale successor, or
//   makes up for what the publishing lacks.
// - An open for update holds an flock on the database until it is closed; a second one, from any
//   process, answers 3 BusyObject, 19 InUse at once. An open for reading takes no lock: it reads
//   one whole state, whatever is published meanwhile.
// - Database order is plain byte order of the key, whose last four bytes hold `recn` big-endian.
// - Scans and cursors see the database as it was when they were opened. After a change, other than
//   deletions through a scan, opening one costs a copy of the database: a file without a name in
//   its directory, 8/42 where the file system has none.
//
// Codes are those of kdb_codes.h; below, 5/14 is return code 5 with reason 14. A handle is checked
// in one place before every call; a stale one, or one of another kind, gives 2 BadObject, reason 0.
// Everything that a database handle led to (scans, held records, cursors) goes stale when the
// database is closed. A key has 20 bytes, a record 296: other lengths and null pointers give 1/22.
// A change of a database that is open for reading gives 11/3.
//
// After a failure the handles that a call hands out are null, and buffers and lengths are as they
// were, but for ReadNextByKey. `options` has no effect. Every call may throw std::bad_alloc; all
// that is left to do then is AbandonDatabase.
//
// An open database, with all that it led to, is for one thread at a time. The calls that open or
// close anything are for one thread of the process at a time: they share a table.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/kdb_codes.h"

namespace orx::kdb {

inline constexpr std::size_t keySize = 20;
inline constexpr std::size_t recordSize = 296;

struct Slot;

// Refers to an open database, scan, held record or cursor; copied freely, owns nothing.
struct kdbHandle {
  std::int16_t tag = 0;
  std::array<std::uint8_t, 6> unused{};
  Slot* slot = nullptr;
};
static_assert(sizeof(kdbHandle) == 16);

// The third argument of kdbOpen. A database opened as new must not exist yet (4/46 when anything
// has its name, a link too); it comes into being, empty or not, when it is closed, with mode 0640
// less the umask.
inline constexpr std::int32_t openForReading = 0;
inline constexpr std::int32_t openForUpdate = 1;
inline constexpr std::int32_t openAsNew = 2;

// Opens the database `name` (`nameLength` bytes, relative to the current directory; symbolic links
// are followed and kept). Never creates but with openAsNew. `status` receives the reason and the
// return code, which is the result as well.
//   5/28 missing, or no directory for a new one; 8/17 not a database, damaged, a directory; 11/3 no
//   permission; 1/22 a name too long for the file system; 1/1 an empty name or an unknown mode.
// Except for reading also:
//   11/3 no permission on the directory, or a file of another user or of a group that the process
//   is not in (root may); 3/19 open for update in another process, or a mount point; 1/22 too long
//   with ".orx-previous" behind it; 1/1 a name that ends in ".orx-new", ".orx-old" or
//   ".orx-previous", which belongs to another database; 4/46 when something stands in the place of
//   one of these (kdb_obstacle.h).
[[nodiscard]] std::int32_t kdbOpen(const char* name, std::int32_t nameLength, std::int32_t mode,
                                   kdbHandle& database, kdbStatus& status);

// Starts an update scan at the first record whose key equals or follows `key`; 20 zero bytes stand
// before every record.
[[nodiscard]] std::int32_t StartUpdate(kdbHandle database, const std::uint8_t* key,
                                       std::int32_t keyLength, kdbHandle& scan);
// Reads and holds the next record of the scan; the record held before is let go, also when there is
// no next one: 5/14.
[[nodiscard]] std::int32_t ReadNextForUpdate(kdbHandle scan, std::int32_t options,
                                             std::uint8_t* buffer, std::int32_t bufferLength,
                                             std::int32_t& length, kdbHandle& held);
// Deletes it; `held` is stale afterwards. 5/28 when it was deleted in another way meanwhile.
[[nodiscard]] std::int32_t DeleteHeldRecord(kdbHandle held);

// `key` is the first 20 bytes of a record as it stands in memory (`recn` little-endian), as a rule
// those of `buffer`; nobody compares them. AddRecord: 4/46 when the key exists. UpdateByKey and
// DeleteByKey: 5/28 when it does not. Records added in ascending order of their keys cost least.
[[nodiscard]] std::int32_t AddRecord(kdbHandle database, const std::uint8_t* key,
                                     std::int32_t keyLength, const std::uint8_t* buffer,
                                     std::int32_t bufferLength);
[[nodiscard]] std::int32_t UpdateByKey(kdbHandle database, const std::uint8_t* key,
                                       std::int32_t keyLength, const std::uint8_t* buffer,
                                       std::int32_t bufferLength);
[[nodiscard]] std::int32_t DeleteByKey(kdbHandle database, const std::uint8_t* key,
                                       std::int32_t keyLength);

// Reads the first record whose key equals or follows `key`; `key` may be `buffer` itself. Sees the
// changes of this run. 5/14 when there is none; 8/17, with the record in `buffer`, when that begins
// with a key before `key`, under which it is not stored: going on from it would have no end.
[[nodiscard]] std::int32_t ReadNextByKey(kdbHandle database, const std::uint8_t* key,
                                         std::int32_t keyLength, std::uint8_t* buffer,
                                         std::int32_t bufferLength, std::int32_t& length);

// A cursor before the first record; `key` and `keyLength` have no effect (null and 0).
[[nodiscard]] std::int32_t OpenCursor(kdbHandle database, const std::uint8_t* key,
                                      std::int32_t keyLength, kdbHandle& cursor);
// 5/14 behind the last record.
[[nodiscard]] std::int32_t ReadNextFromCursor(kdbHandle cursor, std::int32_t options,
                                              std::uint8_t* buffer, std::int32_t bufferLength,
                                              std::int32_t& length);

// The key under which the record that the cursor gave last is stored, as it stands in a record
// (`recn` little-endian). It differs from the record's own first 20 bytes only where AddRecord or
// another program stored the record under another key. 5/28 before the first record.
[[nodiscard]] std::int32_t GetCursorKey(kdbHandle cursor, std::uint8_t* key,
                                        std::int32_t keyLength);

// Publishes the changes of the run, if any, and closes the database whatever comes of it. 0 means
// that the changes are durable; any other code that the database is as it was before the run. The
// one exception: the directory could not be synced, and the names not be changed back; then
// hasPublished() (interruption.h) is true. Beside the storage failures:
//   3/19 somebody moved, removed or replaced the database meanwhile; 4/46 the name of a new one was
//   taken meanwhile; 8/42 the file system can neither exchange nor link names.
[[nodiscard]] std::int32_t CloseDatabase(kdbHandle database, kdbStatus& status);

// Closes the database without publishing anything.
[[nodiscard]] std::int32_t AbandonDatabase(kdbHandle database);

// The return code and reason of the last failed operation on the database or on what it led to;
// no success clears it. A stale handle fills 2 BadObject, reason 0. The result is 0.
std::int32_t GetLastStatus(kdbHandle database, kdbStatus& status);

// The number of records when it was opened; 0 for a stale handle and a new database.
[[nodiscard]] std::uint64_t recordsWhenOpened(kdbHandle database);

// Marks a point of a long run; publishes nothing.
std::int32_t Checkpoint(kdbHandle database);

// Turns the key of a record (20 bytes, `recn` little-endian) into the one that follows it in
// database order; a carry out of `recn` goes into the handle bytes. False past the last key.
[[nodiscard]] bool advanceKey(std::uint8_t* key);

// Exchanges the closed database `name` with its previous generation, NAME.orx-previous, in one
// step; doing it again takes it back. The generation is read through before, and gets owner, mode
// and access list of the database. Fails like kdbOpen for update; 5/28 also when there is no
// previous generation, 8/17 when that is no database, damaged or only a link, 3/19 when somebody
// has it open for update. A failure leaves both as they were, with the exception of CloseDatabase.
// A process that dies leaves one or the other under the name.
[[nodiscard]] std::int32_t exchangeWithPrevious(const char* name, kdbStatus& status);

// "LMDB 0.9.24: (July 24, 2019)"
[[nodiscard]] const char* engineVersion();

}  // namespace orx::kdb
