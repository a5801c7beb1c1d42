// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

/// Serves the page over one recording to browsers of this machine, and sends them what is appended to the
/// recording. Only who knows the address sees anything: it has a random token in it.
class LivePage {
 public:
  /// Binds to a port of 127.0.0.1, or to a free one when it is 0. Throws CommandError when it cannot be used.
  LivePage(const std::string& recording, int port);
  /// Ends the requests in progress.
  ~LivePage();
  LivePage(const LivePage&) = delete;
  LivePage& operator=(const LivePage&) = delete;

  /// Where a browser finds the page.
  std::string Address() const;
  /// Serves requests, on a thread for each, from now on.
  void Start();

 private:
  class Server;
  std::unique_ptr<Server> m_server;
};
