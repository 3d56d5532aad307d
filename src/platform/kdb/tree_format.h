// How the engine lays a tree out in its file, as far as reading it needs. All numbers
// little-endian.
//
//   page     0  page number (8)     8  padding (2)   10  flags (2)
//           12  lower (2)          14  upper (2)     16  node offsets, 2 bytes each, up to `lower`
//   node     0  low half (2)        2  high half (2)  4  flags (2)   6  key size (2)   8  key, data
//           In a leaf the halves are the data size; in a branch the halves and the flags are the
//           page number of the child.
//   meta    16  magic (4)          20  version (4)   24  address (8)  32  map size (8)
//           40  free-page table    88  main table   136  last page (8)  144  transaction (8)
//   table    0  page size, in the free-page table (4)  4  flags (2)   6  depth (2)
//            8  branch, leaf and overflow pages (3 × 8)  32  entries (8)  40  root page (8)
// Pages 0 and 1 are metas; the one with the higher transaction number counts.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orx::kdb::tree_format {

inline constexpr std::size_t pageNumber = 0;
inline constexpr std::size_t pageFlags = 10;
inline constexpr std::size_t pageLower = 12;
inline constexpr std::size_t pageUpper = 14;
inline constexpr std::size_t pageHeaderSize = 16;

inline constexpr std::uint16_t branchPage = 0x01;
inline constexpr std::uint16_t leafPage = 0x02;
inline constexpr std::uint16_t metaPage = 0x08;
inline constexpr std::uint16_t kindMask = 0x6F;

inline constexpr std::size_t nodeLow = 0;
inline constexpr std::size_t nodeHigh = 2;
inline constexpr std::size_t nodeFlags = 4;
inline constexpr std::size_t nodeKeySize = 6;
inline constexpr std::size_t nodeHeaderSize = 8;

inline constexpr std::size_t metaMagic = 16;
inline constexpr std::size_t metaVersion = 20;
inline constexpr std::size_t metaFreeTable = 40;
inline constexpr std::size_t metaMainTable = 88;
inline constexpr std::size_t metaLastPage = 136;
inline constexpr std::size_t metaTransaction = 144;
inline constexpr std::size_t metaEnd = 152;
inline constexpr std::uint32_t magic = 0xBEEFC0DE;
inline constexpr std::uint32_t version = 1;

inline constexpr std::size_t tablePageSize = 0;
inline constexpr std::size_t tableFlags = 4;
inline constexpr std::size_t tableDepth = 6;
inline constexpr std::size_t tableEntries = 32;
inline constexpr std::size_t tableRoot = 40;
inline constexpr std::uint64_t noPage = ~std::uint64_t{0};

inline constexpr std::uint64_t firstDataPage = 2;
inline constexpr std::size_t maximumDepth = 32;

}  // namespace orx::kdb::tree_format
