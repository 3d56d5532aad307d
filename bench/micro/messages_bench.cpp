// Messages: looked up, checked and printed, with the bundle opened for each or held for all.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "messages/error_msg.h"
#include "messages/message_print.h"
#include "micro/sample.h"
#include "orxkdb/output/bundle_writer.h"

namespace orx::bench {

namespace {

// The bundle in the current directory, as the programs find it, and standard output that leads
// nowhere. Ends with the object.
class QuietPlace {
 public:
  QuietPlace() : before_(std::filesystem::current_path()) {
    directory_ = std::filesystem::temp_directory_path() / "orx_micro.XXXXXX";
    if (::mkdtemp(directory_.data()) == nullptr) std::abort();
    if (!orxkdb::putBundle(directory_).ok()) std::abort();
    std::filesystem::current_path(directory_);
    (void)std::fflush(stdout);
    output_ = ::dup(STDOUT_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    (void)::dup2(nowhere, STDOUT_FILENO);
    (void)::close(nowhere);
  }
  QuietPlace(const QuietPlace&) = delete;
  QuietPlace& operator=(const QuietPlace&) = delete;
  ~QuietPlace() {
    (void)std::fflush(stdout);
    (void)::dup2(output_, STDOUT_FILENO);
    (void)::close(output_);
    std::error_code error;
    std::filesystem::current_path(before_, error);
    std::filesystem::remove_all(directory_, error);
  }

 private:
  std::filesystem::path before_;
  std::string directory_;
  int output_ = -1;
};

void printOne(benchmark::State& state) {
  const QuietPlace place;
  std::int32_t added = 0;
  for (auto _ : state) printMessage("IDS_MAIN_SEVENTH", ++added);
  state.SetItemsProcessed(state.iterations());
}

void printFromCatalogue(benchmark::State& state) {
  const QuietPlace place;
  MessageCatalogue catalogue;
  if (!catalogue.isOpen()) return state.SkipWithError("no message bundle");
  std::int32_t added = 0;
  for (auto _ : state) printMessageFrom(catalogue, "IDS_MAIN_SEVENTH", ++added);
  state.SetItemsProcessed(state.iterations());
}

void printErrorLine(benchmark::State& state) {
  const QuietPlace place;
  for (auto _ : state) ErrorMsg(3, 19, "*Error: Unable to open database");
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(printOne)->Name("messages/printMessage");
BENCHMARK(printFromCatalogue)->Name("messages/printMessageFrom");
BENCHMARK(printErrorLine)->Name("messages/ErrorMsg");

}  // namespace
}  // namespace orx::bench
