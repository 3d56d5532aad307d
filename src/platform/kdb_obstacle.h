// What keeps a database from being changed: a file beside it, or its own.
#pragma once

#include <cstdint>
#include <string>

namespace orx::kdb {

enum class ObstacleKind : std::uint8_t {
  none,
  other,      // a directory or somebody else's file has the name
  uncertain,  // a database: the one that a killed run replaced, or the one that it was making
  fixed,      // its name cannot be changed: immutable, a mount point, another user's, unreadable
  replaced,   // the replaced database, which could not become the previous generation
};

struct Obstacle {
  ObstacleKind kind = ObstacleKind::none;
  std::string path = {};
};

// To explain why the database `name` could not be opened for update or changed (3/19, 4/46, 11/3):
// the first file beside it, or itself, that the programs cannot deal with; kind `none` and no path
// when there is none. Only looks, as far as it can.
[[nodiscard]] Obstacle obstacleOf(const std::string& name);

// The database that `name` replaced, kind `replaced`, while it has not become the previous
// generation; else kind `none` and no path. Only looks.
[[nodiscard]] Obstacle replacedBy(const std::string& name);

}  // namespace orx::kdb
