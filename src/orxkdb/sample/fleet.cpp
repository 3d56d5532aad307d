#include "orxkdb/sample/fleet.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

#include "restore/known_attributes.h"
#include "restore/merge_types.h"

namespace orx::orxkdb {

namespace {

// Kinds by number; the models come first, so that model m is object 1 + m.
enum KindNumber : std::size_t {
  systemRecord,
  systemModels,
  groupModels,
  resourceModels,
  systems,
  groups,
  resources,
  prototypes,
  schedules,
  operators,
  logs,
};

constexpr std::size_t noKind = ~std::size_t{0};

// Other attributes of the sample's objects.
constexpr int nameAttribute = 2;
constexpr int descriptionAttribute = 3;
constexpr int stateAttribute = 5;
constexpr int addressAttribute = 40;
constexpr int historyAttribute = 51;
constexpr int relatedAttribute = 94;  // handles

std::uint64_t mix(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15u;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
  return x ^ (x >> 31);
}

// Attribute texts in ascending key order: "<" id ";" group ";" count ";" { value ";" } ">".
class AttributeText {
 public:
  void add(int id, std::initializer_list<std::string> values) {
    begin(id, values.size());
    for (const std::string& value : values) this->value(value);
    end();
  }
  void begin(int id, std::size_t count) {
    text_ += '<' + std::to_string(id) + ";0;" + std::to_string(count) + ';';
  }
  void value(std::string_view value) {
    for (const char c : value) {
      text_ += c;
      if (c == ';' || c == '>') text_ += c;
    }
    text_ += ';';
  }
  void end() { text_ += '>'; }
  [[nodiscard]] std::string take() { return std::move(text_); }

 private:
  std::string text_;
};

template <std::size_t count>
std::string_view oneOf(const std::array<std::string_view, count>& words, std::uint64_t random) {
  return words[random % count];
}

constexpr std::array<std::string_view, 8> sites = {"Berlin", "Lyon",  "Leeds", "Osaka",
                                                   "Malaga", "Turin", "Ghent", "Boston"};
constexpr std::array<std::string_view, 8> roles = {"database", "mail",   "backup", "web",
                                                   "print",    "ledger", "build",  "archive"};
constexpr std::array<std::string_view, 4> states = {"active", "standby", "maintenance", "retired"};
constexpr std::array<std::string_view, 5> notes = {
    "checked by the night shift", "limit > 80 %; call the owner", "moved from the old hall",
    "owner on leave; ask the desk", "no changes without a ticket"};

std::string padded(std::uint32_t number) {
  std::string digits = std::to_string(number);
  return std::string(digits.size() < 6 ? 6 - digits.size() : 0, '0') + digits;
}

}  // namespace

// `share` is in thousandths of the objects; identifiers count from 1 within a kind.
struct Fleet::Kind {
  std::string_view name;
  std::int32_t type;
  std::uint32_t share;
  std::size_t parent;
  std::size_t model;
};

namespace {
constexpr std::array<Fleet::Kind, 11> kinds = {{
    {"", 0, 0, noKind, noKind},
    {"system-model", 12, 2, noKind, noKind},
    {"group-model", 11, 8, systemModels, noKind},
    {"resource-model", 10, 40, groupModels, noKind},
    {"system", 2, 10, noKind, systemModels},
    {"group", 3, 90, systems, groupModels},
    {"resource", 4, 0, groups, resourceModels},  // all that the others leave
    {"prototype", 6, 20, groupModels, noKind},
    {"schedule", 5, 20, systems, noKind},
    {"operator", 1, 10, noKind, noKind},
    {"log", 26, 10, noKind, noKind},
}};
}  // namespace

Fleet::Fleet(const FleetOptions& options) : seed_(mix(options.seed)) {
  static_assert(kinds.size() == kindCount);
  const std::uint64_t wanted = std::max<std::uint32_t>(options.objects, 20);
  std::array<std::uint32_t, kindCount> counts{};
  std::uint32_t taken = 0;
  for (std::size_t kind = 0; kind < kindCount; ++kind) {
    const std::uint64_t count = kind == systemRecord ? 1 : wanted * kinds[kind].share / 1000;
    counts[kind] =
        kind == resources ? 0 : std::max<std::uint32_t>(static_cast<std::uint32_t>(count), 1);
    taken += counts[kind];
  }
  counts[resources] = static_cast<std::uint32_t>(wanted) - taken;
  for (std::size_t kind = 0; kind < kindCount; ++kind) {
    firstOf_[kind + 1] = firstOf_[kind] + counts[kind];
  }
  objectCount_ = firstOf_[kindCount];
  sortByKey();
  collectReferences();
}

std::uint64_t Fleet::randomOf(std::uint32_t object, std::uint32_t what) const {
  return mix(seed_ ^ mix(std::uint64_t{object} << 8 | what));
}

const Fleet::Kind& Fleet::kindOf(std::uint32_t object) const {
  const auto after = std::upper_bound(firstOf_.begin(), firstOf_.end(), object);
  return kinds[static_cast<std::size_t>(after - firstOf_.begin()) - 1];
}

CMConfigHandle Fleet::handleOf(std::uint32_t object) const {
  if (object == 0) return {};
  const Kind& kind = kindOf(object);
  const auto number = static_cast<std::size_t>(&kind - kinds.data());
  return {kind.type, object - firstOf_[number] + 1};
}

std::uint32_t Fleet::pick(std::uint32_t object, std::uint32_t what, std::size_t kind) const {
  const std::uint32_t count = firstOf_[kind + 1] - firstOf_[kind];
  return firstOf_[kind] + static_cast<std::uint32_t>(randomOf(object, what) % count);
}

CMConfigHandle Fleet::parentOf(std::uint32_t object, const Kind& kind) const {
  return kind.parent == noKind ? CMConfigHandle() : handleOf(pick(object, 1, kind.parent));
}

bool Fleet::refersToModel(std::uint32_t object, const Kind& kind) const {
  return kind.model != noKind && randomOf(object, 2) % 4 != 0;
}

CMConfigHandle Fleet::modelOf(std::uint32_t object, const Kind& kind) const {
  return refersToModel(object, kind) ? handleOf(pick(object, 3, kind.model)) : CMConfigHandle();
}

void Fleet::sortByKey() {
  struct Keyed {
    std::array<std::uint8_t, 16> key;
    std::uint32_t object;
  };
  std::vector<Keyed> keyed(objectCount_);
  for (std::uint32_t object = 0; object < objectCount_; ++object) {
    const CMConfigHandle parent = parentOf(object, kindOf(object));
    const CMConfigHandle handle = handleOf(object);
    std::copy_n(parent.bytes().begin(), handleSize, keyed[object].key.begin());
    std::copy_n(handle.bytes().begin(), handleSize, keyed[object].key.begin() + handleSize);
    keyed[object].object = object;
  }
  std::sort(keyed.begin(), keyed.end(),
            [](const Keyed& a, const Keyed& b) { return a.key < b.key; });
  keyOrder_.reserve(objectCount_);
  for (const Keyed& entry : keyed) keyOrder_.push_back(entry.object);
}

// A counting sort: referrers fall into place model by model, in key order.
void Fleet::collectReferences() {
  const std::uint32_t models = firstOf_[systems] - firstOf_[systemModels];
  firstReferrer_.assign(models + 1, 0);
  const auto modelNumber = [&](std::uint32_t object) {
    return pick(object, 3, kindOf(object).model) - firstOf_[systemModels];
  };
  for (const std::uint32_t object : keyOrder_) {
    if (refersToModel(object, kindOf(object))) ++firstReferrer_[modelNumber(object) + 1];
  }
  for (std::uint32_t model = 0; model < models; ++model) {
    firstReferrer_[model + 1] += firstReferrer_[model];
  }
  referrers_.resize(firstReferrer_.back());
  std::vector<std::uint32_t> next(firstReferrer_.begin(), firstReferrer_.end() - 1);
  for (const std::uint32_t object : keyOrder_) {
    if (refersToModel(object, kindOf(object))) referrers_[next[modelNumber(object)]++] = object;
  }
}

std::vector<DataBuffer> Fleet::recordsOf(std::uint32_t object) const {
  const Kind& kind = kindOf(object);
  const std::string text = object == 0 ? systemAttributes() : attributesOf(object, kind);
  DataBuffer head;
  head.setParentHandle(parentOf(object, kind));
  head.setObjectHandle(handleOf(object));
  head.setModelHandle(modelOf(object, kind));
  head.setRecType(kind.type);
  if (object != 0) {
    head.setAuxValue1(static_cast<std::int32_t>(randomOf(object, 4) % 1000));
    head.setAuxValue2(1 + static_cast<std::int32_t>(randomOf(object, 5) % 100));
  }
  std::vector<DataBuffer> records;
  for (std::size_t at = 0; at == 0 || at < text.size(); at += data_layout::attrTextSize) {
    head.setRecn(static_cast<std::uint32_t>(records.size()));
    head.setAttrText(std::string_view(text).substr(at, data_layout::attrTextSize));
    records.push_back(head);
  }
  return records;
}

std::string Fleet::attributesOf(std::uint32_t object, const Kind& kind) const {
  const auto number = static_cast<std::size_t>(&kind - kinds.data());
  const auto random = [&](std::uint32_t what) { return randomOf(object, what); };
  AttributeText text;
  const std::string site(oneOf(sites, random(10)));
  const std::string role(oneOf(roles, random(11)));
  text.add(nameAttribute, {std::string(kind.name) + '-' + padded(object - firstOf_[number] + 1)});
  text.add(descriptionAttribute, {role + " " + std::string(kind.name) + " in " + site});
  text.add(stateAttribute, {std::string(oneOf(states, random(12)))});
  const bool isModel = object < firstOf_[systems];
  const std::uint32_t model = object - firstOf_[systemModels];
  if (isModel) {
    text.add(known_attribute::useCount,
             {std::to_string(firstReferrer_[model + 1] - firstReferrer_[model])});
  } else {
    text.add(addressAttribute,
             {"10." + std::to_string(random(13) % 256) + '.' + std::to_string(random(14) % 256) +
              '.' + std::to_string(random(15) % 256)});
  }
  if (random(16) % 10 == 0) {
    text.begin(historyAttribute, 4 + random(17) % 12);
    for (std::uint64_t i = 4 + random(17) % 12; i > 0; --i) {
      text.value(oneOf(notes, random(20 + static_cast<std::uint32_t>(i))));
    }
    text.end();
  }
  if (isModel && firstReferrer_[model] != firstReferrer_[model + 1]) {
    text.begin(known_attribute::signatures, firstReferrer_[model + 1] - firstReferrer_[model]);
    for (std::uint32_t i = firstReferrer_[model]; i < firstReferrer_[model + 1]; ++i) {
      text.value(handleOf(referrers_[i]).exportText().view());
    }
    text.end();
  }
  if (number == groups && random(18) % 8 == 0) {
    text.add(relatedAttribute,
             {std::string(handleOf(pick(object, 19, systems)).exportText().view())});
  }
  return text.take();
}

std::string Fleet::systemAttributes() const {
  AttributeText text;
  text.add(known_attribute::systemParameters, {parameterText()});
  text.begin(known_attribute::counters, handlerTypes.size());
  for (const std::int32_t type : handlerTypes) {
    std::uint32_t next = 1;
    for (std::size_t kind = 1; kind < kindCount; ++kind) {
      if (kinds[kind].type == type) next = firstOf_[kind + 1] - firstOf_[kind] + 1;
    }
    text.value(std::to_string(next));
  }
  text.end();
  return text.take();
}

std::string Fleet::parameterText() const {
  const std::string site(oneOf(sites, mix(seed_)));
  return "SITE=" + site + "=where this server stands,RETENTION=" + std::to_string(30 + seed_ % 60) +
         "=days,MAILHOST=mail." + site + ".example,SHIFT=night,LOGPATH=/var/log/fleet=log files";
}

}  // namespace orx::orxkdb
