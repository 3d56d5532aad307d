// HintList: the hints of one run, made of constant texts in which the names of its files have
// places.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "restore/restore_settings.h"
#include "terminal/file_words.h"

namespace orx {

struct Hint {
  std::string what;  // one sentence; names files by their absolute paths
  std::string next;  // a command, ready to type; empty where there is nothing to do
};

// A text with places for names. Only constants are: a name that looks like a place stays a name.
class HintTemplate {
 public:
  consteval HintTemplate(const char* text) : text_(text) {}  // NOLINT(google-explicit-constructor)
  [[nodiscard]] std::string_view text() const { return text_; }

 private:
  std::string_view text_;
};

inline constexpr HintTemplate moreFiles = "ulimit -n 1024";  // raises the limit of open ones

class HintList {
 public:
  // Every text has places for the files of `settings`: {DB}, {PREVIOUS} (its previous generation)
  // and {BACKUP} for absolute paths, {db}, {previous}, {backup} and {dir} (the backup's directory)
  // for words of a command.
  explicit HintList(const RestoreSettings& settings);

  // With `more` places than those of every text.
  void add(HintTemplate what, HintTemplate next, const std::vector<Placed>& more = {});
  void addUndo(HintTemplate why, const std::vector<Placed>& more = {});
  // Goes on with the sentence of the hint that was added last.
  void append(std::string_view text) { hints_.back().what += text; }

  [[nodiscard]] std::vector<Hint> take() { return std::move(hints_); }

 private:
  std::vector<Placed> places_;
  std::vector<Hint> hints_;
};

}  // namespace orx
