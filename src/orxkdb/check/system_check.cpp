#include "orxkdb/check/system_check.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <vector>

#include "model/attribute_set.h"
#include "model/sym_parm_set.h"
#include "orxkdb/words/quote.h"
#include "restore/known_attributes.h"
#include "restore/merge_types.h"
#include "restore/sym_parm_attribute.h"

namespace orx::orxkdb {

namespace {

// A merge takes any mix of digits and "-" for a number.
Counter readCounter(const CMAttribute& attribute, std::string_view text, int index) {
  int isNumeric = 0;
  const int number = attribute.getValue(&isNumeric, index);
  Counter counter{isNumeric != 0, static_cast<std::uint32_t>(number)};
  if (!plainNumber(text)) counter.misread = text;
  return counter;
}

std::vector<Counter> readCounters(const CMAttribute& attribute) {
  std::vector<Counter> counters;
  for (const std::string_view text : attribute.values()) {
    if (counters.size() == handlerTypes.size()) break;
    counters.push_back(readCounter(attribute, text, static_cast<int>(counters.size())));
  }
  return counters;
}

void checkCounterCount(const CMAttribute& counters, const Place& place, Findings& findings) {
  constexpr auto most = static_cast<int>(handlerTypes.size());
  if (counters.attrCount() <= most) return;
  findings.add(FindingKind::counter, place, [&] {
    return "there are " + std::to_string(counters.attrCount()) +
           " values; those behind the first " + std::to_string(most) +
           " are not read, and a merge removes them";
  });
}

std::string firstValue(const CMAttribute& attribute) {
  std::string value;
  attribute.getValue3(value, 0);
  return value;
}

bool isMark(char c) {
  return c == ',' || c == '=';
}

// Blanks at the ends of a field do not count.
std::string withoutOuterBlanks(std::string_view text) {
  std::string kept;
  const auto cut = [&kept] { kept.resize(kept.find_last_not_of(' ') + 1); };
  for (const char c : text) {
    if (isMark(c)) cut();
    if (c != ' ' || !(kept.empty() || isMark(kept.back()))) kept += c;
  }
  cut();
  return kept;
}

// `text` from a little before the position where it differs from another.
std::string quoteAround(std::string_view text, std::size_t position) {
  constexpr std::size_t before = 20;
  if (position <= 2 * before) return quote(text);
  return "..." + quote(text.substr(position - before));
}

void checkParameterText(const std::string& text, const std::string& written, const Place& place,
                        Findings& findings) {
  const std::string fields = withoutOuterBlanks(text);
  const std::string writtenFields = withoutOuterBlanks(written);
  if (fields == writtenFields) return;
  findings.add(FindingKind::systemParameters, place, [&] {
    const auto differs = std::ranges::mismatch(fields, writtenFields).in1 - fields.begin();
    const auto position = static_cast<std::size_t>(differs);
    return quoteAround(fields, position) + " is written as " + quoteAround(writtenFields, position);
  });
}

void checkParameters(const CMAttribute& attribute, const Place& place, Findings& findings) {
  if (attribute.attrCount() > 1) {
    findings.add(FindingKind::systemParameters, place, [&] {
      return "there are " + std::to_string(attribute.attrCount()) +
             " values; those behind the first are not read, and a merge removes them";
    });
  }
  CMSymParmSet parameters;
  parameters = attribute;
  checkParameterText(firstValue(attribute), firstValue(makeSymParmAttribute(parameters)), place,
                     findings);
}

}  // namespace

std::optional<std::int64_t> plainNumber(std::string_view text) {
  std::int64_t number = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, number);
  const bool fits = number >= std::numeric_limits<std::int32_t>::min() &&
                    number <= std::numeric_limits<std::uint32_t>::max();
  if (error != std::errc() || end != last || !fits) return std::nullopt;
  return number;
}

void checkSystemText(const std::string& text, const Place& place, Findings& findings,
                     Inventory& inventory) {
  CMAttributeSet attributes(text.c_str(), 1);
  const CMAttributeKey parametersKey(known_attribute::systemParameters);
  if (const CMAttribute* parameters = attributes.findAttrKey(parametersKey)) {
    checkParameters(*parameters, place, findings);
  }
  const CMAttributeKey countersKey(known_attribute::counters);
  const CMAttribute* counters = attributes.findAttrKey(countersKey);
  if (counters == nullptr) return;
  checkCounterCount(*counters, place, findings);
  inventory.setCounters(readCounters(*counters));
}

}  // namespace orx::orxkdb
