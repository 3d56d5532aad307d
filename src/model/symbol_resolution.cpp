#include "model/symbol_resolution.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "encoding/code_pages.h"
#include "model/sym_parm_trace.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = symParmTraceUnit;

constexpr std::string_view nameTerminators = "&., <";
constexpr std::size_t rangeTextCapacity = 100;
constexpr std::size_t utf8Capacity = 256;
constexpr std::size_t effortLimit = symbol_limits::levels * symbol_limits::resultBytes;
constexpr std::size_t effortOfAnyValue = 64;  // what a value costs however short it is

// What all levels of one resolution share.
struct Resolution {
  CMSymParmSet* set;
  std::vector<CMSymParm*>* changed;
  std::size_t effort = 0;
};

// Resolves the references of one text; values with references of their own are one level down.
class TextResolver {
 public:
  TextResolver(Resolution& shared, std::string_view text, bool utf8, int level)
      : shared_(shared), text_(text), utf8_(utf8), level_(level) {}

  std::string run();

 private:
  void step();
  void copyUpToAmpersand();
  void resolveReference();
  [[nodiscard]] CMSymParm* lookUp(std::string_view name) const;
  // False when a limit keeps the reference as it stands.
  bool settleValue(CMSymParm& parameter);
  bool replace(CMSymParm& parameter, std::size_t end);
  [[nodiscard]] std::size_t readRange(std::size_t end, SubstrRange& range) const;
  [[nodiscard]] std::string selectedPart(const CMSymParm& parameter,
                                         const SubstrRange& range) const;
  [[nodiscard]] bool follows(std::size_t position, char c) const {
    return position < text_.size() && text_[position] == c;
  }

  Resolution& shared_;
  std::string_view text_;
  bool utf8_;
  int level_;  // 0 for the text that the caller gave
  std::size_t position_ = 0;
  std::string result_;
};

std::string TextResolver::run() {
  ORX_TRACE("ResolveSymbolsInString");
  result_.reserve(std::min(2 * text_.size() + 1, symbol_limits::resultBytes));
  while (position_ < text_.size()) step();
  if (trace.on(TraceScope::events)) {
    DIAG_Printf(trace.anchor(), __LINE__, "Returning string %s from ResolveSymbolsInString",
                result_.c_str());
  }
  return trace.exit(std::move(result_));
}

void TextResolver::step() {
  if (text_[position_] != '&') {
    copyUpToAmpersand();
  } else if (follows(position_ + 1, '&')) {
    result_ += '&';
    position_ += 2;
  } else if (position_ + 1 == text_.size()) {
    result_ += '&';
    ++position_;
  } else {
    resolveReference();
  }
}

void TextResolver::copyUpToAmpersand() {
  const std::string_view rest = text_.substr(position_);
  const std::string_view plain = rest.substr(0, rest.find('&'));
  result_ += plain;
  position_ += plain.size();
}

void TextResolver::resolveReference() {
  const std::string_view rest = text_.substr(position_ + 1);
  const std::string_view name = rest.substr(0, rest.find_first_of(nameTerminators));
  const std::size_t end = position_ + 1 + name.size();
  CMSymParm* parameter = lookUp(name);
  if (parameter != nullptr && settleValue(*parameter) && replace(*parameter, end)) return;
  result_ += text_.substr(position_, end - position_);
  position_ = end;
}

CMSymParm* TextResolver::lookUp(std::string_view name) const {
  if (shared_.set == nullptr) return nullptr;
  std::string local(name);
  // A name that cannot be converted is looked up as it stands.
  if (utf8_) (void)ConvertStringToUTF8_RWCString(1, local, ccsid::local);
  return shared_.set->findSymbolName2(local.c_str());
}

// The parameter is out of the set meanwhile, so that its value cannot refer to it.
bool TextResolver::settleValue(CMSymParm& parameter) {
  const std::string_view value = parameter.value();
  if (!parameter.symbolicRefs() || value == text_) return true;
  if (level_ == symbol_limits::levels || result_.size() >= symbol_limits::resultBytes) return false;
  shared_.effort += value.size() + effortOfAnyValue;
  if (shared_.effort > effortLimit) return false;
  std::unique_ptr<CMSymParm> taken = shared_.set->remove(parameter);
  const std::string resolved = TextResolver(shared_, value, false, level_ + 1).run();
  (void)shared_.set->insertUniqueParm(taken);
  parameter.setValue(resolved.c_str());
  if (shared_.changed != nullptr) shared_.changed->push_back(&parameter);
  return true;
}

bool TextResolver::replace(CMSymParm& parameter, std::size_t end) {
  SubstrRange range;
  end = readRange(end, range);
  const std::string part = selectedPart(parameter, range);
  if (result_.size() + part.size() > symbol_limits::resultBytes) return false;
  result_ += part;
  const bool empty = parameter.value().empty();
  position_ = follows(end, '.') || (empty && follows(end, ',')) ? end + 1 : end;
  return true;
}

// Returns the position behind the range, or behind the first of two "<". No range is longer than
// its capacity, so the search for its ">" goes no further.
std::size_t TextResolver::readRange(std::size_t end, SubstrRange& range) const {
  if (!follows(end, '<')) return end;
  if (follows(end + 1, '<')) return end + 1;
  const std::string_view rest = text_.substr(end + 1, rangeTextCapacity);
  const std::size_t length = rest.find('>');
  if (length == std::string_view::npos) return end;
  const int read = getSubstrRange(rest.data(), static_cast<int>(length), range, utf8_ ? 1 : 0);
  return read == 1 ? end + 1 + length + 1 : end;
}

std::string TextResolver::selectedPart(const CMSymParm& parameter, const SubstrRange& range) const {
  const std::string_view value = parameter.value();
  std::string part;
  if (!utf8_) {
    AddCharToString(part, value.data(), static_cast<int>(value.size()), &range);
    return part;
  }
  char utf8[utf8Capacity] = {};
  if (ConvertStringToUTF8(0, utf8, sizeof utf8, value.data(), static_cast<int>(value.size()),
                          ccsid::local) == 0) {
    AddCharToString(part, utf8, static_cast<int>(std::char_traits<char>::length(utf8)), &range);
  }
  return part;
}

}  // namespace

std::string ResolveSymbolsInString(const char* text, CMSymParmSet* set, int utf8Mode,
                                   std::vector<CMSymParm*>* changed) {
  const std::string kept(text);  // it may be a value of the set, which changes meanwhile
  Resolution shared{set, changed};
  return TextResolver(shared, kept, utf8Mode != 0, 0).run();
}

}  // namespace orx
