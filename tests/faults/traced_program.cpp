#include "tests/faults/traced_program.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fstream>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/file.h"

namespace orx::faults {

namespace {

[[noreturn]] void throwErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// A filter that stops at the known calls and lets all others pass.
std::vector<sock_filter> filter() {
  std::vector<sock_filter> filter{{BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)}};
  for (const CallKind& kind : callKinds) {
    filter.push_back({BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<std::uint32_t>(kind.number)});
    filter.push_back({BPF_RET | BPF_K, 0, 0, SECCOMP_RET_TRACE});
  }
  filter.push_back({BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW});
  return filter;
}

// A file without a name that a stream of the program goes to.
UniqueFd captured() {
  UniqueFd file(::memfd_create("stream", MFD_CLOEXEC));
  if (!file.valid()) throwErrno("memfd_create");
  return file;
}
std::string textOf(const UniqueFd& file) {
  std::string text(static_cast<std::size_t>(::lseek(file.get(), 0, SEEK_END)), '\0');
  (void)!::pread(file.get(), text.data(), text.size(), 0);
  return text;
}

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
    result_.setEnd(status);
    result_.output = textOf(output_);
    result_.errors = textOf(errors_);
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
    const test::ProgramStart program(program_.program);
    std::vector<sock_filter> rules = filter();
    const sock_fprog code{static_cast<unsigned short>(rules.size()), rules.data()};
    leader_ = ::fork();
    if (leader_ < 0) throwErrno("fork");
    if (leader_ == 0) become(program, code);
    int status = 0;
    if (::waitpid(leader_, &status, 0) < 0 || !WIFSTOPPED(status)) throwErrno("trace");
    constexpr long options = PTRACE_O_EXITKILL | PTRACE_O_TRACECLONE | PTRACE_O_TRACESECCOMP |
                             PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEEXEC;
    if (::ptrace(PTRACE_SETOPTIONS, leader_, 0, options) != 0) throwErrno("ptrace");
    threads_[leader_] = {};
    resume(leader_, PTRACE_CONT, 0);
  }

  [[noreturn]] void become(const test::ProgramStart& program, const sock_fprog& code) const {
    const bool ready = ::ptrace(PTRACE_TRACEME, 0, 0, 0) == 0 && ::raise(SIGSTOP) == 0 &&
                       ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                       ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &code) == 0;
    if (ready) program.become(nothing_.get(), output_.get(), errors_.get());
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
    if (!counts({thread, call})) return resume(thread, PTRACE_CONT, 0);
    result_.calls.push_back(call);
    if (program_.onCall && program_.onCall({thread, call})) return;
    Pending& pending = threads_[thread];
    pending = {.call = call, .observe = program_.onChange && has(call, trait::changes)};
    if (isHit(call)) {
      result_.isDisturbed = true;
      inject(thread, registers, pending);
    } else if (program_.exchangeFails && exchanges(call)) {
      skip(thread, registers, EINVAL);
      pending = {};
    }
    const bool wait = pending.observe || pending.kill || pending.result.has_value();
    resume(thread, wait ? PTRACE_SYSCALL : PTRACE_CONT, 0);
  }

  // Counting begins with the first call that names a file in the work directory.
  bool counts(const TracedCall& traced) {
    if (counting_ || !touchesFile(traced.call)) return counting_ && touchesFile(traced.call);
    const int argument = kindOf(traced.call).path;
    if (argument < 0) return false;
    const std::string path = traced.text(traced.call.arguments[static_cast<std::size_t>(argument)]);
    const std::string directory = program_.program.directory;
    counting_ = !path.empty() && (!path.starts_with('/') || path.starts_with(directory));
    return counting_;
  }

  bool isHit(const SystemCall& call) const {
    if (program_.fault == nullptr) return false;
    const std::size_t number = result_.calls.size();
    if (program_.fault->fault == Fault::errorOn && number > program_.faultAt) {
      return !isStream(call);
    }
    // Threads may have come to another call by now than the run that the cases were made from.
    return number == program_.faultAt && applies(*program_.fault, call);
  }

  void inject(pid_t thread, user_regs_struct& registers, Pending& pending) const {
    switch (program_.fault->fault) {
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
    if (pending.call.number == SYS_close) {  // closes, whatever it says
      pending.result = -program_.fault->error;
    } else {
      skip(thread, registers, program_.fault->error);
      pending.observe = false;
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
    if (pending.observe) {
      program_.onChange({thread, pending.call, static_cast<std::int64_t>(registers.rax)});
    }
    if (pending.kill) (void)::kill(leader_, SIGKILL);
    if (pending.result.has_value()) {
      registers.rax = static_cast<unsigned long long>(*pending.result);
      (void)::ptrace(PTRACE_SETREGS, thread, 0, &registers);
    }
    resume(thread, PTRACE_CONT, 0);
  }

  const TracedProgram& program_;
  UniqueFd nothing_ = openFile("/dev/null", O_RDONLY);
  UniqueFd output_ = captured();
  UniqueFd errors_ = captured();
  pid_t leader_ = -1;
  bool counting_ = false;
  std::map<pid_t, Pending> threads_;
  TracedResult result_;
};

std::string processFile(pid_t thread, const std::string& name) {
  return "/proc/" + std::to_string(thread) + "/" + name;
}

}  // namespace

// Behind the text there may be no memory: what can be read before that comes all the same.
std::string TracedCall::text(std::uint64_t address) const {
  std::ifstream memory(processFile(thread, "mem"), std::ios::binary);
  memory.seekg(static_cast<std::streamoff>(address));
  std::string text;
  std::getline(memory, text, '\0');
  return text;
}

std::string TracedCall::file(int descriptor) const {
  return processFile(thread, "fd/" + std::to_string(descriptor));
}

TracedResult runTraced(const TracedProgram& program) {
  return Tracer(program).run();
}

}  // namespace orx::faults
