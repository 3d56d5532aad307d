#include "orxkdb/sample/sample_writer.h"

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "records/backup_record.h"

namespace orx::orxkdb {

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

// Collects lines into pieces.
class Lines {
 public:
  explicit Lines(const std::function<bool(std::string_view)>& write) : write_(write) {}

  [[nodiscard]] bool add(const DataBuffer& record) {
    piece_ += CMDatabaseBackupRecord(record).text();
    piece_ += '\n';
    return piece_.size() < pieceSize || flush();
  }
  [[nodiscard]] bool flush() {
    const bool goesOn = write_(piece_);
    piece_.clear();
    return goesOn;
  }

 private:
  const std::function<bool(std::string_view)>& write_;
  std::string piece_;
};

bool writeInKeyOrder(const Fleet& fleet, Lines& lines) {
  for (const std::uint32_t object : fleet.keyOrder()) {
    for (const DataBuffer& record : fleet.recordsOf(object)) {
      if (!lines.add(record)) return false;
    }
  }
  return true;
}

struct Card {
  std::uint32_t object;
  std::uint32_t recn;
};

// Fisher-Yates over a generator whose output the standard fixes, so that every machine agrees.
void shuffle(std::vector<Card>& deck, std::uint64_t seed) {
  std::mt19937_64 generator(seed);
  for (std::size_t i = deck.size(); i > 1; --i) std::swap(deck[i - 1], deck[generator() % i]);
}

bool writeShuffled(const Fleet& fleet, std::uint64_t seed, Lines& lines) {
  std::vector<Card> deck;
  for (std::uint32_t object = 0; object < fleet.objectCount(); ++object) {
    const auto count = static_cast<std::uint32_t>(fleet.recordsOf(object).size());
    for (std::uint32_t recn = 0; recn < count; ++recn) deck.push_back({object, recn});
  }
  shuffle(deck, seed);
  for (const Card& card : deck) {
    if (!lines.add(fleet.recordsOf(card.object)[card.recn])) return false;
  }
  return true;
}

}  // namespace

bool writeSample(const FleetOptions& options, SampleOrder order,
                 const std::function<bool(std::string_view)>& write) {
  const Fleet fleet(options);
  Lines lines(write);
  const bool written = order == SampleOrder::key ? writeInKeyOrder(fleet, lines)
                                                 : writeShuffled(fleet, options.seed, lines);
  return written && lines.flush();
}

}  // namespace orx::orxkdb
