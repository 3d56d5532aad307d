// What beside a database keeps it from being changed.
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

// The first file beside the database `name`, or itself, that the programs cannot deal with.
[[nodiscard]] Obstacle obstacleOf(const std::string& name);

}  // namespace orx::kdb
