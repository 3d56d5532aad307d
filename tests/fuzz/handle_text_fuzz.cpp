// Both text forms of a handle, read, written and read again.
#include <algorithm>
#include <string>

#include "model/config_handle.h"
#include "orxkdb/explain/explained_object.h"
#include "orxkdb/keys/handle_number.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {
namespace {

CMConfigHandle exportedAndRead(const CMConfigHandle& handle) {
  CMConfigHandle read;
  require(read.importHndl(handle.exportText().view()) == 1, "an exported form is complete");
  return read;
}

// In a room of `size` bytes, at least 1.
void check(const CMConfigHandle& handle, std::size_t size) {
  const CMConfigHandle once = exportedAndRead(handle);
  CMConfigHandle settled = once;
  for (int i = 0; i < 3; ++i) settled = exportedAndRead(settled);
  require(exportedAndRead(settled) == settled, "exported forms settle");
  if (once.isNewFormat() && once.getType() > 0) {
    require(settled == once, "a typical handle does at once");
  }
  require(orxkdb::readBack(orxkdb::numberOf(handle.bytes())) == orxkdb::numberOf(once.bytes()),
          "what an exported form brings back is known beforehand");
  CMConfigHandle fromDigits;
  fromDigits.setFromExternChar(handle.externText().view());
  require(fromDigits == handle, "16 digits hold all of a handle");
  std::string room(size, 'x');
  handle.exportChr(room.data(), size);
  require(room.c_str() == std::string(handle.exportText().view().substr(0, size - 1)),
          "an exported form is cut to its room");
  (void)handle.getExternChar(room.data(), size);
  (void)handle.getManagedSystemHandle();
  (void)handle.getGroupRefId();
  (void)handle.getResourceRefId();
  handle.dump("fuzz");
}

const Registration target("handle_text", [](Input& input) {
  const std::size_t room = std::max(input.byte() % 64, 1);
  const std::string text(input.rest());
  CMConfigHandle handle;
  (void)handle.importHndl(text);
  check(handle, room);
  handle.setFromExternChar(text);
  check(handle, room);
  if (text.size() >= handleSize) {
    handle.set(static_cast<const std::uint8_t*>(static_cast<const void*>(text.data())));
    check(handle, room);
  }
  if (CMConfigHandle::isExportedFormat(text)) (void)handle.importHndl(text.c_str());
  if (const auto number = orxkdb::readHandleText(text); number.has_value()) {
    check(orxkdb::handleOf(*number), room);
  }
  orxkdb::ObjectQuery query;
  if (orxkdb::readQuery(text, query).ok()) {
    require(query.matches(query.handle), "a handle that is asked for is found");
  }
});

}  // namespace
}  // namespace orx::fuzz
