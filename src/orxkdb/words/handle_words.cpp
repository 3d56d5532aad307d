#include "orxkdb/words/handle_words.h"

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "orxkdb/keys/handle_number.h"

namespace orx::orxkdb {

namespace {

const char* kindWords(ModelInheritedKind kind) {
  switch (kind) {
    case ModelInheritedKind::none:
      return "not inherited";
    case ModelInheritedKind::inheritedGroup:
      return "inherited group";
    case ModelInheritedKind::resourceInInherited:
      return "inherited resource in an inherited group";
    case ModelInheritedKind::resourceInGroup:
      return "inherited resource in a normal group";
  }
  return "unknown";
}

const char* formatWord(const CMConfigHandle& handle) {
  return handle.isNewFormat() ? "new" : "old";
}

bool hasFlag(const CMConfigHandle& handle, unsigned flag) {
  return (handle_layout::flags(handle.bytes()) & flag) != 0;
}

// What an inherited handle refers to: name, key for scripts, handle.
struct Part {
  const char* name;
  const char* key;
  CMConfigHandle handle;
};

std::vector<Part> partsOf(const CMConfigHandle& handle) {
  std::vector<Part> parts;
  for (Part part : {Part{"managed system", "managedSystem", handle.getManagedSystemHandle()},
                    Part{"group", "group", handle.getGroupRefId()},
                    Part{"resource", "resource", handle.getResourceRefId()}}) {
    if (!part.handle.isNull()) parts.push_back(std::move(part));
  }
  return parts;
}

std::string meaning(const CMConfigHandle& handle) {
  const ModelInheritedKind kind = handle.getModelInheritedKind();
  if (kind == ModelInheritedKind::none) {
    return "identifier " + std::to_string(identifierOf(numberOf(handle.bytes())));
  }
  std::string text = kindWords(kind);
  for (const Part& part : partsOf(handle)) {
    text.append(", ").append(part.name).append(" ").append(part.handle.exportText().view());
  }
  return text;
}

}  // namespace

std::string handleWords(const CMConfigHandle& handle) {
  std::string text = handle.exportText().c_str();
  text.append(", ").append(handle.externText().view());
  if (handle.isNull()) return text + ", the null handle";
  text.append(", ").append(formatWord(handle)).append(" format, type ");
  text.append(std::to_string(std::int32_t{handle.getType()})).append(", ").append(meaning(handle));
  if (handle.isTemporary()) text += ", temporary";
  if (hasFlag(handle, handle_layout::flag2)) text += ", flag 2";
  if (hasFlag(handle, handle_layout::flag3)) text += ", flag 3";
  return text;
}

nlohmann::ordered_json handleJson(const CMConfigHandle& handle) {
  nlohmann::ordered_json json{
      {"exported", handle.exportText().view()},
      {"hex", handle.externText().view()},
      {"format", formatWord(handle)},
      {"type", std::int32_t{handle.getType()}},
      {"kind", kindWords(handle.getModelInheritedKind())},
      {"temporary", handle.isTemporary()},
      {"flag2", hasFlag(handle, handle_layout::flag2)},
      {"flag3", hasFlag(handle, handle_layout::flag3)},
  };
  if (handle.getModelInheritedKind() == ModelInheritedKind::none) {
    json["identifier"] = identifierOf(numberOf(handle.bytes()));
  }
  for (const Part& part : partsOf(handle)) json[part.key] = part.handle.exportText().view();
  return json;
}

}  // namespace orx::orxkdb
