#include "tests/faults/traced_program.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <map>
#include <system_error>

#include "platform/file.h"
#include "tests/faults/system_calls.h"
#include "tests/support/run_program.h"

namespace orx::faults {

namespace {

// A program that hangs is ended by SIGALRM.
constexpr unsigned patienceSeconds = 60;
constexpr unsigned renameExchange = 2;  // RENAME_EXCHANGE

[[noreturn]] void throwErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> result;
  for (std::string& word : words) result.push_back(word.data());
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> environmentOf(const TracedProgram& program) {
  std::vector<std::string> all;
  for (char** entry = environ; *entry != nullptr; ++entry) all.emplace_back(*entry);
  all.insert(all.end(), program.environment.begin(), program.environment.end());
  return all;
}

// A filter that stops at the calls in `numbers` and lets all others pass.
std::vector<sock_filter> filterFor(const std::vector<long>& numbers) {
  std::vector<sock_filter> filter{{BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)}};
  for (const long number : numbers) {
    filter.push_back({BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<std::uint32_t>(number)});
    filter.push_back({BPF_RET | BPF_K, 0, 0, SECCOMP_RET_TRACE});
  }
  filter.push_back({BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW});
  return filter;
}

// A file without a name that a stream of the program goes to.
class Captured {
 public:
  Captured() : file_(::memfd_create("stream", MFD_CLOEXEC)) {
    if (!file_.valid()) throwErrno("memfd_create");
  }
  [[nodiscard]] int descriptor() const { return file_.get(); }
  [[nodiscard]] std::string text() const {
    std::string text(static_cast<std::size_t>(::lseek(file_.get(), 0, SEEK_END)), '\0');
    (void)!::pread(file_.get(), text.data(), text.size(), 0);
    return text;
  }

 private:
  UniqueFd file_;
};

class Tracer {
 public:
  explicit Tracer(const TracedProgram& program) : program_(program) {}

  TracedResult run() {
    start();
    int status = 0;
    while (true) {
      const pid_t thread = ::waitpid(-1, &status, __WALL | __WNOTHREAD);
      if (thread < 0 && errno == EINTR) continue;
      if (thread < 0) throwErrno("waitpid");
      if (WIFSTOPPED(status)) {
        handleStop(thread, status);
      } else if (thread == leader_) {
        break;
      }
    }
    if (WIFEXITED(status)) result_.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result_.signal = WTERMSIG(status);
    result_.output = output_.text();
    result_.errors = errors_.text();
    return std::move(result_);
  }

 private:
  // What is to happen when a call returns.
  struct Pending {
    SystemCall call = {};
    std::optional<std::int64_t> result = {};  // instead of its own
    bool kill = false;
    bool observe = false;
  };

  void start() {
    std::vector<std::string> words = program_.arguments;
    words.insert(words.begin(), program_.file.string());
    std::vector<std::string> variables = environmentOf(program_);
    const auto argv = pointers(words);
    const auto environment = pointers(variables);
    std::vector<sock_filter> filter = filterFor(tracedNumbers());
    const sock_fprog code{static_cast<unsigned short>(filter.size()), filter.data()};
    leader_ = ::fork();
    if (leader_ < 0) throwErrno("fork");
    if (leader_ == 0) become(argv, environment, code);
    int status = 0;
    if (::waitpid(leader_, &status, 0) < 0 || !WIFSTOPPED(status)) throwErrno("trace");
    constexpr long options = PTRACE_O_EXITKILL | PTRACE_O_TRACECLONE | PTRACE_O_TRACESECCOMP |
                             PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEEXEC;
    if (::ptrace(PTRACE_SETOPTIONS, leader_, 0, options) != 0) throwErrno("ptrace");
    threads_[leader_] = {};
    resume(leader_, PTRACE_CONT, 0);
  }

  [[noreturn]] void become(const std::vector<char*>& argv, const std::vector<char*>& environment,
                           const sock_fprog& code) const {
    const int nothing = ::open("/dev/null", O_RDONLY);
    (void)::dup2(nothing, STDIN_FILENO);
    (void)::dup2(output_.descriptor(), STDOUT_FILENO);
    (void)::dup2(errors_.descriptor(), STDERR_FILENO);
    (void)::close(nothing);
    test::takeSignals();
    (void)::alarm(patienceSeconds);
    const bool ready = ::chdir(program_.directory.c_str()) == 0 &&
                       ::ptrace(PTRACE_TRACEME, 0, 0, 0) == 0 && ::raise(SIGSTOP) == 0 &&
                       ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                       ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &code) == 0;
    if (ready) (void)::execve(argv[0], argv.data(), environment.data());
    ::_exit(127);
  }

  static void resume(pid_t thread, __ptrace_request how, int signal) {
    (void)::ptrace(how, thread, 0, signal);  // fails for a thread that was killed meanwhile
  }

  void handleStop(pid_t thread, int status) {
    const int event = status >> 16;
    const int signal = WSTOPSIG(status);
    if (event == PTRACE_EVENT_SECCOMP) return handleEntry(thread);
    if (signal == (SIGTRAP | 0x80)) return handleReturn(thread);
    const bool isNew = threads_.try_emplace(thread).second;
    const bool isOwn = event != 0 || (isNew && signal == SIGSTOP);
    resume(thread, PTRACE_CONT, isOwn ? 0 : signal);
  }

  void handleEntry(pid_t thread) {
    user_regs_struct registers{};
    if (::ptrace(PTRACE_GETREGS, thread, 0, &registers) != 0) return;
    const SystemCall call{
        static_cast<long>(registers.orig_rax),
        {registers.rdi, registers.rsi, registers.rdx, registers.r10, registers.r8, registers.r9}};
    if (!counts(thread, call)) return resume(thread, PTRACE_CONT, 0);
    result_.calls.push_back(call);
    if (program_.beforeLock && call.number == SYS_flock && !std::exchange(hasLocked_, true)) {
      program_.beforeLock();
    }
    const std::optional<Fault> fault = faultOf(call);
    Pending& pending = threads_[thread];
    pending = {.call = call, .observe = program_.onChange && changesFiles(call)};
    if (fault.has_value()) {
      result_.isDisturbed = true;
      inject(thread, *fault, registers, pending);
    } else if (program_.exchangeFails && call.number == SYS_renameat2 &&
               call.arguments[4] == renameExchange) {
      skip(thread, registers, EINVAL);
      pending = {};
    }
    const bool wait = pending.observe || pending.kill || pending.result.has_value();
    resume(thread, wait ? PTRACE_SYSCALL : PTRACE_CONT, 0);
  }

  // Counting begins with the first call that names a file in the work directory.
  bool counts(pid_t thread, const SystemCall& call) {
    if (!touchesFile(call)) return false;
    if (counting_) return true;
    const int argument = pathArgument(call);
    if (argument < 0) return false;
    const std::string path =
        FinishedCall(thread, call, 0).text(call.arguments[static_cast<std::size_t>(argument)]);
    counting_ =
        !path.empty() && (!path.starts_with('/') || path.starts_with(program_.directory.string()));
    return counting_;
  }

  std::optional<Fault> faultOf(const SystemCall& call) const {
    const std::size_t number = result_.calls.size();
    if (!program_.fault.has_value()) return std::nullopt;
    if (*program_.fault == Fault::ioErrorOn && number > program_.faultAt && !isStream(call)) {
      return Fault::ioErrorOn;
    }
    // Threads may have come to another call by now than the run that the cases were made from.
    const bool hits = number == program_.faultAt && applies(*program_.fault, call);
    return hits ? program_.fault : std::nullopt;
  }

  void inject(pid_t thread, Fault fault, user_regs_struct& registers, Pending& pending) const {
    switch (fault) {
      case Fault::killBefore:
        (void)::kill(leader_, SIGKILL);
        return;
      case Fault::killAfter:
        pending.kill = true;
        return;
      case Fault::partly:
        registers.rdx /= 2;
        (void)::ptrace(PTRACE_SETREGS, thread, 0, &registers);
        return;
      default:
        break;
    }
    const int error = errorOf(fault);
    if (pending.call.number == SYS_close) {  // closes, whatever it says
      pending.result = -error;
    } else {
      skip(thread, registers, error);
      pending.observe = false;
    }
  }

  static int errorOf(Fault fault) {
    switch (fault) {
      case Fault::noSpace:
        return ENOSPC;
      case Fault::noQuota:
        return EDQUOT;
      case Fault::interrupted:
        return EINTR;
      case Fault::noFile:
        return EMFILE;
      default:
        return EIO;
    }
  }

  static void skip(pid_t thread, user_regs_struct& registers, int error) {
    registers.orig_rax = static_cast<unsigned long long>(-1);
    registers.rax = static_cast<unsigned long long>(-error);
    (void)::ptrace(PTRACE_SETREGS, thread, 0, &registers);
  }

  void handleReturn(pid_t thread) {
    const Pending pending = std::exchange(threads_[thread], {});
    user_regs_struct registers{};
    if (::ptrace(PTRACE_GETREGS, thread, 0, &registers) != 0) return;
    if (pending.kill) (void)::kill(leader_, SIGKILL);
    if (pending.observe) {
      program_.onChange({thread, pending.call, static_cast<std::int64_t>(registers.rax)});
    }
    if (pending.result.has_value()) {
      registers.rax = static_cast<unsigned long long>(*pending.result);
      (void)::ptrace(PTRACE_SETREGS, thread, 0, &registers);
    }
    resume(thread, PTRACE_CONT, 0);
  }

  const TracedProgram& program_;
  Captured output_;
  Captured errors_;
  pid_t leader_ = -1;
  bool counting_ = false;
  bool hasLocked_ = false;
  std::map<pid_t, Pending> threads_;
  TracedResult result_;
};

}  // namespace

std::string FinishedCall::bytes(std::uint64_t address, std::size_t size) const {
  std::string bytes(size, '\0');
  const iovec here{bytes.data(), size};
  iovec there{};
  static_assert(sizeof(there.iov_base) == sizeof(address));
  std::memcpy(&there.iov_base, &address, sizeof(address));
  there.iov_len = size;
  const ssize_t count = ::process_vm_readv(thread_, &here, 1, &there, 1, 0);
  bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  return bytes;
}

// In pieces that do not go beyond a page: behind the text there may be no memory.
std::string FinishedCall::text(std::uint64_t address) const {
  constexpr std::uint64_t page = 4096;
  std::string text;
  while (true) {
    const std::string piece = bytes(address, page - address % page);
    const std::size_t end = piece.find('\0');
    text += piece.substr(0, end);
    if (end != std::string::npos || piece.empty()) return text;
    address += piece.size();
  }
}

std::string FinishedCall::descriptorPath(int descriptor) const {
  return "/proc/" + std::to_string(thread_) + "/fd/" + std::to_string(descriptor);
}

std::uint64_t FinishedCall::position(int descriptor) const {
  std::ifstream info("/proc/" + std::to_string(thread_) + "/fdinfo/" + std::to_string(descriptor));
  std::string label;
  std::uint64_t position = 0;
  info >> label >> position;
  return position;
}

TracedResult runTraced(const TracedProgram& program) {
  return Tracer(program).run();
}

}  // namespace orx::faults
