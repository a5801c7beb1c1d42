// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// What a run of the program left.
struct Finished {
  int status = 0;  ///< The exit status; a signal that ended it counts as minus its number.
  std::string out;
  std::string err;
};

/// Runs the built `tessel`. Files given by name are made in a folder that goes with the object, and in which
/// the program runs.
class Program {
 public:
  /// Where standard output leads. kTerminal is a terminal; the others but kFile leave `out` empty.
  enum class Output { kFile, kTerminal, kNoReader, kFullDevice };

  /// What TERM says.
  enum class Terminal { kColour, kDumb };

  explicit Program(Terminal terminal = Terminal::kColour);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// Runs that build of the program.
  Program& Build(std::string executable);
  /// Makes a file for the program to read.
  Program& File(const std::string& name, const std::string& text);
  /// What standard input holds; nothing by default.
  Program& Input(std::string text);
  /// The same, but it arrives through a pipe, after a while.
  Program& LateInput(std::string text, std::chrono::milliseconds delay);
  /// The same, once the terminal that an output must be has shown a string.
  Program& InputOnceShown(std::string text, std::string shown);
  /// Makes standard output a terminal. Once that has shown an end of line, this is called with what it showed
  /// and the program's process, whose standard input has ended unless there is any.
  Program& OnceALineIsShown(std::function<void(const std::string&, pid_t)> act);
  /// Makes standard input a terminal, where either of these is typed: the same as that of an output.
  Program& InputFromTerminal();
  Program& To(Output output);
  /// Starts the program with a descriptor closed: 0, 1 or 2.
  Program& Without(int descriptor);
  /// Lets the program have so many bytes of address space.
  Program& MemoryLimit(std::size_t bytes);
  /// Makes standard error a terminal.
  Program& ErrorsToTerminal();
  /// Sets a variable, "NAME=value", in an environment that has only TERM otherwise, and the mutant's number.
  Program& Environment(std::string variable);

  /// Sends the program SIGINT once that file is there; may be called again for another time.
  Program& InterruptOnceItMakes(std::string name);

  Finished Run(std::vector<std::string> arguments);
  /// What is in a file of the folder; "" when there is none.
  std::string Contents(const std::string& name) const;
  /// Where a file of the folder is.
  std::string Path(const std::string& name) const { return m_folder + "/" + name; }

 private:
  std::string m_executable = TESSEL_PROGRAM;
  std::string m_folder;
  std::string m_input;
  std::chrono::milliseconds m_delay{};
  std::string m_awaited;
  std::function<void(const std::string&, pid_t)> m_act;
  bool m_inputFromTerminal = false;
  std::vector<int> m_closed;
  std::size_t m_memoryLimit = 0;
  Output m_output = Output::kFile;
  bool m_errorsToTerminal = false;
  std::vector<std::string> m_environment;
  std::vector<std::string> m_interruptingFiles;
};
