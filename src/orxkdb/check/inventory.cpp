#include "orxkdb/check/inventory.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "orxkdb/words/attribute_label.h"
#include "orxkdb/words/counted.h"
#include "orxkdb/words/quote.h"
#include "restore/merge_types.h"

namespace orx::orxkdb {

namespace {

// Values of the tables of targets.
constexpr std::uint32_t absent = 0;
constexpr std::uint32_t present = 1;

// An inherited handle names what need not have a record of its own.
bool isInherited(HandleNumber handle) {
  return handleOf(handle).isModelInherited();
}

// Of handles that were given out by a counter: not inherited, not temporary.
bool hasCountedIdentifier(HandleNumber handle) {
  if (isPlain(handle)) return true;
  const CMConfigHandle value = handleOf(handle);
  return !value.isModelInherited() && !value.isTemporary() && !value.isNull();
}

// From here on, a merge of a large database may pass the highest identifier.
bool isNearLimit(std::uint32_t identifier) {
  constexpr std::uint32_t margin = 1'000'000;
  return identifier > 0 - margin;
}

bool isMerged(std::uint8_t type) {
  return type < mergedTypes.size() && mergedTypes[type] != 0;
}

std::string counterText(const Counter& counter) {
  if (!counter.isNumber) return "is no number";
  const std::string next = std::to_string(counter.next);
  return counter.misread ? "is " + quote(*counter.misread) + ", which a merge reads as " + next
                         : "is " + next;
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
    targets_.insert(object.parent, static_cast<std::uint32_t>(siblings_.size()) << 1);
  }
  ++siblings_.back().count;
  objects_.push_back(object.object);
  if (line != 0) lines_.push_back(line);
  noteIdentifier(object.object);
  return number;
}

void Inventory::noteIdentifier(HandleNumber handle) {
  if (!hasCountedIdentifier(handle)) return;
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
  checkCycles(findings);
  checkReferences(findings);
  checkModels(findings);
  checkSystemRecord(findings);
  checkLimits(findings);
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
  for (std::uint32_t group = 0; group < siblings_.size(); ++group) {
    const std::uint32_t end = siblings_[group].first + siblings_[group].count;
    for (std::uint32_t object = siblings_[group].first; object < end; ++object) {
      markPresent(object, group);
    }
  }
}

void Inventory::markPresent(std::uint32_t object, std::uint32_t group) {
  const HandleNumber handle = objects_[object];
  if (std::uint32_t* const target = normalTargets_.valueOf(normalForm(handle))) *target = present;
  std::uint32_t* const target = targets_.valueOf(handle);
  if (target == nullptr) return;
  *target |= present;
  const std::uint32_t below = (*target >> 1) - 1;
  if (handle == nullHandle || below >= siblings_.size()) return;
  Siblings& children = siblings_[below];
  if (children.above != HandleTable::none && below != group) return;
  children.parentObject = object;
  children.above = group;
}

bool Inventory::isPresent(HandleNumber target) {
  return (*targets_.valueOf(target) & present) != 0;
}

void Inventory::checkParents(Findings& findings) {
  for (const Siblings& siblings : siblings_) {
    if (isPresent(siblings.parent)) continue;
    if (siblings.parent == nullHandle || isInherited(siblings.parent)) continue;
    findings.add(FindingKind::missingObject, placeOf(siblings.first), [&] {
      std::string text = "its parent is not there";
      const std::uint32_t more = siblings.count - 1;
      if (more > 0) text += "; it is that of " + counted(more, "more object", "more objects");
      return text;
    });
  }
}

// Each walk up ends at the top or at a parent that one has passed before, itself when it is a
// cycle.
void Inventory::checkCycles(Findings& findings) const {
  std::vector<std::uint32_t> walks(siblings_.size(), HandleTable::none);
  for (std::uint32_t start = 0; start < siblings_.size(); ++start) {
    std::uint32_t at = start;
    while (at != HandleTable::none && walks[at] == HandleTable::none) {
      walks[at] = start;
      at = siblings_[at].above;
    }
    if (at != HandleTable::none && walks[at] == start) addCycle(at, findings);
  }
}

void Inventory::addCycle(std::uint32_t group, Findings& findings) const {
  findings.add(FindingKind::parentCycle, placeOf(siblings_[group].parentObject), [&] {
    if (siblings_[group].above == group) return std::string("it is its own parent");
    constexpr int mostNamed = 8;
    std::string text = "its parents lead back to it: ";
    std::uint32_t at = group;
    for (int named = 0; named < mostNamed; ++named) {
      at = siblings_[at].above;
      text += exportedForm(siblings_[at].parent);
      if (at == group) return text;
      text += ", ";
    }
    return text + "...";
  });
}

// A modelHandle is compared byte by byte; a value may be in the form that text brings back.
bool Inventory::isThere(std::size_t number) {
  if (referenceModels_[number] != HandleTable::none) return true;
  const Reference& reference = references_[number];
  const bool isModel = reference.from < ReferenceFrom::attributes;
  return isModel ? isPresent(reference.target)
                 : *normalTargets_.valueOf(normalForm(reference.target)) == present;
}

void Inventory::checkReferences(Findings& findings) {
  for (std::size_t number = 0; number < references_.size(); ++number) {
    const Reference& reference = references_[number];
    if (isThere(number)) {
      checkIsModel(number, findings);
      continue;
    }
    if (isInherited(reference.target)) continue;
    findings.add(FindingKind::missingObject, placeOf(reference.source), [&] {
      const std::string target = exportedForm(reference.target);
      if (reference.from < ReferenceFrom::attributes) {
        return "its model " + target + " is not there";
      }
      return attributeLabel(static_cast<int>(reference.from)) + " names " + target +
             ", which is not there";
    });
  }
}

// `number` is that of a reference to what is there.
void Inventory::checkIsModel(std::size_t number, Findings& findings) const {
  const Reference& reference = references_[number];
  if (referenceModels_[number] != HandleTable::none) return;
  if (reference.from != ReferenceFrom::countedModel) return;
  findings.add(FindingKind::notAModel, placeOf(reference.source),
               [&] { return "its model " + exportedForm(reference.target) + " is none"; });
}

void Inventory::checkModels(Findings& findings) {
  collectReferrers();
  for (std::size_t m = 0; m < models_.size(); ++m) {
    const std::span<HandleNumber> referrers(referrers_.data() + firstReferrer_[m],
                                            firstReferrer_[m + 1] - firstReferrer_[m]);
    if (models_[m].hasUseCount) {
      checkUseCount(models_[m], referrers.size(), findings);
      checkSignatures(models_[m], referrers, findings);
    } else if (!referrers.empty()) {
      findings.add(FindingKind::noUseCount, placeOf(models_[m].source), [&] {
        return counted(referrers.size(), "object refers", "objects refer") + " to it";
      });
    }
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
  findings.add(FindingKind::useCount, placeOf(model.source), [&] {
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
  findings.add(FindingKind::signatures, placeOf(model.source), [&] {
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
    findings.add(FindingKind::noSystemRecord, {},
                 [] { return "no record with a null object handle and auxValue2 0"; });
  } else if (!counters_) {
    findings.add(FindingKind::noCounters, placeOf(*systemRecord_),
                 [] { return "attribute 9 is missing"; });
  } else {
    for (std::size_t i = 0; i < handlerTypes.size(); ++i) checkCounter(i, findings);
  }
}

void Inventory::checkCounter(std::size_t index, Findings& findings) const {
  const std::uint8_t type = handlerTypes[index];
  const auto& highest = highestIdentifier_[type];
  const bool isThere = index < counters_->size();
  const Counter counter = isThere ? (*counters_)[index] : Counter{true, 0};
  const bool isNumber = counter.isNumber && !counter.misread;
  if (isNumber && (!highest || counter.next > *highest)) return;
  findings.add(FindingKind::counter, placeOf(*systemRecord_), [&] {
    std::string text =
        "value " + std::to_string(index) + ", of type " + std::to_string(type) + ", ";
    text += isThere ? counterText(counter) : "is missing";
    if (highest) text += "; the highest identifier in use is " + std::to_string(*highest);
    return text;
  });
}

void Inventory::checkLimits(Findings& findings) const {
  for (std::size_t i = 0; counters_ && i < counters_->size(); ++i) {
    const Counter& counter = (*counters_)[i];
    const std::uint8_t type = handlerTypes[i];
    if (!counter.isNumber || !isNearLimit(counter.next) || !isMerged(type)) continue;
    findings.add(FindingKind::nearLimit, placeOf(*systemRecord_), [&] {
      return "value " + std::to_string(i) + ", of type " + std::to_string(type) + ", is " +
             std::to_string(counter.next);
    });
  }
  const auto isNear = [](const auto& identifier) { return identifier && isNearLimit(*identifier); };
  if (std::ranges::any_of(highestIdentifier_, isNear)) checkIdentifierLimits(findings);
}

void Inventory::checkIdentifierLimits(Findings& findings) const {
  for (std::uint32_t object = 0; object < objects_.size(); ++object) {
    const HandleNumber handle = objects_[object];
    const std::uint32_t identifier = identifierOf(handle);
    if (!isNearLimit(identifier) || !isMerged(typeOf(handle))) continue;
    if (!hasCountedIdentifier(handle)) continue;
    findings.add(FindingKind::nearLimit, placeOf(object),
                 [&] { return "its identifier is " + std::to_string(identifier); });
  }
}

}  // namespace orx::orxkdb
