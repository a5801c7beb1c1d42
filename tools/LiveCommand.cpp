// SPDX-License-Identifier: Apache-2.0
#include "LiveCommand.h"

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <memory>
#include <string>

#include "CommandError.h"
#include "ExitStatus.h"
#include "OptionChecks.h"
#include "TextFile.h"
#include "recording/RecordingFile.h"
#include "report/LivePage.h"
#include "report/Page.h"

namespace {

constexpr unsigned kMostPort = 65535;

struct LiveOptions {
  std::string file;
  unsigned port = 0;
};

// The signals that ask the program to end. They are blocked in every thread, from now on, and read instead.
class EndSignals {
 public:
  EndSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_descriptor = ::signalfd(-1, &signals, SFD_CLOEXEC);
  }
  ~EndSignals() { ::close(m_descriptor); }
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  // Returns when one arrives, or when the terminal ends or the user ends its input. Standard input that is no
  // terminal says nothing of one.
  void Wait() const {
    std::array<pollfd, 2> sources{pollfd{m_descriptor, POLLIN, 0}, pollfd{m_terminal, POLLIN, 0}};
    for (;;) {
      if (::poll(sources.data(), sources.size(), -1) < 0 && errno == EINTR) continue;
      if (sources[0].revents != 0) return;
      std::array<char, 256> typed;
      if (sources[1].revents != 0 && ::read(STDIN_FILENO, typed.data(), typed.size()) <= 0) return;
    }
  }

 private:
  int m_descriptor;
  const int m_terminal = ::isatty(STDIN_FILENO) != 0 ? STDIN_FILENO : -1;  // One that has ended is none.
};

int ServeLive(const LiveOptions& options) {
  RefuseToReadAgain(options.file, "it is read for each browser");
  RequirePage();
  {
    const RecordingFile canBeOpened(options.file);
  }
  const EndSignals signals;
  LivePage page(options.file, static_cast<int>(options.port));
  page.Start();
  // An address that nobody sees is no use.
  if (std::cout << page.Address() << std::endl) signals.Wait();
  return kExitFine;
}

}  // namespace

void AddLiveCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<LiveOptions>();
  CLI::App* const command =
      app.add_subcommand("live", "Show a recording in a browser while it is being written");
  SetFile(*command->add_option("FILE", options->file, "A recording")->required());
  CLI::Option* const port =
      command->add_option("--port", options->port, "The port of 127.0.0.1; a free one by default");
  port->type_name("N");
  SetRange(*port, 0, kMostPort);
  command->footer(
      "Prints the address of the page, for browsers of this machine: it has a random token in it, without "
      "which\n"
      "nobody sees anything. The page is the one of tessel report, and follows the recording. Ctrl-C ends "
      "it, as "
      "the\n"
      "end of the terminal does.\n\n" +
      ExitStatusHelp("done") +
      "\n\n"
      "Examples:\n"
      "  tessel live call.tessel\n"
      "  tessel live call.tessel --port 8080");
  command->callback([options, &exitStatus] { exitStatus = ServeLive(*options); });
}
