// The names that the trace is filtered by, where they are not those of the code.
#include <gmock/gmock.h>

#include "encoding/code_pages.h"
#include "model/attribute_set.h"
#include "model/sym_parm_set.h"
#include "records/backup_record.h"
#include "records/data_buffer.h"
#include "tests/support/trace_capture.h"

namespace orx {
namespace {

TEST(TraceNames, TellUnitAndOverload) {
  const CMConfigHandle handle(5, 1);
  const CMAttribute attribute(1, 0);
  const CMAttributeKey key(1);
  CMAttributeSet set("<1;0;1;A=1;>", 1);
  const CMAttributeSet& constantSet = set;
  CMSymParm parameter("A", "1", 2, 0, nullptr);
  CMSymParmSet parameters;
  CMDatabaseBackupRecord record;
  struct Row {
    const char *unit, *name;
    std::function<void()> action;
  };
  const Row rows[] = {
      {"ORXCCMMM", "CMMemoryManager::displayMemoryUse",
       [] { CMMemoryManager::displayMemoryUse(1); }},
      {"ORXCCMCI", "Constructor1", [] { CMConfigHandle(); }},
      {"ORXCCMCI", "Constructor2", [] { CMConfigHandle(5, 1); }},
      {"ORXCCMCI", "Constructor3", [&] { CMConfigHandle(handle, handle); }},
      {"ORXCCMCI", "Constructor4", [&] { CMConfigHandle(handle, handle, handle); }},
      {"ORXCCMCI", "intOperator", [&] { (void)static_cast<std::int32_t>(handle); }},
      {"ORXCCMCI", "EqualityOperator2", [&] { (void)(handle == handle.getHandleBytes()); }},
      {"ORXCCMCI", "InequalityOperator2", [&] { (void)(handle != handle.getHandleBytes()); }},
      {"ORXCCMAT", "Constructor0", [] { CMAttribute(); }},
      {"ORXCCMAT", "Constructor", [] { CMAttribute(short{1}, short{0}); }},
      {"ORXCCMAT", "ConstructorFromString", [] { CMAttribute("1;0;0;", 1); }},
      {"ORXCCMAT", "EqualityOperator", [&] { (void)(attribute == attribute); }},
      {"ORXCCMAS", "Constructor", [] { CMAttributeSet("", 1); }},
      {"ORXCCMAS", "CopyConstructor", [&] { CMAttributeSet{constantSet}; }},
      {"ORXCCMAS", "findAttrKey1", [&] { (void)constantSet.findAttrKey(key); }},
      {"ORXCCMAS", "findAttrKey2", [&] { (void)set.findAttrKey(key); }},
      {"ORXCCMAS", "findAttrKey3", [&] { (void)set.findAttrKey(short{1}, short{0}); }},
      {"ORXCCMAS", "findAttrKey4", [&] { (void)set.findAttrKey(1, 0); }},
      {"ORXCCMAS", "getFirst1", [&] { (void)constantSet.getFirst(); }},
      {"ORXCCMAS", "getFirst2", [&] { (void)set.getFirst(); }},
      {"ORXCCMSP", "EqualityOperator", [&] { (void)(parameter == parameter); }},
      {"ORXCCMPS", "AssignmentOperator1", [&] { parameters = set; }},
      {"ORXCCMPS", "AssignmentOperator2", [&] { parameters = attribute; }},
      {"ORXUTF8", "UTF8GetLocaleDefaultCodePageID", [] { (void)UTF8GetLocaleDefaultCodePageID(); }},
      {"ORXCDBBU", "CMDatabaseBackupRecord default constructor", [] { CMDatabaseBackupRecord(); }},
      {"ORXCDBBU", "CMDatabaseBackupRecord::buildDataBuffer", [&] {
         DataBuffer built;
         record.buildDataBuffer(built);
       }}};
  for (const Row& row : rows) {
    EXPECT_THAT(
        captureWholeTrace(std::string(row.name) + "=0x40", row.action),
        testing::Contains(testing::HasSubstr(std::string(" ") + row.unit + " " + row.name + ":")))
        << row.name;
  }
}

}  // namespace
}  // namespace orx
