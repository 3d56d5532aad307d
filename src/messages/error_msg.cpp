#include "messages/error_msg.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <span>

#include "messages/trace_unit.h"
#include "platform/kdb_codes.h"
#include "platform/run_progress.h"

namespace orx {

namespace {

constexpr std::array<std::string_view, 12> returnCodeNames{
    "Success",       "BadArgument", "BadObject",   "BusyObject",   "Duplicate", "NotThere",
    "ProtocolError", "Shortage",    "SystemError", "UnknownError", "Warning",   "Authority",
};

constexpr std::array<std::string_view, 65> reasonNames{
    "NoError",       "Arguments",    "Ascend",    "Authority",  "BufferCount", "Comparator",
    "Communication", "Conflict",     "Count",     "Deadlock",   "Default",     "Descend",
    "Direction",     "Empty",        "EndOfFile", "Existence",  "First",       "Format",
    "Full",          "InUse",        "IOError",   "Last",       "Length",      "Minimum",
    "Maximum",       "Mode",         "NoReason",  "NotAllowed", "NotFound",    "NotHeld",
    "Path",          "Precision",    "Previous",  "Priority",   "Prior",       "Range",
    "Relation",      "Scale",        "Sequence",  "Size",       "Space",       "Storage",
    "SystemReject",  "Threshold",    "Type",      "Undefined",  "Unique",      "VolumeFull",
    "NotReady",      "More",         "Chain",     "Exit",       "Anchor",      "Interrupted",
    "TimeOut",       "Values",       "Command",   "Define",     "Reset",       "Truncate",
    "Incomplete",    "InquiryError", "Open",      "Access",     "User",
};

constexpr bool isPrintable(std::string_view name) {
  return !name.empty() && name.size() <= 19;
}
static_assert(std::ranges::all_of(returnCodeNames, isPrintable));
static_assert(std::ranges::all_of(reasonNames, isPrintable));

constexpr std::string_view nameOf(std::span<const std::string_view> names, std::int32_t number) {
  if (number < 0 || static_cast<std::size_t>(number) >= names.size()) return "Unknown";
  return names[static_cast<std::size_t>(number)];
}

// A name that slipped out of its place would show in one of these.
constexpr bool names(kdb::Code code, std::string_view name) {
  return nameOf(returnCodeNames, static_cast<std::int32_t>(code)) == name;
}
constexpr bool names(kdb::Reason reason, std::string_view name) {
  return nameOf(reasonNames, static_cast<std::int32_t>(reason)) == name;
}
static_assert(names(kdb::Code::notThere, "NotThere") && names(kdb::Code::authority, "Authority"));
static_assert(names(kdb::Reason::endOfFile, "EndOfFile") && names(kdb::Reason::inUse, "InUse"));
static_assert(names(kdb::Reason::notFound, "NotFound") && names(kdb::Reason::space, "Space"));
static_assert(names(kdb::Reason::systemReject, "SystemReject"));
static_assert(names(kdb::Reason::unique, "Unique") && names(kdb::Reason::open, "Open"));

}  // namespace

std::string_view returnCodeName(std::int32_t returnCode) {
  return nameOf(returnCodeNames, returnCode);
}

std::string_view reasonName(std::int32_t reason) {
  return nameOf(reasonNames, reason);
}

// The names are literals and end with a zero.
void ErrorMsg(std::int32_t returnCode, std::int32_t reason, const char* text) {
  ORX_TRACE("ErrorMsg");
  const OutputTurn turn;
  (void)std::printf("%s, RC=%d(%s), RSN=%d(%s)\n", text, returnCode,
                    returnCodeName(returnCode).data(), reason, reasonName(reason).data());
}

}  // namespace orx
