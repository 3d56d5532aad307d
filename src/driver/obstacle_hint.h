// The hint about a file that keeps a database from being changed, or a change from its last step.
#pragma once

#include "driver/hint_list.h"
#include "platform/kdb_obstacle.h"

namespace orx {

// Adds a hint and returns true when there is an obstacle.
bool addObstacle(const kdb::Obstacle& obstacle, HintList& hints);

}  // namespace orx
