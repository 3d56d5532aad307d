#include "orxkdb/report/flow_picture.h"

#include <algorithm>

#include "orxkdb/report/html_text.h"
#include "orxkdb/report/svg.h"

namespace orx::orxkdb {

namespace {

constexpr double width = 900;
constexpr double margin = 10;
constexpr double nodeWidth = 10;
constexpr double leftX = 250;
constexpr double rightX = 560;
constexpr double lowestNode = 18;
constexpr double nodeGap = 6;
constexpr double lowestPicture = 260;
constexpr double textGap = 6;
constexpr double baseline = 4;
constexpr std::size_t longestName = 42;

// The nodes of one side; each gives its height to its flows from the top on.
class Side {
 public:
  Side(const std::vector<std::string>& names, double x) : names_(names), nodes_(names.size()) {
    for (Node& node : nodes_) node.box = {x, 0, nodeWidth, lowestNode};
  }

  void count(std::size_t node, std::uint64_t count) { nodes_[node].count += count; }

  [[nodiscard]] double lowestHeight() const {
    return static_cast<double>(nodes_.size()) * (lowestNode + nodeGap);
  }

  // Shares what is left of the height by count.
  void place(double height, std::uint64_t total) {
    const double rest = height - lowestHeight();
    double y = margin;
    for (Node& node : nodes_) {
      node.box.y = y;
      if (total > 0) node.box.height += rest * share(node.count, total);
      y += node.box.height + nodeGap;
    }
  }

  // The part of a node for one of its flows, below those that were taken before.
  [[nodiscard]] Svg::Box take(std::size_t number, std::uint64_t count) {
    Node& node = nodes_[number];
    const double height = node.box.height * share(count, node.count);
    const Svg::Box part{node.box.x, node.box.y + node.taken, nodeWidth, height};
    node.taken += height;
    return part;
  }

  void draw(bool isLeft, Svg& picture) const {
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
      const Svg::Box& box = nodes_[i].box;
      const double x = isLeft ? box.x - textGap : box.x + nodeWidth + textGap;
      picture.rect(box, isLeft ? "fill " + svgColor(i) : "node");
      picture.text(x, box.y + box.height / 2 + baseline, isLeft ? "name end" : "name",
                   shortened(names_[i], longestName) + ": " + grouped(nodes_[i].count));
    }
  }

 private:
  struct Node {
    Svg::Box box{};
    std::uint64_t count = 0;
    double taken = 0;
  };

  [[nodiscard]] static double share(std::uint64_t part, std::uint64_t whole) {
    return static_cast<double>(part) / static_cast<double>(whole);
  }

  const std::vector<std::string>& names_;
  std::vector<Node> nodes_;
};

}  // namespace

std::string flowPicture(std::string_view title, const std::vector<std::string>& left,
                        const std::vector<std::string>& right, const std::vector<Flow>& flows) {
  Side sources(left, leftX);
  Side targets(right, rightX);
  std::uint64_t total = 0;
  for (const Flow& flow : flows) {
    sources.count(flow.from, flow.count);
    targets.count(flow.to, flow.count);
    total += flow.count;
  }
  const double height = std::max({lowestPicture, sources.lowestHeight(), targets.lowestHeight()});
  sources.place(height, total);
  targets.place(height, total);
  Svg picture(width, height + 2 * margin, title);
  for (const Flow& flow : flows) {
    const Svg::Box from = sources.take(flow.from, flow.count);
    const Svg::Box to = targets.take(flow.to, flow.count);
    picture.ribbon(from, to, "ribbon " + svgColor(flow.from),
                   left[flow.from] + " to " + right[flow.to] + ": " + grouped(flow.count));
  }
  sources.draw(true, picture);
  targets.draw(false, picture);
  return picture.take();
}

}  // namespace orx::orxkdb
