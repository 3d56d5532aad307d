// The use-count rebuild: reads the whole database once, keeps the models and the references to
// them, and writes every model again with what refers to it now. Nothing but models is changed.
#include <cstdint>
#include <cstdio>
#include <memory>

#include "messages/trace_unit.h"
#include "model/attribute_set.h"
#include "platform/kdb.h"
#include "platform/run_progress.h"
#include "records/data_buffer.h"
#include "records/record_calls.h"
#include "restore/chain_writer.h"
#include "restore/database_session.h"
#include "restore/exit_codes.h"
#include "restore/model_usage.h"
#include "restore/operations.h"
#include "restore/record_lists.h"
#include "restore/reference_index.h"
#include "restore/reference_lists.h"
#include "restore/restore_settings.h"
#include "restore/use_count_types.h"
#include "restore/verbose_use_count.h"

namespace orx {

namespace {

// The list of a model and of what refers to it.
std::uint32_t listNumber(const CMConfigHandle& model) {
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(model));
}

std::unique_ptr<UseCountObserver> observerFor(const RestoreSettings& settings) {
  if (settings.verbose != 0) return std::make_unique<VerboseUseCount>();
  return std::make_unique<UseCountObserver>();
}

class UseCountRebuild {
 public:
  explicit UseCountRebuild(const RestoreSettings& settings)
      : settings_(settings), observer_(observerFor(settings)) {}

  [[nodiscard]] int run() {
    (void)std::printf("start to rebuild the use count for DB %s\n", settings_.databaseName.c_str());
    if (!database_.open(settings_.databaseName)) return exitDatabaseNotOpened;
    if (!openRecords()) return finish(exitDatabaseNotOpened);
    if (!readRecords()) return finish(exitFailed);
    references_.sort();
    sortLists(models_);
    return finish(rebuildModels() ? exitSuccess : exitFailed);
  }

 private:
  [[nodiscard]] bool openRecords() {
    const std::int32_t code = openCursor(database_.handle(), cursor_);
    if (code != 0) database_.report(code, "*Error: Unable to open key1 cursor");
    return code == 0;
  }

  [[nodiscard]] bool readRecords() {
    runProgress().enter("reading", kdb::recordsWhenOpened(database_.handle()));
    DataBuffer record;
    std::int32_t code = readNextRecord(cursor_, record);
    for (; code == 0; code = readNextRecord(cursor_, record)) {
      keep(record);
      runProgress().countRecord();
    }
    if (isEndOfRecords(code)) return true;
    database_.report(code, "*Error: in read records error");
    return false;
  }

  // A model that refers to another one counts for both.
  void keep(const DataBuffer& record) {
    if (isCountedReference(record)) references_.append(listNumber(record.modelHandle()), record);
    if (!isCountedModel(record.recType())) return;
    if (record.recn() == 0) ++modelCount_;
    models_.append(listNumber(record.objectHandle()), record);
  }

  [[nodiscard]] bool rebuildModels() {
    runProgress().enter("rebuilding", modelCount_);
    for (std::size_t number = 0; number < RecordLists::count; ++number) {
      ReferenceIndex references(references_.take(number));
      while (takeModel(models_[number])) {
        if (!rebuildModel(references)) return false;
      }
    }
    return true;
  }

  [[nodiscard]] bool takeModel(RecordList& list) {
    model_.attributeText.clear();
    const int taken = myGetNextAndDestroy(list, model_);
    observer_->takenModel(model_.data.objectHandle());
    return taken != 0;
  }

  [[nodiscard]] bool rebuildModel(ReferenceIndex& references) {
    attributes_ = CMAttributeSet(model_.attributeText.c_str(), 1);
    rebuildUsage(attributes_, model_.data.objectBytes(), references, *observer_);
    const std::string text = chainText(attributes_);
    observer_->rebuiltModel(model_.data, text);
    runProgress().countRecord();
    const std::int32_t code = rewriteChain(database_.handle(), model_.data, text, ownRecords());
    if (code != 0) database_.report(code, "*Error: update the model records");
    return code == 0;
  }

  // Records behind the text that is written go away when they were part of the text that was read.
  // Without the first record of its chain, the model's head was not read as what it is.
  [[nodiscard]] ChainRecords ownRecords() const {
    return model_.data.recn() == 0 ? ChainRecords::all : ChainRecords::none;
  }

  // Closes the database; models written before an ordinary failure are kept.
  [[nodiscard]] int finish(ExitCode result) {
    const bool closed = database_.close();
    return closed || result != exitSuccess ? result : exitFailed;
  }

  const RestoreSettings& settings_;
  std::unique_ptr<UseCountObserver> observer_;
  DatabaseSession database_;
  kdb::kdbHandle cursor_;
  ReferenceLists references_{*observer_};
  RecordLists models_{*observer_};
  std::uint64_t modelCount_ = 0;  // how many will be rebuilt
  BigDataRecord model_;
  CMAttributeSet attributes_;
};

}  // namespace

int useCount() {
  ORX_TRACE("useCount");
  return trace.exit(UseCountRebuild(restoreSettings()).run());
}

}  // namespace orx
