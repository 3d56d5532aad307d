#include "driver/obstacle_hint.h"

#include <array>
#include <cstddef>

namespace orx {

namespace {

// In the order of ObstacleKind; {FILE} and {file} are the file that keeps a database from being
// changed.
struct ObstacleWords {
  HintTemplate what = "";
  HintTemplate next = "";
};
constexpr std::array obstacleWords{
    ObstacleWords{},
    ObstacleWords{"{FILE} is no file of this program, which needs the name; move it away",
                  "ls -ld {file}"},
    ObstacleWords{"{FILE} may be the database that a killed run replaced, or what it was making; "
                  "see which, then rename or remove it",
                  "orxkdb stat {file}"},
    ObstacleWords{"{FILE} cannot be read, renamed or replaced, which a change of the database "
                  "needs: immutable, a mount point, or another user's",
                  "ls -l {file}; lsattr {file}"},
    ObstacleWords{"{FILE} is the database before its last change, and could not become {PREVIOUS}",
                  "mv {file} {previous}"},
};
static_assert(obstacleWords.size() == static_cast<std::size_t>(kdb::ObstacleKind::replaced) + 1);

}  // namespace

bool addObstacle(const kdb::Obstacle& obstacle, HintList& hints) {
  if (obstacle.kind == kdb::ObstacleKind::none) return false;
  const ObstacleWords& words = obstacleWords[static_cast<std::size_t>(obstacle.kind)];
  hints.add(words.what, words.next,
            {{"{FILE}", absolutePath(obstacle.path)}, {"{file}", shellWord(obstacle.path)}});
  return true;
}

}  // namespace orx
