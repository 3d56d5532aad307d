// The pictures of which objects refer to which models, as HTML. `models` are those of
// ModelUses::ranked().
#pragma once

#include <string>
#include <vector>

#include "orxkdb/report/model_uses.h"

namespace orx::orxkdb {

// Up to so many models are shown by name, and with few references each of these as a line.
inline constexpr std::size_t mostNamedModels = 24;

// One line from each object to its model, or bands from the record types of the objects to the
// models, or, of many models, to their record types. `models` are ranked. Empty without any.
[[nodiscard]] std::string modelPicture(const ModelUses& uses, const std::vector<UsedModel>& models);

// The uses of all models that are there, most used first, in a strip of a few hundred bars at most.
// Empty for models that modelPicture() names, and where none is used.
[[nodiscard]] std::string rankStrip(const std::vector<UsedModel>& models);

// "12:1 name".
[[nodiscard]] std::string modelName(const UsedModel& model);

}  // namespace orx::orxkdb
