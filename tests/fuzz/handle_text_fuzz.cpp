// Both text forms of a handle, read, written and read again.
#include <string>

#include "model/config_handle.h"
#include "orxkdb/explain/explained_object.h"
#include "orxkdb/keys/handle_number.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

CMConfigHandle exportedAndRead(const CMConfigHandle& handle) {
  CMConfigHandle read;
  fuzz::require(read.importHndl(handle.exportText().view()) == 1, "an exported form is complete");
  return read;
}

void checkHandle(const CMConfigHandle& handle) {
  const CMConfigHandle once = exportedAndRead(handle);
  CMConfigHandle settled = once;
  for (int i = 0; i < 3; ++i) settled = exportedAndRead(settled);
  fuzz::require(exportedAndRead(settled) == settled, "exported forms settle");
  if (once.isNewFormat() && once.getType() > 0) {
    fuzz::require(settled == once, "a typical handle does at once");
  }
  fuzz::require(
      orxkdb::readBack(orxkdb::numberOf(handle.bytes())) == orxkdb::numberOf(once.bytes()),
      "what an exported form brings back is known beforehand");
  CMConfigHandle fromDigits;
  fromDigits.setFromExternChar(handle.externText().view());
  fuzz::require(fromDigits == handle, "16 digits hold all of a handle");
  (void)handle.getManagedSystemHandle();
  (void)handle.getGroupRefId();
  (void)handle.getResourceRefId();
  handle.dump("fuzz");
}

void checkCut(const CMConfigHandle& handle, std::size_t size) {
  std::string room(size, 'x');
  handle.exportChr(room.data(), room.size());
  if (size == 0) return;
  const std::string whole = handle.exportText().c_str();
  fuzz::require(room.c_str() == whole.substr(0, size - 1), "an exported form is cut to its room");
  (void)handle.getExternChar(room.data(), room.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::size_t room = input.byte() % 64;
  const std::string text(input.rest());
  CMConfigHandle handle;
  (void)handle.importHndl(text);
  checkHandle(handle);
  checkCut(handle, room);
  handle.setFromExternChar(text);
  checkHandle(handle);
  if (text.size() >= handleSize) {
    handle.set(data + 1);
    checkHandle(handle);
    checkCut(handle, room);
  }
  if (CMConfigHandle::isExportedFormat(text)) (void)handle.importHndl(text.c_str());
  if (const auto number = orxkdb::readHandleText(text); number.has_value()) {
    checkHandle(orxkdb::handleOf(*number));
  }
  orxkdb::ObjectQuery query;
  if (orxkdb::readQuery(text, query).ok()) {
    fuzz::require(query.matches(query.handle), "a handle that is asked for is found");
  }
  return 0;
}
