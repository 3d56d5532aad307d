#include "orxkdb/check/inventory.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "orxkdb/known_attributes.h"
#include "restore/merge_types.h"

namespace orx::orxkdb {

using enum FindingKind;

namespace {

// Values of the tables of targets.
constexpr std::uint32_t absent = 0;
constexpr std::uint32_t present = 1;

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
  if (siblings_.empty() || siblings_.back().parent != object.parent) {
    siblings_.push_back({object.parent, number, 0});
    targets_.insert(object.parent, absent);
  }
  ++siblings_.back().count;
  objects_.push_back(object.object);
  if (line != 0) lines_.push_back(line);
  noteIdentifier(object.object);
  return number;
}

// Of handles that were given out by a counter: not inherited, not temporary.
void Inventory::noteIdentifier(HandleNumber handle) {
  if (!isPlain(handle)) {
    const CMConfigHandle value = handleOf(handle);
    if (value.isModelInherited() || value.isTemporary() || value.isNull()) return;
  }
  auto& highest = highestIdentifier_[typeOf(handle)];
  highest = std::max(highest.value_or(0), identifierOf(handle));
}

void Inventory::expect(std::uint64_t records) {
  objects_.reserve(records);
  references_.reserve(records);
}

void Inventory::addModel(Model model, const std::vector<HandleNumber>& signatures) {
  modelNumbers_.insert(model.handle, static_cast<std::uint32_t>(models_.size()));
  model.firstSignature = signatures_.size();
  model.signatureCount = static_cast<std::uint32_t>(signatures.size());
  signatures_.insert(signatures_.end(), signatures.begin(), signatures.end());
  models_.push_back(model);
}

Place Inventory::placeOf(std::uint32_t source) const {
  const auto after = std::ranges::upper_bound(siblings_, source, {}, &Siblings::first);
  return {lines_.empty() ? 0 : lines_[source],
          Place::Object{std::prev(after)->parent, objects_[source]},
          {}};
}

void Inventory::check(Findings& findings) {
  findModels();
  markPresent();
  checkParents(findings);
  checkReferences(findings);
  checkModels(findings);
  checkSystemRecord(findings);
}

// Most references lead to models; the targets of the others are looked for among all objects.
void Inventory::findModels() {
  referenceModels_.reserve(references_.size());
  for (const Reference& reference : references_) {
    const bool isModel = reference.from < ReferenceFrom::attributes;
    const std::uint32_t* const model = isModel ? modelNumbers_.valueOf(reference.target) : nullptr;
    referenceModels_.push_back(model == nullptr ? HandleTable::none : *model);
    if (model != nullptr) continue;
    if (isModel) {
      targets_.insert(reference.target, absent);
    } else {
      normalTargets_.insert(normalForm(reference.target), absent);
    }
  }
}

void Inventory::markPresent() {
  for (const HandleNumber object : objects_) {
    if (std::uint32_t* const target = targets_.valueOf(object)) *target = present;
    if (std::uint32_t* const target = normalTargets_.valueOf(normalForm(object))) *target = present;
  }
}

void Inventory::checkParents(Findings& findings) {
  for (const Siblings& siblings : siblings_) {
    if (*targets_.valueOf(siblings.parent) == present) continue;
    if (siblings.parent == nullHandle || isInherited(siblings.parent)) continue;
    findings.add(missingObject, placeOf(siblings.first), [&] {
      std::string text = "its parent is not there";
      const std::uint32_t more = siblings.count - 1;
      if (more > 0) text += "; it is that of " + counted(more, "more object", "more objects");
      return text;
    });
  }
}

// A modelHandle is compared byte by byte; a value may be in the form that text brings back.
bool Inventory::isThere(std::size_t number) {
  if (referenceModels_[number] != HandleTable::none) return true;
  const Reference& reference = references_[number];
  const bool isModel = reference.from < ReferenceFrom::attributes;
  return *(isModel ? targets_.valueOf(reference.target)
                   : normalTargets_.valueOf(normalForm(reference.target))) == present;
}

void Inventory::checkReferences(Findings& findings) {
  for (std::size_t number = 0; number < references_.size(); ++number) {
    const Reference& reference = references_[number];
    if (isThere(number) || isInherited(reference.target)) continue;
    findings.add(missingObject, placeOf(reference.source), [&] {
      const std::string target = exportedForm(reference.target);
      if (reference.from < ReferenceFrom::attributes) {
        return "its model " + target + " is not there";
      }
      return attributeLabel(static_cast<int>(reference.from)) + " names " + target +
             ", which is not there";
    });
  }
}

void Inventory::checkModels(Findings& findings) {
  collectReferrers();
  for (std::size_t m = 0; m < models_.size(); ++m) {
    if (!models_[m].hasUseCount) continue;
    const std::span<HandleNumber> referrers(referrers_.data() + firstReferrer_[m],
                                            firstReferrer_[m + 1] - firstReferrer_[m]);
    checkUseCount(models_[m], referrers.size(), findings);
    checkSignatures(models_[m], referrers, findings);
  }
}

// A counting sort: referrers fall into place model by model, in key order.
void Inventory::collectReferrers() {
  firstReferrer_.assign(models_.size() + 1, 0);
  const auto counts = [this](std::size_t number) {
    return referenceModels_[number] != HandleTable::none &&
           references_[number].from == ReferenceFrom::countedModel;
  };
  for (std::size_t number = 0; number < references_.size(); ++number) {
    if (counts(number)) ++firstReferrer_[referenceModels_[number] + 1];
  }
  std::partial_sum(firstReferrer_.begin(), firstReferrer_.end(), firstReferrer_.begin());
  referrers_.resize(firstReferrer_.back());
  std::vector<std::size_t> next(firstReferrer_.begin(), firstReferrer_.end() - 1);
  for (std::size_t number = 0; number < references_.size(); ++number) {
    if (!counts(number)) continue;
    const HandleNumber referrer = objects_[references_[number].source];
    referrers_[next[referenceModels_[number]]++] = normalForm(referrer);
  }
}

void Inventory::checkUseCount(const Model& model, std::size_t referrers, Findings& findings) const {
  if (model.useCount && static_cast<std::uint32_t>(*model.useCount) == referrers) return;
  findings.add(useCount, placeOf(model.source), [&] {
    const std::string is =
        model.useCount ? "it is " + std::to_string(*model.useCount) : "it is not one number";
    return is + ", " + counted(referrers, "object refers", "objects refer") + " to it";
  });
}

// In any order.
void Inventory::checkSignatures(const Model& model, std::span<HandleNumber> referrers,
                                Findings& findings) {
  const std::span<HandleNumber> listed(signatures_.data() + model.firstSignature,
                                       model.signatureCount);
  if (std::ranges::equal(listed, referrers)) return;
  std::ranges::sort(listed);
  std::ranges::sort(referrers);
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
    findings.add(noSystemRecord, {},
                 [] { return "no record with a null object handle and auxValue2 0"; });
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
