// The text of a dump, which the tools of the common database engines read and write too.
//
//   VERSION=3                 the header: NAME=VALUE lines, VERSION first
//   format=bytevalue
//   type=btree
//   HEADER=END
//    0a0b...                  for each record a blank and the key, 20 bytes in hexadecimal,
//    0a0b...                  then a blank and the record, 296 bytes
//   DATA=END
//
// Records stand in database order. The key is the one the database orders by: the first 20 bytes of
// the record with `recn` big-endian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "records/data_buffer.h"

namespace orx::orxkdb::dump_format {

inline constexpr std::string_view version = "VERSION=3";
inline constexpr std::string_view header = "VERSION=3\nformat=bytevalue\ntype=btree\nHEADER=END\n";
inline constexpr std::string_view headerEnd = "HEADER=END";
inline constexpr std::string_view dataEnd = "DATA=END";
inline constexpr char linePrefix = ' ';

inline constexpr std::size_t keyLineWidth = 1 + 2 * data_layout::keySize;
inline constexpr std::size_t recordLineWidth = 1 + 2 * data_layout::recordSize;
static_assert(keyLineWidth == 41 && recordLineWidth == 593);

using StoredKey = std::array<std::uint8_t, data_layout::keySize>;

// As a dump has it.
[[nodiscard]] StoredKey storedKey(const DataBuffer& record);

// Both lines of a record, line ends included; no NUL.
using Entry = std::array<char, keyLineWidth + 1 + recordLineWidth + 1>;
void writeEntry(const DataBuffer& record, Entry& entry);

// Reads `digits`, two characters for each of `bytes`, in upper or lower case. The position of the
// first character that is no hexadecimal digit, up to which `bytes` is filled; else npos.
[[nodiscard]] std::size_t readHex(std::string_view digits, std::span<std::uint8_t> bytes);

}  // namespace orx::orxkdb::dump_format
