#include "orxkdb/report/model_picture.h"

#include <algorithm>
#include <map>
#include <utility>

#include "orxkdb/report/flow_picture.h"
#include "orxkdb/report/html_text.h"
#include "orxkdb/report/svg.h"

namespace orx::orxkdb {

namespace {

constexpr double pictureWidth = 900;
constexpr double rowHeight = 20;
constexpr double margin = 10;
constexpr double dot = 8;
constexpr double leftEnd = 330;  // of the texts on the left
constexpr double rightStart = pictureWidth - leftEnd;
constexpr double textGap = 6;
constexpr double baseline = 4;  // below the middle of a row
constexpr std::size_t longestName = 44;

std::string nameWith(HandleNumber handle, const std::string& label) {
  return label.empty() ? shortName(handle) : shortName(handle) + " " + label;
}

// The middle of a row when `rows` are spread over `height`.
double middleOf(std::size_t row, std::size_t rows, double height) {
  return margin + (static_cast<double>(row) + 0.5) * height / static_cast<double>(rows);
}

void drawEnd(double x, double y, std::string_view style, Svg& picture) {
  picture.rect({x, y - dot / 2, dot, dot}, style);
}

// A line for each reference, in the colour of its model.
std::string linePicture(const std::vector<Referrer>& referrers,
                        const std::vector<UsedModel>& models) {
  const double height = rowHeight * static_cast<double>(std::max(referrers.size(), models.size()));
  Svg picture(pictureWidth, height + 2 * margin, "Lines from objects to the models they refer to");
  std::map<HandleNumber, std::size_t> numbers;
  for (std::size_t i = 0; i < models.size(); ++i) {
    const double y = middleOf(i, models.size(), height);
    numbers.emplace(models[i].handle, i);
    drawEnd(rightStart, y, "fill " + svgColor(i), picture);
    picture.text(rightStart + dot + textGap, y + baseline, models[i].isThere ? "name" : "name gone",
                 shortened(modelName(models[i]), longestName));
  }
  for (std::size_t i = 0; i < referrers.size(); ++i) {
    const double y = middleOf(i, referrers.size(), height);
    const std::size_t model = numbers.at(referrers[i].model);
    const std::string name = nameWith(referrers[i].handle, referrers[i].label);
    picture.text(leftEnd - dot - textGap, y + baseline, "name end", shortened(name, longestName));
    drawEnd(leftEnd - dot, y, "fill " + svgColor(model), picture);
    picture.curve(leftEnd, y, rightStart, middleOf(model, models.size(), height),
                  "line " + svgColor(model), name + " to " + modelName(models[model]));
  }
  return figure("Objects (left) and the models they refer to (right)", picture.take());
}

// The nodes on the right of a flow, and which of them each model belongs to.
struct ModelNodes {
  std::vector<std::string> names;
  std::vector<std::size_t> ofModel;
};

ModelNodes nodesByModel(const std::vector<UsedModel>& models) {
  ModelNodes nodes;
  for (const UsedModel& model : models) {
    nodes.ofModel.push_back(nodes.names.size());
    nodes.names.push_back(modelName(model));
  }
  return nodes;
}

// Type 0 stands for what is no model: a model has another.
ModelNodes nodesByType(const std::vector<UsedModel>& models) {
  std::map<std::int32_t, std::uint64_t> counts;
  for (const UsedModel& model : models) ++counts[model.recType];
  ModelNodes nodes;
  std::map<std::int32_t, std::size_t> numbers;
  for (const auto& [type, count] : counts) {
    numbers.emplace(type, nodes.names.size());
    nodes.names.push_back(type == 0 ? groupedCount(count, "handle") + " without a model"
                                    : groupedCount(count, "model") + " of " + typeName(type));
  }
  for (const UsedModel& model : models) nodes.ofModel.push_back(numbers.at(model.recType));
  return nodes;
}

std::vector<Flow> flowsTo(const ModelNodes& nodes, const std::vector<UsedModel>& models,
                          std::vector<std::string>& sources) {
  std::map<std::pair<std::int32_t, std::size_t>, std::uint64_t> counts;
  for (std::size_t i = 0; i < models.size(); ++i) {
    for (const auto& [type, count] : models[i].usesByType) {
      counts[{type, nodes.ofModel[i]}] += count;
    }
  }
  std::vector<Flow> flows;
  std::map<std::int32_t, std::size_t> numbers;
  for (const auto& [ends, count] : counts) {
    const auto [source, isNew] = numbers.emplace(ends.first, sources.size());
    if (isNew) sources.push_back("objects of " + typeName(ends.first));
    flows.push_back({source->second, ends.second, count});
  }
  return flows;
}

}  // namespace

std::string modelName(const UsedModel& model) {
  return model.isThere ? nameWith(model.handle, model.label)
                       : shortName(model.handle) + " (no model)";
}

std::string modelPicture(const ModelUses& uses, const std::vector<UsedModel>& models) {
  if (models.empty()) return "";
  const bool areNamed = models.size() <= mostNamedModels;
  if (areNamed && uses.references() <= ModelUses::mostReferrers) {
    return linePicture(uses.referrers(), models);
  }
  const ModelNodes nodes = areNamed ? nodesByModel(models) : nodesByType(models);
  std::vector<std::string> sources;
  const std::vector<Flow> flows = flowsTo(nodes, models, sources);
  return figure(areNamed ? "References from objects, by record type (left), to the models (right)"
                         : "References from objects (left) to models (right), by record type",
                flowPicture("Bands from objects to models", sources, nodes.names, flows));
}

std::string rankStrip(const std::vector<UsedModel>& models) {
  constexpr std::size_t mostBars = 240;
  constexpr double height = 160;
  const auto end = std::ranges::find(models, false, &UsedModel::isThere);
  const auto count = static_cast<std::size_t>(end - models.begin());
  if (count <= mostNamedModels || models.front().uses == 0) return "";
  const std::size_t perBar = (count + mostBars - 1) / mostBars;
  const std::size_t bars = (count + perBar - 1) / perBar;
  const double width = pictureWidth / static_cast<double>(bars);
  Svg picture(pictureWidth, height, "Uses of the models, most used first");
  for (std::size_t bar = 0; bar < bars; ++bar) {
    const UsedModel& model = models[bar * perBar];
    const double share = static_cast<double>(model.uses) / static_cast<double>(models.front().uses);
    picture.rect({static_cast<double>(bar) * width, height - share * height, width, share * height},
                 "bar",
                 "rank " + grouped(bar * perBar + 1) + ": " + modelName(model) + ", " +
                     groupedCount(model.uses, "use"));
  }
  std::string caption = "Uses of all " + groupedCount(count, "model") + ", most used first, from " +
                        grouped(models.front().uses) + " down to " + grouped(std::prev(end)->uses);
  if (perBar > 1) caption += "; a bar is the most used of " + grouped(perBar) + " models";
  return figure(caption, picture.take());
}

}  // namespace orx::orxkdb
