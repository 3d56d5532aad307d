#include "orxkdb/check/inventory.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "orxkdb/known_attributes.h"
#include "restore/merge_types.h"

namespace orx::orxkdb {

using enum FindingKind;

namespace {

// An inherited handle names what need not have a record of its own.
bool isInherited(HandleNumber handle) {
  return handleOf(handle).isModelInherited();
}

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

// The first of `handles` that is not among `others`; both are sorted.
std::optional<HandleNumber> firstOnlyIn(std::span<const HandleNumber> handles,
                                        std::span<const HandleNumber> others) {
  std::vector<HandleNumber> only;
  std::ranges::set_difference(handles, others, std::back_inserter(only));
  return only.empty() ? std::nullopt : std::optional(only.front());
}

}  // namespace

std::uint32_t Inventory::addObject(const Place::Object& object, std::uint64_t line) {
  const auto number = static_cast<std::uint32_t>(objects_.size());
  if (object.parent != nullHandle) {
    if (parents_.empty() || parents_.back().parent != object.parent) {
      parents_.push_back({object.parent, number, 0});
    }
    ++parents_.back().children;
  }
  objects_.push_back(object);
  if (line != 0) lines_.push_back(line);
  noteIdentifier(object.object);
  return number;
}

// Of handles that were given out by a counter: not inherited, not temporary.
void Inventory::noteIdentifier(HandleNumber handle) {
  const HandleNumber normal = normalForm(handle);
  if (normal != handle) normalForms_.push_back(normal);
  const CMConfigHandle value = handleOf(handle);
  if (value.isModelInherited() || value.isTemporary() || value.isNull()) return;
  auto& highest = highestIdentifier_[static_cast<std::size_t>(std::int32_t{value.getType()})];
  highest = std::max(highest.value_or(0), identifierOf(handle));
}

void Inventory::addModel(Model model, const std::vector<HandleNumber>& signatures) {
  model.firstSignature = signatures_.size();
  model.signatureCount = static_cast<std::uint32_t>(signatures.size());
  signatures_.insert(signatures_.end(), signatures.begin(), signatures.end());
  models_.push_back(model);
}

Place Inventory::placeOf(std::uint32_t source) const {
  return {lines_.empty() ? 0 : lines_[source], objects_[source], {}};
}

void Inventory::check(Findings& findings) {
  sort();
  checkParents(findings);
  checkReferences(findings);
  checkModels(findings);
  checkSystemRecord(findings);
}

void Inventory::sort() {
  handles_.reserve(objects_.size());
  for (const Place::Object& object : objects_) handles_.push_back(object.object);
  std::ranges::sort(handles_);
  std::ranges::sort(normalForms_);
  std::ranges::sort(references_, {}, [](const Reference& reference) {
    return std::tuple(reference.target, reference.source);
  });
  std::ranges::sort(models_, {},
                    [](const Model& model) { return std::tuple(model.handle, model.source); });
}

void Inventory::checkParents(Findings& findings) const {
  for (const ParentReference& reference : parents_) {
    if (std::ranges::binary_search(handles_, reference.parent)) continue;
    if (isInherited(reference.parent)) continue;
    findings.add(missingObject, placeOf(reference.firstChild), [&] {
      std::string text = "its parent is not there";
      const std::uint32_t more = reference.children - 1;
      if (more > 0) text += "; it is that of " + counted(more, "more object", "more objects");
      return text;
    });
  }
}

// A modelHandle is compared byte by byte; a value may be in the form that text brings back.
bool Inventory::isThere(const Reference& reference) const {
  if (std::ranges::binary_search(handles_, reference.target)) return true;
  if (isInherited(reference.target)) return true;
  return reference.from >= ReferenceFrom::attributes &&
         std::ranges::binary_search(normalForms_, normalForm(reference.target));
}

void Inventory::checkReferences(Findings& findings) const {
  HandleNumber present = nullHandle;  // the target before, which many objects may share
  for (const Reference& reference : references_) {
    if (reference.target == present) continue;
    if (isThere(reference)) {
      present = reference.from < ReferenceFrom::attributes ? reference.target : present;
      continue;
    }
    findings.add(missingObject, placeOf(reference.source), [&] {
      const std::string from = reference.from < ReferenceFrom::attributes
                                   ? "its model"
                                   : attributeLabel(static_cast<int>(reference.from)) + " names";
      return from + " " + exportedForm(reference.target) +
             (reference.from < ReferenceFrom::attributes ? " is not there"
                                                         : ", which is not there");
    });
  }
}

// Models and references are sorted alike. Of two models with one handle the first gets all.
void Inventory::checkModels(Findings& findings) {
  std::vector<HandleNumber> referrers;
  auto reference = references_.begin();
  for (const Model& model : models_) {
    referrers.clear();
    while (reference != references_.end() && reference->target < model.handle) ++reference;
    for (; reference != references_.end() && reference->target == model.handle; ++reference) {
      if (reference->from != ReferenceFrom::countedModel) continue;
      referrers.push_back(normalForm(objects_[reference->source].object));
    }
    if (model.hasUseCount) checkModel(model, referrers, findings);
  }
}

void Inventory::checkModel(const Model& model, std::vector<HandleNumber>& referrers,
                           Findings& findings) {
  const Place place = placeOf(model.source);
  const std::string refer = counted(referrers.size(), "object refers", "objects refer");
  if (!model.useCount) {
    findings.add(useCount, place, [&] { return "it is not one number, " + refer + " to it"; });
  } else if (static_cast<std::uint32_t>(*model.useCount) != referrers.size()) {
    findings.add(useCount, place, [&] {
      return "it is " + std::to_string(*model.useCount) + ", " + refer + " to it";
    });
  }
  std::ranges::sort(referrers);
  checkSignatures(model, referrers, findings);
}

void Inventory::checkSignatures(const Model& model, const std::vector<HandleNumber>& referrers,
                                Findings& findings) {
  const std::span<HandleNumber> listed(signatures_.data() + model.firstSignature,
                                       model.signatureCount);
  std::ranges::sort(listed);
  if (std::ranges::equal(listed, referrers)) return;
  findings.add(signatures, placeOf(model.source), [&] {
    std::string text = counted(listed.size(), "is listed", "are listed") + ", " +
                       counted(referrers.size(), "object refers", "objects refer") + " to it";
    if (const auto surplus = firstOnlyIn(listed, referrers)) {
      text += "; " + exportedForm(*surplus) + " does not";
    }
    if (const auto missing = firstOnlyIn(referrers, listed)) {
      text += "; " + exportedForm(*missing) + " is not listed";
    }
    return text;
  });
}

void Inventory::checkSystemRecord(Findings& findings) const {
  if (!systemRecord_) {
    findings.add(noSystemRecord, {}, [] { return "no record with null handles and auxValue2 0"; });
  } else if (!counters_) {
    findings.add(noCounters, placeOf(*systemRecord_), [] { return "attribute 9 is missing"; });
  } else {
    for (std::size_t i = 0; i < handlerTypes.size(); ++i) checkCounter(i, findings);
  }
}

void Inventory::checkCounter(std::size_t index, Findings& findings) const {
  const std::uint8_t type = handlerTypes[index];
  const auto& highest = highestIdentifier_[type];
  const bool isThere = index < counters_->size();
  const Counter counter = isThere ? (*counters_)[index] : Counter{true, 0};
  if (counter.isNumber && (!highest || counter.next > *highest)) return;
  findings.add(FindingKind::counter, placeOf(*systemRecord_), [&] {
    std::string text =
        "value " + std::to_string(index) + ", of type " + std::to_string(type) + ", ";
    text += !isThere           ? "is missing"
            : counter.isNumber ? "is " + std::to_string(counter.next)
                               : "is no number";
    if (highest) text += "; the highest identifier in use is " + std::to_string(*highest);
    return text;
  });
}

}  // namespace orx::orxkdb
