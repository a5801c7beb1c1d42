// SPDX-License-Identifier: Apache-2.0
#include "Program.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace {

// A file descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int number) : m_number(number) {
    if (number == -1) throw std::runtime_error("a descriptor of the test cannot be opened");
  }
  Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() { Close(); }

  int Number() const { return m_number; }
  void Close() {
    if (m_number != -1) ::close(std::exchange(m_number, -1));
  }

 private:
  int m_number;
};

Descriptor OpenNew(const std::string& file) {
  return Descriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
}

std::string ContentsOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// The two ends of a terminal: the one that is read here, and the program's.
struct PseudoTerminal {
  PseudoTerminal() : here(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    ::grantpt(here.Number());
    ::unlockpt(here.Number());
  }
  Descriptor There() const {
    return Descriptor(::open(::ptsname(here.Number()), O_RDWR | O_NOCTTY | O_CLOEXEC));
  }

  Descriptor here;
};

// The two ends of a pipe.
struct Pipe {
  Descriptor from;
  Descriptor to;
};

Pipe OpenPipe() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) == -1) throw std::runtime_error("no pipe for the test");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

// Appends what the program writes to a terminal that nobody else writes to any more: all of it, or up to the
// awaited string.
void ReadTerminal(int terminal, std::string& text, const std::string& awaited = "") {
  char chunk[4096];
  while (awaited.empty() || text.find(awaited) == std::string::npos) {
    const ssize_t count = ::read(terminal, chunk, sizeof chunk);
    if (count <= 0) return;
    text.append(chunk, static_cast<std::size_t>(count));
  }
}

// The process stays to be waited for, and a signal to it goes to nobody else.
bool HasEnded(pid_t process) {
  siginfo_t ended{};
  ::waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT);
  return ended.si_pid != 0;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

Program::Program(Terminal terminal)
    : m_environment{terminal == Terminal::kDumb ? "TERM=dumb" : "TERM=xterm"} {
  // Which of its changes a mutated program runs, and where it marks those that it reaches.
  for (const std::string name : {"TESSEL_MUTANT", "TESSEL_MUTANTS_REACHED"}) {
    if (const char* const value = std::getenv(name.c_str())) m_environment.push_back(name + "=" + value);
  }
  std::string folder = (std::filesystem::temp_directory_path() / "tessel_test_XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no folder for the test");
  m_folder = folder;
}

Program::~Program() {
  std::error_code ignored;
  std::filesystem::remove_all(m_folder, ignored);
}

Program& Program::Build(std::string executable) {
  m_executable = std::move(executable);
  return *this;
}

Program& Program::File(const std::string& name, const std::string& text) {
  std::ofstream(Path(name), std::ios::binary) << text;
  return *this;
}

Program& Program::Input(std::string text) {
  m_input = std::move(text);
  return *this;
}

Program& Program::LateInput(std::string text, std::chrono::milliseconds delay) {
  m_delay = delay;
  return Input(std::move(text));
}

Program& Program::InputOnceShown(std::string text, std::string shown) {
  m_awaited = std::move(shown);
  return Input(std::move(text));
}

Program& Program::OnceALineIsShown(std::function<void(const std::string&, pid_t)> act) {
  m_act = std::move(act);
  return InputOnceShown(m_input, "\n").To(Output::kTerminal);
}

Program& Program::InputFromTerminal() {
  m_inputFromTerminal = true;
  return *this;
}

Program& Program::Without(int descriptor) {
  m_closed.push_back(descriptor);
  return *this;
}

Program& Program::MemoryLimit(std::size_t bytes) {
  m_memoryLimit = bytes;
  return *this;
}

Program& Program::ErrorsToTerminal() {
  m_errorsToTerminal = true;
  return *this;
}

Program& Program::To(Output output) {
  m_output = output;
  return *this;
}

Program& Program::Environment(std::string variable) {
  m_environment.push_back(std::move(variable));
  return *this;
}

Program& Program::InterruptOnceItMakes(std::string name) {
  m_interruptingFiles.push_back(std::move(name));
  return *this;
}

std::string Program::Contents(const std::string& name) const {
  return ContentsOf(Path(name));
}

Finished Program::Run(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "tessel");
  const std::vector<char*> argv = Pointers(arguments);
  const std::vector<char*> environment = Pointers(m_environment);

  const std::string inName = Path(".in");
  const std::string outName = Path(".out");
  const std::string errName = Path(".err");
  std::ofstream(inName, std::ios::binary) << m_input;
  const bool isLate = m_delay.count() != 0 || !m_awaited.empty();
  Pipe late = OpenPipe();
  const PseudoTerminal terminal;
  Descriptor in = m_inputFromTerminal ? terminal.There()
                  : isLate            ? std::move(late.from)
                                      : Descriptor(::open(inName.c_str(), O_RDONLY | O_CLOEXEC));
  Descriptor err = m_errorsToTerminal ? terminal.There() : OpenNew(errName);
  Descriptor out = [&] {
    switch (m_output) {
      case Output::kTerminal:
        return terminal.There();
      case Output::kFullDevice:
        return Descriptor(::open("/dev/full", O_WRONLY | O_CLOEXEC));
      case Output::kNoReader:
        return OpenPipe().to;
      default:
        return OpenNew(outName);
    }
  }();

  const pid_t child = ::fork();
  if (child == -1) throw std::runtime_error("the program cannot be started");
  if (child == 0) {
    ::dup2(in.Number(), STDIN_FILENO);
    ::dup2(out.Number(), STDOUT_FILENO);
    ::dup2(err.Number(), STDERR_FILENO);
    for (const int descriptor : m_closed) ::close(descriptor);
    const rlimit limit{m_memoryLimit, m_memoryLimit};
    if (m_memoryLimit != 0) ::setrlimit(RLIMIT_AS, &limit);
    if (::chdir(m_folder.c_str()) == 0) ::execve(m_executable.c_str(), argv.data(), environment.data());
    ::_exit(127);
  }
  if (m_inputFromTerminal) in.Close();  // A terminal ends once nobody has it.
  out.Close();
  err.Close();
  Finished finished;
  std::string& shown = m_errorsToTerminal ? finished.err : finished.out;
  if (isLate) {
    std::this_thread::sleep_for(m_delay);
    if (!m_awaited.empty()) ReadTerminal(terminal.here.Number(), shown, m_awaited);
    const Descriptor& to = m_inputFromTerminal ? terminal.here : late.to;
    (void)!::write(to.Number(), m_input.data(), m_input.size());  // Small enough for either.
    if (m_input.empty()) late.to.Close();
    if (m_act) m_act(shown, child);
  }
  late.to.Close();
  for (const std::string& file : m_interruptingFiles) {
    while (!std::filesystem::exists(Path(file)) && !HasEnded(child)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ::kill(child, SIGINT);
  }
  if (m_errorsToTerminal || m_output == Output::kTerminal) ReadTerminal(terminal.here.Number(), shown);
  int status = 0;
  ::waitpid(child, &status, 0);
  finished.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  if (m_output == Output::kFile) finished.out = ContentsOf(outName);
  if (!m_errorsToTerminal) finished.err = ContentsOf(errName);
  return finished;
}
