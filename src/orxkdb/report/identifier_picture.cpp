#include "orxkdb/report/identifier_picture.h"

#include <algorithm>

#include "orxkdb/report/html_text.h"
#include "orxkdb/report/svg.h"

namespace orx::orxkdb {

namespace {

constexpr double width = 900;
constexpr double rowHeight = 46;
constexpr double laneHeight = 12;
constexpr double margin = 8;
constexpr double tracksX = 90;
constexpr double trackWidth = 680;
constexpr double thinnestBox = 1;
constexpr double baseline = 10;

const CounterChange* counterOf(const MergePlan& plan, std::uint8_t type) {
  const auto* const found = std::ranges::find(handlerTypes, type);
  if (found == handlerTypes.end()) return nullptr;
  return &plan.counters[static_cast<std::size_t>(found - handlerTypes.begin())];
}

// The identifiers that the database gave out before: those below its counter.
std::uint32_t usedBefore(const MergePlan& plan, std::uint8_t type) {
  const CounterChange* const counter = counterOf(plan, type);
  return counter == nullptr ? 0 : counter->before.value_or(0);
}

std::uint32_t highestOf(const MergePlan& plan, const TypeIdentifiers& type) {
  std::uint32_t highest = std::max(usedBefore(plan, type.type), std::uint32_t{1});
  for (const IdentifierRange& range : type.ranges) {
    highest = std::max({highest, range.last, range.last + type.shift});
  }
  return highest;
}

// Ranges on one lane; those that would fall together are drawn as one box.
class Lane {
 public:
  Lane(double y, std::uint32_t highest, std::string_view style, Svg& picture)
      : y_(y), highest_(highest), style_(style), picture_(picture) {}

  void add(std::uint32_t first, std::uint32_t last) {
    const double start = place(first);
    const double end = std::max(place(std::uint64_t{last} + 1), start + thinnestBox);
    if (start >= start_ && start <= end_ + thinnestBox) {
      end_ = std::max(end_, end);
      return;
    }
    draw();
    start_ = start;
    end_ = end;
  }

  void draw() {
    if (end_ > start_) picture_.rect({start_, y_, end_ - start_, laneHeight}, style_);
    start_ = end_ = none;
  }

 private:
  static constexpr double none = -2 * thinnestBox;  // left of every identifier

  [[nodiscard]] double place(std::uint64_t identifier) const {
    return tracksX +
           trackWidth * static_cast<double>(identifier) / (static_cast<double>(highest_) + 1);
  }

  double y_;
  std::uint32_t highest_;
  std::string_view style_;
  Svg& picture_;
  // The box that is not drawn yet.
  double start_ = none;
  double end_ = none;
};

void drawType(const MergePlan& plan, const TypeIdentifiers& type, double y, Svg& picture) {
  const std::uint32_t highest = highestOf(plan, type);
  const double lower = y + laneHeight + 2;
  picture.text(tracksX - margin, y + baseline + laneHeight / 2, "name end", typeName(type.type));
  for (const double lane : {y, lower}) {
    picture.rect({tracksX, lane, trackWidth, laneHeight}, "track");
  }
  Lane used(lower, highest, "used", picture);
  Lane from(y, highest, "from", picture);
  Lane to(lower, highest, type.isRenumbered ? "to" : "from", picture);
  if (const std::uint32_t next = usedBefore(plan, type.type); next > 0) used.add(0, next - 1);
  used.draw();
  for (const IdentifierRange& range : type.ranges) {
    from.add(range.first, range.last);
    to.add(range.first + type.shift, range.last + type.shift);
  }
  from.draw();
  to.draw();
  picture.text(tracksX + trackWidth + margin, y + baseline + laneHeight / 2, "number",
               "to " + grouped(highest));
}

}  // namespace

std::string identifierPicture(const MergePlan& plan) {
  if (plan.identifiers.empty()) return "";
  Svg picture(width, rowHeight * static_cast<double>(plan.identifiers.size()) + margin,
              "Identifiers in the backup and in the database, by handle type");
  double y = margin;
  for (const TypeIdentifiers& type : plan.identifiers) {
    drawType(plan, type, y, picture);
    y += rowHeight;
  }
  return "<figure><figcaption>Identifiers of each handle type: above, <span class=\"key from\">"
         "in the backup</span>; below, <span class=\"key to\">what they become</span> behind "
         "<span class=\"key used\">those that the database has given out</span>. Types that are "
         "not renumbered keep theirs.</figcaption>\n" +
         picture.take() + "</figure>\n";
}

}  // namespace orx::orxkdb
